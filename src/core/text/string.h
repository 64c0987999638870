#pragma once

#include "containers/slist.h"
#include "core/system_values.h"
#include "core/text/string_record.h"

#include <windows.h>

#include <compare>
#include <concepts>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

namespace qx
{

// The library's text type: 16-bit characters in a record that copies share until one of them changes, so that a copy
// costs one atomic addition. Positions and counts are in characters; positions start at 0. The text always ends with a
// terminator. A zero character within the length, as some decoders produce, counts as a character but ends the text for
// all operations on zero-terminated text: comparison, search, formatting.
//
// A String may be used by one thread at a time. Objects on different threads may share a record. An operation that
// changes nothing leaves a shared record shared. Failed allocations throw std::bad_alloc and leave the text unchanged.
class String
{
public:
    // The count that means the rest of the text.
    static constexpr std::size_t kAll = 0x7FFFFFFE;

    // Selects the formatting constructor. Without it, the arguments would match the constructor that takes positions.
    enum FormatTag
    {
        kFormatted
    };

    String() noexcept : _codePage(DefaultCodePage()) {}
    String(const String& other) noexcept : _length(other._length), _record(other._record), _codePage(other._codePage)
    {
        if (_record)
            _record->AddUser();
    }
    String(String&& other) noexcept { TakeFields(other); }

    // Copies at most `count` characters of a zero-terminated text from position `start`. Null is the empty text.
    String(const wchar_t* text, std::size_t start = 0, std::size_t count = kAll);

    // Copies all characters of the view, including zeros.
    explicit String(std::wstring_view characters);

    // Concatenates. The result has the code page of `a`.
    String(const String& a, const wchar_t* b);
    String(const String& a, const String& b);

    // See Format.
    String(FormatTag, const wchar_t* format, ...);

    String& operator=(const String& other);
    String& operator=(String&& other) noexcept
    {
        Take(other);
        return *this;
    }
    String& operator=(const wchar_t* text)
    {
        Assign(text);
        return *this;
    }

    void Assign(const wchar_t* text);
    void Assign(const wchar_t* text, std::size_t start, std::size_t count);

    // Converts 8-bit text from the string's code page. With code page 0, each byte becomes the character of the same
    // value. Takes `count` bytes from `offset`, or up to the terminator. The text becomes empty if the system can't
    // convert it or if it has more than 2 GB.
    void Assign(const char* text, std::size_t offset = 0, std::size_t count = kAll);

    void Fill(wchar_t c, std::size_t count);

    static String FromInt(int value);
    static String FromUnsigned(unsigned value);

    // Moves the text and the code page out of another string, which becomes empty.
    void Take(String& other) noexcept;

    // ---- Reading

    std::size_t Length() const noexcept { return _length; }
    bool IsEmpty() const noexcept { return _length == 0; }
    const wchar_t* Text() const noexcept { return _record ? _record->text : kEmptyText; }
    operator const wchar_t*() const noexcept { return Text(); }
    std::wstring_view View() const noexcept { return {Text(), _length}; }

    // Returns the character at a position, or 0 out of bounds.
    wchar_t CharAt(std::size_t i) const noexcept { return i < _length ? _record->text[i] : L'\0'; }
    template <std::integral Index>
    wchar_t operator[](Index i) const noexcept
    {
        return CharAt(static_cast<std::size_t>(i));
    }

    // Returns a writable character and makes the record exclusive; use CharAt to read. Out of bounds, returns a guard
    // character. A write to the guard is reported when a String is destroyed.
    template <std::integral Index>
    wchar_t& operator[](Index i)
    {
        return WritableChar(static_cast<std::size_t>(i));
    }

    // Returns the text in the string's code page. It is converted on demand and cached until the next change.
    const char* NarrowText() const;
    explicit operator const char*() const { return NarrowText(); }

    unsigned CodePage() const noexcept { return _codePage; }
    void SetCodePage(unsigned codePage);

    std::size_t Capacity() const noexcept { return _record ? _record->capacity : 0; }
    bool SharesRecordWith(const String& other) const noexcept { return _record && _record == other._record; }

    std::uint64_t Hash() const noexcept;

    // Returns the index of the first occurrence, or -1. An empty needle is never found.
    static int Find(const wchar_t* haystack, const wchar_t* needle);

    // Search this text. FindNext continues after the previous match and returns -1 if there was none.
    int FindFirst(const String& s);
    int FindNext(const String& s);

    // Splits the text at the separator and returns field `index`. With `remove`, the field is deleted from the text
    // together with one separator: the one after it for field 0, the one before it otherwise. With an empty separator
    // the whole text is one field.
    String GetField(int index, const String& separator, bool remove);
    String GetField(int index, wchar_t separator, bool remove);

    String Left(std::size_t n) const;
    String Right(std::size_t n) const;
    String Mid(std::size_t start, std::size_t count = kAll) const;
    String Quoted() const;
    String Upper() const; // see MakeUpper

    // Copies the text to the BSTR `*target`, which is allocated if it is null and reallocated otherwise. Returns true
    // on success.
    bool ToBSTR(wchar_t** target) const;

    // Returns the part before each separator, and the part after the last one unless it is empty.
    WCValSList<String> Split(wchar_t separator) const;

    // Returns the parts between the matches of a regular expression.
    WCValSList<String> Split(const String& pattern) const;

    // ---- Virtual operations, in vtable order. Code of other modules is compiled against this order.

    virtual bool IsCaseSensitive() const noexcept;

    // Returns a value below 0, 0 or above 0 (-1 or 1 for case-sensitive comparisons of whole texts). Compares at most
    // `maxChars` characters: all if it is negative, none if it is 0. The left string determines whether case matters.
    // Null is the empty text.
    virtual int Compare(const String& other, int maxChars = -1) const;
    virtual int Compare(const wchar_t* other, int maxChars = -1) const;

    // Compares by the rules of the user interface language. Returns -1, 0 or 1, or -2 if the system can't compare.
    virtual int CompareLocale(const String& other, int maxChars = -1) const;

    // Called before each change of the text.
    virtual void OnChange() noexcept;

    virtual ~String()
    {
        if (_record)
            StringRecord::Release(_record);
        if (guard != 0)
            ReportGuard();
    }

    // ---- Changes

    void Empty() noexcept;

    // Erases a secret: overwrites the text and its cached 8-bit form in memory, then empties the string. A record that
    // is shared with other strings isn't overwritten.
    void Wipe() noexcept;

    // Ensures the capacity; never shrinks it. Without `keep`, the text is lost if a new record is allocated.
    void Reserve(std::size_t capacity, bool keep = true);

    // Returns a buffer of at least `minCapacity` characters, terminator included, that starts with the current text.
    // The caller writes to it and calls ReleaseBuffer, which sets the length to `n`, or to the position of the
    // terminator if `n` is not less than the capacity.
    wchar_t* GetBuffer(std::size_t minCapacity);
    void ReleaseBuffer(std::size_t n = kAll);

    void Append(wchar_t c);
    void Append(const wchar_t* text);
    void Append(const String& s);
    void Append(const wchar_t* text, std::size_t count); // exactly `count` characters
    String& operator+=(wchar_t c)
    {
        Append(c);
        return *this;
    }
    String& operator+=(const wchar_t* text)
    {
        Append(text);
        return *this;
    }
    String& operator+=(const String& s)
    {
        Append(s);
        return *this;
    }

    // Append the separator, unless the string is empty, and then `s`.
    void AppendWithSeparator(const String& separator, const String& s);
    void AppendWithSeparator(wchar_t separator, const String& s);

    void TrimLeft(); // U+0020 only
    void TrimRight(wchar_t c = L' ');
    void Insert(std::size_t pos, const String& s);
    void Delete(std::size_t pos, std::size_t count);

    // Replace all occurrences and return their number. If the character `to` is 0, `from` is removed. Inserted text
    // isn't searched again.
    int Replace(wchar_t from, wchar_t to);
    int Replace(const String& from, const String& to);

    // Maps the text with LCMapString. A failure is logged and leaves the text unchanged.
    void LCMapString(unsigned flags, unsigned locale);
    void MakeUpper();
    void MakeLower();

    // ---- Formatting and messages

    // Formats in the formatter's own dialect into a buffer whose size is estimated from the format, at least 100
    // characters. Longer text is truncated. Returns 0 if the estimate was below 100 characters. Otherwise returns the
    // formatter's count, or -1 if the text was truncated.
    int Format(const wchar_t* format, ...);
    int FormatV(const wchar_t* format, va_list arguments);

    // Returns the system's text for an error code, followed by the code.
    static String SystemErrorText(unsigned code, unsigned short language = 0x400);

    // Returns string resource `id` in the user interface language, with the arguments inserted for %1, %2, ...
    static String Message(HMODULE module, int id, ...);
    static String VMessage(const wchar_t* format, va_list arguments);

    static String LoadResourceString(HMODULE module, unsigned short language, int id);

    // Returns a text of the user's locale. `type` is a LOCALE_ constant.
    static String LocaleInfo(unsigned type);

    // Returns a shared, constant empty string.
    static const String& EmptyString();

protected:
    // Detaches the string from a shared record before a change. With `keep` the shared record is replaced by a copy,
    // otherwise it is dropped.
    void MakeUnique(bool keep);

private:
    void AssignCharacters(const wchar_t* text, std::size_t count);
    void ReplaceRecord(StringRecord* record) noexcept;
    void SetLength(std::size_t length) noexcept;
    wchar_t& WritableChar(std::size_t i);
    void TakeFields(String& other) noexcept;
    void Changing() noexcept;
    static void ReportGuard() noexcept;

    static constexpr wchar_t kEmptyText[1] = {};
    static inline wchar_t guard = 0;

    std::size_t _length = 0;
    StringRecord* _record = nullptr; // null: empty, nothing allocated yet
    std::int32_t _searchPosition = -1;
    std::uint32_t _codePage = 0;
    mutable std::unique_ptr<char[]> _narrow;
};

// A String that compares without regard to the case of A to Z. The usual key type of dictionaries.
class IString : public String
{
public:
    using String::String;
    IString() = default;
    IString(const String& other) : String(other) {}
    IString(String&& other) noexcept : String(std::move(other)) {}
    using String::operator=;

    bool IsCaseSensitive() const noexcept override;
};

// The left operand determines whether case matters.
inline bool operator==(const String& a, const String& b)
{
    return a.Compare(b) == 0;
}
inline bool operator==(const String& a, const wchar_t* b)
{
    return a.Compare(b) == 0;
}
inline std::weak_ordering operator<=>(const String& a, const String& b)
{
    return a.Compare(b) <=> 0;
}
inline std::weak_ordering operator<=>(const String& a, const wchar_t* b)
{
    return a.Compare(b) <=> 0;
}

inline String operator+(const String& a, const String& b)
{
    return String(a, b);
}
inline String operator+(const String& a, const wchar_t* b)
{
    return String(a, b);
}
inline String operator+(const wchar_t* a, const String& b)
{
    return String(String(a), b);
}
inline String operator+(String&& a, const String& b)
{
    a.Append(b);
    return std::move(a);
}
inline String operator+(String&& a, const wchar_t* b)
{
    a.Append(b);
    return std::move(a);
}

} // namespace qx
