#include "core/text/string.h"

#include "core/debug_line.h"
#include "core/text/characters.h"
#include "core/wipe.h"

#include <windows.h>

#include <oleauto.h>
#include <wchar.h>

#include <algorithm>
#include <climits>
#include <cstring>

namespace qx
{

const String& String::EmptyString()
{
    static const String empty;
    return empty;
}

bool String::IsCaseSensitive() const noexcept
{
    return true;
}

bool IString::IsCaseSensitive() const noexcept
{
    return false;
}

void String::OnChange() noexcept {}

void String::ReportGuard() noexcept
{
    DebugLine(L"WRN: detected write to String::operator[] with index out of bounds");
}

// ---- Construction and assignment

String::String(const wchar_t* text, std::size_t start, std::size_t count) : String()
{
    Assign(text, start, count);
}

String::String(std::wstring_view characters) : String()
{
    AssignCharacters(characters.data(), characters.size());
}

String::String(const String& a, const wchar_t* b) : String(a)
{
    Append(b);
}

String::String(const String& a, const String& b) : String(a)
{
    Append(b);
}

String::String(FormatTag, const wchar_t* format, ...) : String()
{
    va_list arguments;
    va_start(arguments, format);
    FormatV(format, arguments);
    va_end(arguments);
}

String& String::operator=(const String& other)
{
    if (_record == other._record)
    {
        SetCodePage(other._codePage);
        _length = other._length;
        return *this;
    }
    Changing();
    if (other._record)
        other._record->AddUser();
    ReplaceRecord(other._record);
    _length = other._length;
    _codePage = other._codePage;
    return *this;
}

void String::Assign(const wchar_t* text)
{
    AssignCharacters(text, text ? wcslen(text) : 0);
}

void String::Assign(const wchar_t* text, std::size_t start, std::size_t count)
{
    if (!text)
    {
        Empty();
        return;
    }
    const std::size_t limit = count >= kAll || start > kAll - count ? kAll : start + count;
    const std::size_t found = wcsnlen(text, limit);
    if (start >= found)
        Empty();
    else
        AssignCharacters(text + start, std::min(found - start, count));
}

void String::AssignCharacters(const wchar_t* text, std::size_t count)
{
    if (count == 0)
    {
        Empty();
        return;
    }
    // The characters may belong to this string, so the old record is released only after the copy.
    if (_record && !_record->IsShared() && _record->capacity > count)
    {
        Changing();
        MoveCharacters(_record->text, text, count);
    }
    else
    {
        StringRecord* record = StringRecord::Create(StringRecord::CapacityFor(count));
        MoveCharacters(record->text, text, count);
        Changing();
        ReplaceRecord(record);
    }
    SetLength(count);
}

void String::Fill(wchar_t c, std::size_t count)
{
    if (c == 0 || count == 0)
    {
        Empty();
        return;
    }
    Reserve(StringRecord::CapacityFor(count), false);
    std::fill_n(_record->text, count, c);
    SetLength(count);
}

void String::Take(String& other) noexcept
{
    if (this == &other)
        return;
    if (SharesRecordWith(other)) // only the code page changes, so the narrow copy can stay valid
    {
        SetCodePage(other._codePage);
        other.Empty();
        return;
    }
    Changing();
    ReplaceRecord(nullptr);
    TakeFields(other);
}

// The cached narrow text moves along with the text.
void String::TakeFields(String& other) noexcept
{
    other.OnChange();
    _length = std::exchange(other._length, 0);
    _record = std::exchange(other._record, nullptr);
    _codePage = other._codePage;
    _narrow = std::move(other._narrow);
}

void String::SetCodePage(unsigned codePage)
{
    if (codePage != _codePage)
        _narrow.reset();
    _codePage = codePage;
}

// ---- The record

void String::Changing() noexcept
{
    _narrow.reset();
    OnChange();
}

void String::ReplaceRecord(StringRecord* record) noexcept
{
    if (StringRecord* old = std::exchange(_record, record))
        StringRecord::Release(old);
}

void String::SetLength(std::size_t length) noexcept
{
    _record->text[length] = 0;
    _length = length;
}

void String::MakeUnique(bool keep)
{
    if (_record && _record->IsShared())
    {
        StringRecord* own = nullptr;
        if (keep)
        {
            own = StringRecord::Create(_record->capacity);
            MoveCharacters(own->text, _record->text, _record->capacity);
        }
        else
        {
            _length = 0;
        }
        ReplaceRecord(own);
    }
    Changing();
}

void String::Empty() noexcept
{
    MakeUnique(false);
    if (_record)
        SetLength(0);
}

void String::Wipe() noexcept
{
    if (_narrow)
        qx::Wipe(_narrow.get(), std::strlen(_narrow.get()));
    if (_record && !_record->IsShared())
        qx::Wipe(_record->text, _record->capacity * sizeof(wchar_t));
    Empty();
}

void String::Reserve(std::size_t capacity, bool keep)
{
    if (!_record && capacity == 0)
        return;
    const bool suffices = _record && capacity <= _record->capacity;
    if (suffices && (keep || !_record->IsShared()))
    {
        MakeUnique(keep);
        return;
    }
    // A record that is too small is replaced in any case, so don't copy a shared record first.
    StringRecord* record = capacity > 0 ? StringRecord::Create(capacity) : nullptr;
    if (_record && keep)
        MoveCharacters(record->text, _record->text, _record->capacity);
    else
        _length = 0;
    Changing();
    ReplaceRecord(record);
}

wchar_t* String::GetBuffer(std::size_t minCapacity)
{
    Reserve(_record || minCapacity > 0 ? minCapacity : StringRecord::CapacityFor(0));
    _record->text[_record->capacity - 1] = 0;
    return _record->text;
}

void String::ReleaseBuffer(std::size_t n)
{
    _narrow.reset();
    if (!_record)
        _length = 0;
    else if (n < _record->capacity)
        SetLength(n);
    else
        SetLength(wcsnlen(_record->text, _record->capacity - 1));
}

wchar_t& String::WritableChar(std::size_t i)
{
    if (i >= _length)
        return guard;
    MakeUnique(true);
    return _record->text[i];
}

// ---- Parts of the text

String String::Left(std::size_t n) const
{
    return Mid(0, n);
}

String String::Right(std::size_t n) const
{
    return Mid(n < _length ? _length - n : 0);
}

String String::Mid(std::size_t start, std::size_t count) const
{
    if (!_record)
        return EmptyString();
    if (start == 0 && count >= _length)
        return *this;
    return start < _length ? String(View().substr(start, count)) : String();
}

String String::Quoted() const
{
    String quoted;
    quoted.Reserve(StringRecord::CapacityFor(_length + 2));
    quoted.Append(L'"');
    quoted.Append(*this);
    quoted.Append(L'"');
    return quoted;
}

bool String::ToBSTR(wchar_t** target) const
{
    if (!target)
        return false;
    bool isStored = false;
    if (_length <= UINT_MAX / sizeof(wchar_t) - 1)
    {
        const auto length = static_cast<UINT>(_length);
        if (*target)
            isStored = SysReAllocStringLen(target, Text(), length) != FALSE;
        else
            isStored = (*target = SysAllocStringLen(Text(), length)) != nullptr;
    }
    if (!isStored)
        SetLastError(ERROR_NOT_ENOUGH_MEMORY); // for exports without a result; the system's functions don't set it
    return isStored;
}

} // namespace qx
