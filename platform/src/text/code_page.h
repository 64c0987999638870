// A code page: how its bytes become UTF-16, and back.
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
    bool bestFit = true;                // a similar character may stand in for one that the page lacks
    std::string_view replacement = "?"; // for characters that have no place in the page
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

    // False where the bytes are not text of this page and `onInvalid` refuses such bytes.
    virtual bool Decode(std::string_view bytes, OnInvalid onInvalid, WideOutput& out) const = 0;
    virtual EncodeResult Encode(std::wstring_view text, const Encoding& encoding, ByteOutput& out) const = 0;

    // The flags that the two conversion calls take for this page.
    virtual DWORD DecodeFlags() const = 0;
    virtual DWORD EncodeFlags() const = 0;

    // Pages that can write every character have no replacement for the caller to choose.
    virtual bool TakesReplacement() const { return true; }
    virtual bool IsLeadByte(unsigned char) const { return false; }
};

// Null for a page that is not offered. CP_ACP, CP_OEMCP and CP_THREAD_ACP name the default pages. A page is made at
// its first use and lives as long as the process; safe to call from any thread.
const CodePage* FindCodePage(UINT number);

// The same question without making the page; the names of the default pages are no numbers of pages.
bool IsCodePageOffered(UINT number);

UINT DefaultCodePage();
UINT DefaultOemCodePage();

} // namespace qxplatform
