// Regular expressions: PCRE2's 16-bit build on the wide text of the library.
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
    std::uint64_t offset = ~std::uint64_t{0}; // of the group's start in the subject; all bits set if it took no part
    String text;                              // empty if it took no part
};

// The groups of a match: entry 0 is the whole match, entry n capture group n, up to the highest group that took part.
// A read behind the end gives the last entry, so look at Count() where that matters; an empty list gives an empty
// entry.
class clsRegExMatchList : public WCValSList<scRegExMatch>
{
public:
    const scRegExMatch& operator[](std::size_t index) const;
};

// Gives the text that takes the place of a match.
class IclsRegExGSubCB
{
public:
    virtual String OnMatch(const clsRegExMatchList& matches) = 0;

protected:
    ~IclsRegExGSubCB() = default;
};

// A pattern that is compiled at its first use. Keep the object outside of loops: nothing else keeps compiled patterns.
//
// The flags are PCRE2's own bits, the rest is ignored: 0x8 caseless, 0x10 dollar at the very end only (while matching:
// partial matching), 0x20 dot-all, 0x80 extended, 0x400 multi-line, 0x40000 ungreedy, 0x80000000 anchored; while
// matching also 0x1 not at line begin, 0x2 not at line end, 0x4 not empty. A code unit is a character.
//
// A pattern that doesn't compile matches nothing; it is tried anew, and reported to the debug output, each time.
// All operations are serialised by a lock that the same thread may enter again, so a callback may use the object that
// calls it.
//
// The loops (GSub, MatchAll, Split) look at what stands behind the last match as at a subject of its own: there ^
// matches, and look-behind and \b see nothing. An empty match at its very start ends them, without the rest.
class clsRegEx
{
public:
    clsRegEx(const String& pattern, std::uint32_t flags);
    clsRegEx(const wchar_t* pattern, std::uint32_t flags);
    clsRegEx(const clsRegEx&) = delete;
    clsRegEx& operator=(const clsRegEx&) = delete;
    ~clsRegEx();

    // Gives up the compiled pattern; the next use compiles it again.
    void Free();
    bool Compile();

    // Of the last compilation; empty if it succeeded.
    String ErrorText();

    // The first match. `matches` may be null, and stays as it is if there is none. A String is searched over its whole
    // length, zeros included.
    bool Match(const String& subject, clsRegExMatchList* matches);
    bool Match(const wchar_t* subject, clsRegExMatchList* matches);

    // Replaces each match by the template, in which \0 to \9 stand for the match's groups. Two backslashes stay two,
    // and guard a digit behind them.
    String GSub(const String& subject, const wchar_t* replacementTemplate);
    String GSub(const String& subject, IclsRegExGSubCB& callback);
    // The text begins as the match and may be changed; false makes this the last replacement.
    String GSub(const String& subject, std::function<bool(const clsRegExMatchList&, String&)> callback);

    // For each match the first group's text, or the whole match's if no group took part.
    WCValSList<String> MatchAll(const String& subject);

    // The pieces between the matches, the last one even if it is empty.
    WCValSList<String> Split(const String& subject);

    // A pattern that matches the text.
    static String Quote(const String& text);

private:
    // A stretch of the text being searched.
    struct Stretch
    {
        const wchar_t* text = nullptr;
        std::size_t length = 0;
    };
    // What a search found: the number of groups up to the highest that took part, 0 if there was no match, and where
    // the whole match lies.
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

    // The loop behind the three forms of GSub. replace(rest, found, collector) appends the replacement, and says
    // whether to go on.
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
