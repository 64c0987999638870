#include "core/charset/charset_conversion.h"

#include "core/system_values.h"
#include "core/wipe.h"

#include <windows.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <new>

namespace qx
{

namespace
{

constexpr wchar_t kEmptyWide[] = L"";
constexpr char kEmptyNarrow[] = "";

// Returns a length as an int, the type of the system's parameters. Returns 0 for a length that doesn't fit, so the
// converted text is empty.
int SystemLength(std::size_t length)
{
    return length < INT_MAX ? static_cast<int>(length) : 0;
}

// Returns the flags for a conversion to wide text. The system rejects all flags for UTF-8.
DWORD WideningFlags(std::uint32_t codePage)
{
    return codePage == CP_UTF8 ? 0 : MB_PRECOMPOSED;
}

// Returns the length of the text in a buffer, at most size - 1, because the terminator may be missing.
int PresentLength(const char* buffer, std::uint32_t size)
{
    return size == 0 ? 0 : SystemLength(strnlen(buffer, size - 1));
}

int PresentLength(const wchar_t* buffer, std::uint32_t size)
{
    return size == 0 ? 0 : SystemLength(wcsnlen(buffer, size - 1));
}

} // namespace

clsCharsetConversionString::clsCharsetConversionString(const wchar_t* text)
{
    StoreWide(text);
}

clsCharsetConversionString::clsCharsetConversionString(const char* text)
{
    StoreNarrow(text);
}

clsCharsetConversionString::clsCharsetConversionString(CodePage codePage) : _codePage(codePage.value) {}

// The working buffer has one character more than the caller's buffer. The inline buffer has no extra character for a
// capacity of 64, but never receives more than `capacity` characters.
clsCharsetConversionString::clsCharsetConversionString(char* buffer, std::uint32_t capacity)
    : _narrowWriteBack(buffer),
      _writeBackCapacity(capacity)
{
    _wide = capacity <= kInlineSize ? _inlineWide : new wchar_t[std::size_t{capacity} + 1];
    int converted = 0;
    if (const int length = buffer != nullptr ? PresentLength(buffer, capacity) : 0; length > 0)
    {
        const std::uint32_t codePage = EffectiveCodePage();
        converted = MultiByteToWideChar(codePage, WideningFlags(codePage), buffer, length, _wide, length);
    }
    _wide[converted] = 0;
}

clsCharsetConversionString::clsCharsetConversionString(wchar_t* buffer, std::uint32_t capacity)
    : _wideWriteBack(buffer),
      _writeBackCapacity(capacity)
{
    _narrow = capacity <= kInlineSize ? _inlineNarrow : new char[std::size_t{capacity} + 1];
    int converted = 0;
    if (const int length = buffer != nullptr ? PresentLength(buffer, capacity) : 0; length > 0)
    {
        converted = WideCharToMultiByte(
            EffectiveCodePage(), 0, buffer, length, _narrow, static_cast<int>(capacity - 1), nullptr, nullptr);
    }
    _narrow[converted] = 0;
}

// If memory for the conversion runs out, the caller's buffer receives the empty text, because a destructor must not
// throw.
clsCharsetConversionString::~clsCharsetConversionString()
{
    try
    {
        WriteBack();
    }
    catch (const std::bad_alloc&)
    {
        if (_narrowWriteBack != nullptr)
            *_narrowWriteBack = 0;
        if (_wideWriteBack != nullptr)
            *_wideWriteBack = 0;
    }
    Release();
}

void clsCharsetConversionString::SetNarrow(const char* text)
{
    WriteBack();
    Release();
    StoreNarrow(text);
}

const wchar_t* clsCharsetConversionString::GetWide()
{
    if (_wide != nullptr)
    {
        return _wide;
    }
    const std::size_t length = _narrow != nullptr ? strlen(_narrow) : 0;
    if (length == 0)
    {
        return kEmptyWide;
    }

    if (_codePage == kNoCodePage)
    {
        _wide = NewWide(length);
        for (std::size_t i = 0; i <= length; ++i)
        {
            _wide[i] = static_cast<unsigned char>(_narrow[i]);
        }
        return _wide;
    }

    const std::uint32_t codePage = EffectiveCodePage();
    const DWORD flags = WideningFlags(codePage);
    const int size = MultiByteToWideChar(codePage, flags, _narrow, SystemLength(length), nullptr, 0);
    _wide = NewWide(static_cast<std::size_t>(size));
    if (size > 0)
    {
        MultiByteToWideChar(codePage, flags, _narrow, SystemLength(length), _wide, size);
    }
    _wide[size] = 0;
    return _wide;
}

const char* clsCharsetConversionString::GetNarrow()
{
    if (_narrow != nullptr)
    {
        return _narrow;
    }
    const std::size_t length = _wide != nullptr ? wcslen(_wide) : 0;
    if (length == 0)
    {
        return kEmptyNarrow;
    }

    const std::uint32_t codePage = EffectiveCodePage();
    const int size = WideCharToMultiByte(codePage, 0, _wide, SystemLength(length), nullptr, 0, nullptr, nullptr);
    _narrow = NewNarrow(static_cast<std::size_t>(size));
    // The terminator is converted along with the text. If the terminator takes more than one byte (code pages with
    // shift states) or the code page doesn't exist, the text is converted without it.
    if (WideCharToMultiByte(codePage, 0, _wide, SystemLength(length + 1), _narrow, size + 1, nullptr, nullptr) == 0)
    {
        if (size > 0)
        {
            WideCharToMultiByte(codePage, 0, _wide, SystemLength(length), _narrow, size, nullptr, nullptr);
        }
        _narrow[size] = 0;
    }
    return _narrow;
}

void clsCharsetConversionString::Wipe() noexcept
{
    if (_wide != nullptr)
        qx::Wipe(_wide, wcslen(_wide) * sizeof(wchar_t));
    if (_narrow != nullptr)
        qx::Wipe(_narrow, strlen(_narrow));
}

std::uint32_t clsCharsetConversionString::EffectiveCodePage() const
{
    return _codePage == kDefaultCodePage ? DefaultCodePage() : _codePage;
}

wchar_t* clsCharsetConversionString::NewWide(std::size_t length)
{
    return length < kInlineSize ? _inlineWide : new wchar_t[length + 1];
}

char* clsCharsetConversionString::NewNarrow(std::size_t length)
{
    return length < kInlineSize ? _inlineNarrow : new char[length + 1];
}

void clsCharsetConversionString::StoreWide(const wchar_t* text)
{
    const std::size_t length = text != nullptr ? wcslen(text) : 0;
    _wide = NewWide(length);
    memcpy(_wide, length != 0 ? text : kEmptyWide, (length + 1) * sizeof(wchar_t));
}

void clsCharsetConversionString::StoreNarrow(const char* text)
{
    const std::size_t length = text != nullptr ? strlen(text) : 0;
    _narrow = NewNarrow(length);
    memcpy(_narrow, length != 0 ? text : kEmptyNarrow, length + 1);
}

// A buffer of size 0 is left untouched; no terminator is written.
void clsCharsetConversionString::WriteBack()
{
    if (_narrowWriteBack != nullptr && _writeBackCapacity != 0)
    {
        strncpy(_narrowWriteBack, GetNarrow(), _writeBackCapacity);
        _narrowWriteBack[_writeBackCapacity - 1] = 0;
    }
    _narrowWriteBack = nullptr;

    if (_wideWriteBack != nullptr && _writeBackCapacity != 0)
    {
        wcsncpy(_wideWriteBack, GetWide(), _writeBackCapacity);
        _wideWriteBack[_writeBackCapacity - 1] = 0;
    }
    _wideWriteBack = nullptr;
}

void clsCharsetConversionString::Release()
{
    if (_wide != _inlineWide)
    {
        delete[] _wide;
    }
    if (_narrow != _inlineNarrow)
    {
        delete[] _narrow;
    }
    _wide = nullptr;
    _narrow = nullptr;
}

clsCharsetConversionStringCP::clsCharsetConversionStringCP(std::uint32_t codePage)
    : clsCharsetConversionString(CodePage{codePage})
{
}

clsCharsetConversionStringCP::clsCharsetConversionStringCP(std::uint32_t codePage, const char* text)
    : clsCharsetConversionString(CodePage{codePage})
{
    StoreNarrow(text);
}

clsCharsetConversionStringCP::clsCharsetConversionStringCP(std::uint32_t codePage, const wchar_t* text)
    : clsCharsetConversionString(CodePage{codePage})
{
    StoreWide(text);
}

} // namespace qx
