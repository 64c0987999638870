// Code page 65000: UTF-7 (RFC 2152).
#pragma once

#include "text/code_page.h"

namespace qxplatform
{

class Utf7Page final : public CodePage
{
public:
    bool Decode(std::string_view bytes, OnInvalid onInvalid, WideOutput& out) const override;
    EncodeResult Encode(std::wstring_view text, const Encoding& encoding, ByteOutput& out) const override;
    DWORD DecodeFlags() const override { return 0; }
    DWORD EncodeFlags() const override { return 0; }
    bool TakesReplacement() const override { return false; }
};

} // namespace qxplatform
