// A text in both a wide and an 8-bit form, each converted on demand. The 8-bit exports use it to call the wide library.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qx
{

// Intended as a local variable of one export. Texts below 64 characters are stored inside the object, so that wrapping
// an ordinary argument doesn't allocate.
//
// The code page is 0 for the module's default code page, a Windows code page, or kNoCodePage. kNoCodePage widens byte
// by byte; it works only towards wide text, and the other direction produces an empty text.
//
// Conversion errors aren't reported. Text that can't be converted becomes empty or is replaced with the system's
// substitutes.
class clsCharsetConversionString
{
public:
    static constexpr std::uint32_t kDefaultCodePage = 0;
    static constexpr std::uint32_t kNoCodePage = 0xFFFFFFFF;
    static constexpr std::uint32_t kInlineSize = 64;

    // Both copy the text. Null is the empty text.
    explicit clsCharsetConversionString(const wchar_t* text);
    explicit clsCharsetConversionString(const char* text);

    // Wraps an output buffer: the caller's 8-bit buffer of `capacity` bytes. WideBuffer() returns a wide working buffer
    // that initially contains the converted contents. Pass it with the same capacity to a wide function. The destructor
    // converts the result back and stores it in the caller's buffer, truncated to capacity - 1 bytes and terminated. A
    // null buffer is allowed; nothing is stored then.
    clsCharsetConversionString(char* buffer, std::uint32_t capacity);
    // The same in the other direction: NarrowBuffer() is the working buffer for the caller's wide buffer of `capacity`
    // characters.
    clsCharsetConversionString(wchar_t* buffer, std::uint32_t capacity);

    clsCharsetConversionString(const clsCharsetConversionString&) = delete;
    clsCharsetConversionString& operator=(const clsCharsetConversionString&) = delete;

    // Stores the result in the output buffer, if there is one, and frees the texts.
    virtual ~clsCharsetConversionString();

    // Behaves as if the object were destroyed and constructed again from `text`, which must not be one of the object's
    // own texts. The code page is kept.
    void SetNarrow(const char* text);

    // Return the text in the respective form. It is valid until SetNarrow or the destructor is called. Never null.
    const wchar_t* GetWide();
    const char* GetNarrow();

    // Erases the texts in memory, for secrets. Afterwards both forms are empty.
    void Wipe() noexcept;

    // Return the working buffer of an output buffer.
    wchar_t* WideBuffer() { return _wide; }
    char* NarrowBuffer() { return _narrow; }

protected:
    struct CodePage
    {
        std::uint32_t value;
    };
    explicit clsCharsetConversionString(CodePage codePage);

    void StoreWide(const wchar_t* text);
    void StoreNarrow(const char* text);

private:
    std::uint32_t EffectiveCodePage() const;
    wchar_t* NewWide(std::size_t length);
    char* NewNarrow(std::size_t length);
    void WriteBack();
    void Release();

    wchar_t* _wide = nullptr; // the inline buffer or a heap block; null until this form exists
    char* _narrow = nullptr;
    wchar_t _inlineWide[kInlineSize];
    char _inlineNarrow[kInlineSize];
    wchar_t* _wideWriteBack = nullptr;
    char* _narrowWriteBack = nullptr;
    std::uint32_t _writeBackCapacity = 0;
    std::uint32_t _codePage = kDefaultCodePage;
};

// The same with an explicit code page.
class clsCharsetConversionStringCP : public clsCharsetConversionString
{
public:
    explicit clsCharsetConversionStringCP(std::uint32_t codePage);
    clsCharsetConversionStringCP(std::uint32_t codePage, const char* text);
    clsCharsetConversionStringCP(std::uint32_t codePage, const wchar_t* text);
};

} // namespace qx
