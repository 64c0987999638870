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

// The text type of the library: 16-bit characters in a record that copies share and the first change makes exclusive,
// so that a copy costs one atomic add. Positions and counts are in characters and begin at 0. The text always ends with
// a zero character; a zero inside the length (some decoders make them) counts as a character, but ends the text for all
// operations that take zero-terminated text: comparison, search, formatting.
//
// One object belongs to one thread at a time; objects on different threads may share a record. A change that finds
// nothing to do leaves a shared record shared. Failed allocations throw std::bad_alloc and leave the text as it was.
class String
{
public:
    // As a count: all the rest.
    static constexpr std::size_t kAll = 0x7FFFFFFE;

    // Chooses the formatting constructor, whose arguments another one would take as positions.
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

    // At most `count` characters of a zero-terminated text, from `start` on. Null is the empty text.
    String(const wchar_t* text, std::size_t start = 0, std::size_t count = kAll);

    // Exactly these characters.
    explicit String(std::wstring_view characters);

    // Concatenation; the code page is that of `a`.
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

    // 8-bit text in the string's code page, or with code page 0 characters of the same values as the bytes. `count`
    // bytes from `offset`, or up to the terminator. What the system can't convert, and more than 2 GB, gives the empty
    // text.
    void Assign(const char* text, std::size_t offset = 0, std::size_t count = kAll);

    void Fill(wchar_t c, std::size_t count);

    static String FromInt(int value);
    static String FromUnsigned(unsigned value);

    // Moves the text out of another string, which is empty then. The code page comes with it.
    void Take(String& other) noexcept;

    // ---- Reading

    std::size_t Length() const noexcept { return _length; }
    bool IsEmpty() const noexcept { return _length == 0; }
    const wchar_t* Text() const noexcept { return _record ? _record->text : kEmptyText; }
    operator const wchar_t*() const noexcept { return Text(); }
    std::wstring_view View() const noexcept { return {Text(), _length}; }

    // The character at a position, or 0 out of bounds.
    wchar_t CharAt(std::size_t i) const noexcept { return i < _length ? _record->text[i] : L'\0'; }
    template <std::integral Index>
    wchar_t operator[](Index i) const noexcept
    {
        return CharAt(static_cast<std::size_t>(i));
    }

    // The writable form: it makes the record exclusive, so use CharAt to read. Out of bounds it gives the guard
    // character, and writing to that is reported when a String is destroyed.
    template <std::integral Index>
    wchar_t& operator[](Index i)
    {
        return WritableChar(static_cast<std::size_t>(i));
    }

    // The text in the string's code page, made on demand and kept until the next change.
    const char* NarrowText() const;
    explicit operator const char*() const { return NarrowText(); }

    unsigned CodePage() const noexcept { return _codePage; }
    void SetCodePage(unsigned codePage);

    std::size_t Capacity() const noexcept { return _record ? _record->capacity : 0; }
    bool SharesRecordWith(const String& other) const noexcept { return _record && _record == other._record; }

    std::uint64_t Hash() const noexcept;

    // The index of the first occurrence, or -1. An empty needle is never found.
    static int Find(const wchar_t* haystack, const wchar_t* needle);

    // Find in the own text; FindNext goes on behind what was found, and gives -1 once nothing was.
    int FindFirst(const String& s);
    int FindNext(const String& s);

    // Field `index` of the text cut at the separator; with `remove` it is cut out, together with one separator: that
    // behind it for field 0, that before it for the others. An empty separator leaves one field, the whole text.
    String GetField(int index, const String& separator, bool remove);
    String GetField(int index, wchar_t separator, bool remove);

    String Left(std::size_t n) const;
    String Right(std::size_t n) const;
    String Mid(std::size_t start, std::size_t count = kAll) const;
    String Quoted() const;
    String Upper() const; // see MakeUpper

    // Copies the text to the BSTR *target, which is allocated if it is null and reallocated otherwise; whether that
    // succeeded.
    bool ToBSTR(wchar_t** target) const;

    // Every stretch that ends at a separator, and the tail if it isn't empty.
    WCValSList<String> Split(wchar_t separator) const;

    // The pieces between the matches of a regular expression.
    WCValSList<String> Split(const String& pattern) const;

    // ---- Virtual operations, in slot order; other modules' code is compiled against it.

    virtual bool IsCaseSensitive() const noexcept;

    // Below 0, 0 or above 0 (-1 and 1 for whole texts with case). At most `maxChars` characters count: all if it is
    // negative, none if it is 0. The left string says whether case counts, and null is the empty text.
    virtual int Compare(const String& other, int maxChars = -1) const;
    virtual int Compare(const wchar_t* other, int maxChars = -1) const;

    // By the rules of the user interface language: -1, 0 or 1, or -2 if the system can't compare.
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

    // Makes room; never gives any back. Without `keep` the text is lost where a new record is made.
    void Reserve(std::size_t capacity, bool keep = true);

    // Room for the caller to write to: `minCapacity` characters, terminator included, that begin with the present text.
    // ReleaseBuffer ends the writing and sets the length: `n`, or the place of the terminator if `n` isn't below the
    // capacity.
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

    // With the separator in front unless the string is empty.
    void AppendWithSeparator(const String& separator, const String& s);
    void AppendWithSeparator(wchar_t separator, const String& s);

    void TrimLeft(); // U+0020 only
    void TrimRight(wchar_t c = L' ');
    void Insert(std::size_t pos, const String& s);
    void Delete(std::size_t pos, std::size_t count);

    // The number of replacements. With `to` = 0 the character is removed; an inserted text isn't searched again.
    int Replace(wchar_t from, wchar_t to);
    int Replace(const String& from, const String& to);

    // Maps the text by LCMapString. A failure is logged and leaves the text as it was.
    void LCMapString(unsigned flags, unsigned locale);
    void MakeUpper();
    void MakeLower();

    // ---- Formatting and messages

    // Formats with the formatter's own dialect into a buffer of a size that is estimated from the format: 100
    // characters if the estimate is below that. What is longer is cut. The result is the formatter's count if the
    // estimate was 100 or more (-1 if the text was cut), else 0.
    int Format(const wchar_t* format, ...);
    int FormatV(const wchar_t* format, va_list arguments);

    // The system's text of an error code with the code behind it.
    static String SystemErrorText(unsigned code, unsigned short language = 0x400);

    // String resource `id` in the user interface language with the arguments put in for %1, %2, ...
    static String Message(HMODULE module, int id, ...);
    static String VMessage(const wchar_t* format, va_list arguments);

    static String LoadResourceString(HMODULE module, unsigned short language, int id);

    // A text of the user's locale, by its LOCALE_ constant.
    static String LocaleInfo(unsigned type);

    // The one constant empty string.
    static const String& EmptyString();

protected:
    // The first step of every change: with `keep` a shared record is replaced by a copy, without it by none.
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
    StringRecord* _record = nullptr; // null: empty, and never held text
    std::int32_t _searchPosition = -1;
    std::uint32_t _codePage = 0;
    mutable std::unique_ptr<char[]> _narrow;
};

// The same string compared without case (A to Z only): the usual key of the dictionaries.
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

// The left operand decides whether case counts.
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
