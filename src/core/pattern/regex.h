// Regular expressions on wide text, matched by PCRE2's 16-bit library.
#pragma once

#include "containers/slist.h"
#include "core/critical_section.h"
#include "core/text/string.h"

#include <cstddef>
#include <cstdint>
#include <functional>

struct pcre2_real_code_16;
struct pcre2_real_match_data_16;

namespace qx
{

// One group of a match.
struct scRegExMatch
{
    std::uint64_t offset = ~std::uint64_t{0}; // position; all bits set if the group took no part
    String text;                              // empty if the group took no part
};

// The groups of a match: entry 0 is the whole match, entry n is capture group n, up to the highest group that took
// part. An index past the end returns the last entry; an empty list returns an empty entry. Check Count() where it
// matters.
class clsRegExMatchList : public WCValSList<scRegExMatch>
{
public:
    const scRegExMatch& operator[](std::size_t index) const;
};

// Produces the replacement for a match.
class IclsRegExGSubCB
{
public:
    virtual String OnMatch(const clsRegExMatchList& matches) = 0;

protected:
    ~IclsRegExGSubCB() = default;
};

// A regular expression, compiled at its first use. Compiled patterns aren't cached anywhere else, so keep the object
// outside of loops.
//
// The flags are the PCRE2 option bits listed here; all other bits are ignored. Compiling: 0x8 caseless, 0x10 dollar
// matches only at the very end, 0x20 dot-all, 0x80 extended, 0x400 multi-line, 0x40000 ungreedy, 0x80000000 anchored.
// Matching: 0x1 not at line begin, 0x2 not at line end, 0x4 not empty, 0x10 partial matching, 0x80000000 anchored. A
// character is a code unit.
//
// A pattern that doesn't compile matches nothing. Each use tries to compile it again and reports the error to the debug
// output.
// All operations are serialised by a recursive lock, so a callback may use the object that calls it.
//
// The loops (GSub, MatchAll, Split) treat the text after the previous match as a new subject: ^ matches at its start,
// and look-behind and \b don't see earlier text. An empty match at the very start ends the loop, and the rest of the
// text is dropped.
class clsRegEx
{
public:
    clsRegEx(const String& pattern, std::uint32_t flags);
    clsRegEx(const wchar_t* pattern, std::uint32_t flags);
    clsRegEx(const clsRegEx&) = delete;
    clsRegEx& operator=(const clsRegEx&) = delete;
    ~clsRegEx();

    // Frees the compiled pattern. The next use compiles it again.
    void Free();
    bool Compile();

    // Returns the error of the last compilation, or an empty text if it succeeded.
    String ErrorText();

    // Finds the first match. Returns true and stores the groups in `matches`, which may be null, if there is one.
    // Otherwise `matches` is unchanged. A String is searched over its whole length, including zeros.
    bool Match(const String& subject, clsRegExMatchList* matches);
    bool Match(const wchar_t* subject, clsRegExMatchList* matches);

    // Replaces each match by the template, in which \0 to \9 insert groups of the match. Two backslashes are copied as
    // two and prevent a following digit from being a reference.
    String GSub(const String& subject, const wchar_t* replacementTemplate);
    String GSub(const String& subject, IclsRegExGSubCB& callback);
    // Calls callback(groups, text) for each match. `text` initially contains the match; the callback changes it to the
    // replacement. If the callback returns false, this is the last replacement.
    String GSub(const String& subject, std::function<bool(const clsRegExMatchList&, String&)> callback);

    // Returns the first group of each match, or the whole match if no group took part.
    WCValSList<String> MatchAll(const String& subject);

    // Returns the parts between the matches, including the last one even if it is empty.
    WCValSList<String> Split(const String& subject);

    // Returns a pattern that matches the text literally.
    static String Quote(const String& text);

private:
    // A part of the text that is searched.
    struct Stretch
    {
        const wchar_t* text = nullptr;
        std::size_t length = 0;
    };
    // The result of a search: the number of groups up to the highest that took part (0 if there is no match), and the
    // position and length of the whole match.
    struct Found
    {
        std::size_t groups = 0;
        std::size_t position = 0;
        std::size_t length = 0;
    };

    bool IsCompiled();
    Found Search(const Stretch& subject);
    Stretch GroupText(const Stretch& subject, std::size_t group) const;
    void GiveMatches(const Stretch& subject, std::size_t groups, clsRegExMatchList& matches) const;
    bool MatchStretch(const Stretch& subject, clsRegExMatchList* matches);

    // The loop shared by the three forms of GSub. replace(rest, found, collector) appends the replacement and returns
    // true to continue.
    template <class Replace>
    String Substitute(const String& subject, Replace replace);

    String _pattern;
    std::uint32_t _flags;
    String _errorText;
    clsCriticalSection _lock;
    pcre2_real_code_16* _code = nullptr;
    pcre2_real_match_data_16* _pRegMatchData = nullptr;
};

} // namespace qx
