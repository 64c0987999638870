#include "variant.h"

#include "text.h"

#include <qxut23/bstr.h>

#include <cstdint>

namespace qxut
{

namespace
{

constexpr std::uint16_t kNumber = 3; // VT_I4
constexpr std::uint16_t kDate = 7;   // VT_DATE
constexpr std::uint16_t kText = 8;   // VT_BSTR

} // namespace

Variant::~Variant()
{
    if (_layout.type == kText)
        SysFreeString(_layout.text);
}

std::int32_t Variant::Number() const
{
    return _layout.type == kNumber ? _layout.number : 0;
}

std::string Variant::Text() const
{
    return _layout.type == kText && _layout.text != nullptr ? Utf8(_layout.text) : std::string();
}

bool Variant::IsDate() const
{
    return _layout.type == kDate;
}

double Variant::Date() const
{
    return IsDate() ? _layout.date : 0;
}

} // namespace qxut
