// Code page 65001: UTF-8.
#pragma once

#include "text/code_page.h"

namespace qxplatform
{

class Utf8Page final : public CodePage
{
public:
    bool Decode(std::string_view bytes, OnInvalid onInvalid, WideOutput& out) const override;
    EncodeResult Encode(std::wstring_view text, const Encoding& encoding, ByteOutput& out) const override;
    DWORD DecodeFlags() const override;
    DWORD EncodeFlags() const override;
    bool TakesReplacement() const override { return false; }
};

} // namespace qxplatform
