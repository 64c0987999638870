// One text in a wide and an 8-bit form, each made on demand: what stands between the 8-bit exports and the wide
// library.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qx
{

// A local object of one thread, for the length of one export. Texts below 64 characters live inside the object, so
// that wrapping an ordinary argument allocates nothing.
//
// The code page is 0 for the module's default one, kNoCodePage for widening byte by byte (towards wide text only;
// the other direction then finds no page and gives empty text), or any Windows code page.
//
// Conversion errors aren't reported: what can't be converted becomes empty or what the system puts in its place.
class clsCharsetConversionString
{
public:
    static constexpr std::uint32_t kDefaultCodePage = 0;
    static constexpr std::uint32_t kNoCodePage = 0xFFFFFFFF;
    static constexpr std::uint32_t kInlineSize = 64;

    // Both copy the text; null gives the empty text.
    explicit clsCharsetConversionString(const wchar_t* text);
    explicit clsCharsetConversionString(const char* text);

    // The output form: a caller's 8-bit buffer of `capacity` bytes, and a wide working buffer in its place, which
    // begins with what the buffer holds now. Give WideBuffer() and the same capacity to a wide function; the
    // destructor delivers its text to the caller, cut to capacity - 1 bytes and terminated. A null buffer is allowed
    // and gets nothing.
    clsCharsetConversionString(char* buffer, std::uint32_t capacity);
    // The same the other way round: NarrowBuffer() works for a caller's wide buffer of `capacity` characters.
    clsCharsetConversionString(wchar_t* buffer, std::uint32_t capacity);

    clsCharsetConversionString(const clsCharsetConversionString&) = delete;
    clsCharsetConversionString& operator=(const clsCharsetConversionString&) = delete;

    // Delivers the output form's result and releases the texts.
    virtual ~clsCharsetConversionString();

    // As if the object were destroyed and made anew from `text`, which must not be one of its own texts. The code
    // page stays.
    void SetNarrow(const char* text);

    // The text in that form, valid as long as the object and until SetNarrow. Never null.
    const wchar_t* GetWide();
    const char* GetNarrow();

    // The working buffer of an output form.
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

    wchar_t* _wide = nullptr; // the inline buffer or a block of its own; null until that form exists
    char* _narrow = nullptr;
    wchar_t _inlineWide[kInlineSize];
    char _inlineNarrow[kInlineSize];
    wchar_t* _wideWriteBack = nullptr;
    char* _narrowWriteBack = nullptr;
    std::uint32_t _writeBackCapacity = 0;
    std::uint32_t _codePage = kDefaultCodePage;
};

// The same with a code page of its own.
class clsCharsetConversionStringCP : public clsCharsetConversionString
{
public:
    explicit clsCharsetConversionStringCP(std::uint32_t codePage);
    clsCharsetConversionStringCP(std::uint32_t codePage, const char* text);
    clsCharsetConversionStringCP(std::uint32_t codePage, const wchar_t* text);
};

} // namespace qx
