// A code page: converts its bytes to UTF-16 and back.
#pragma once

#include <minwindef.h>

#include <string_view>

#include "text/output.h"

namespace qxplatform
{

enum class OnInvalid
{
    Replace,
    Refuse
};

struct Encoding
{
    OnInvalid onInvalid = OnInvalid::Replace;
    bool bestFit = true;                // similar characters may replace characters that the page lacks
    std::string_view replacement = "?"; // for characters that the page can't represent
};

struct EncodeResult
{
    bool valid = true;
    bool replaced = false;
};

class CodePage
{
public:
    CodePage() = default;
    CodePage(const CodePage&) = delete;
    CodePage& operator=(const CodePage&) = delete;
    virtual ~CodePage() = default;

    // Returns false if the bytes are invalid in this page and `onInvalid` refuses invalid bytes.
    virtual bool Decode(std::string_view bytes, OnInvalid onInvalid, WideOutput& out) const = 0;
    virtual EncodeResult Encode(std::wstring_view text, const Encoding& encoding, ByteOutput& out) const = 0;

    // Return the flags that the two conversion functions accept for this page.
    virtual DWORD DecodeFlags() const = 0;
    virtual DWORD EncodeFlags() const = 0;

    // Pages that can represent every character don't accept a replacement from the caller.
    virtual bool TakesReplacement() const { return true; }
    virtual bool IsLeadByte(unsigned char) const { return false; }
};

// Returns null if the page is not supported. CP_ACP, CP_OEMCP and CP_THREAD_ACP name the default pages. A page is
// created at its first use and kept until the process ends. Thread-safe.
const CodePage* FindCodePage(UINT number);

// Returns true if the page is supported, without creating it. Returns false for CP_ACP and the other default pages.
bool IsCodePageOffered(UINT number);

UINT DefaultCodePage();
UINT DefaultOemCodePage();

} // namespace qxplatform
