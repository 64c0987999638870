// A variant for functions that give one, where the system's own headers aren't at hand.
#pragma once

#include <qxut23/base.h>

#include <cstdint>
#include <string>

struct tagVARIANT;

namespace qxut
{

class Variant
{
public:
    Variant() = default;
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant();

    struct tagVARIANT* Address() { return reinterpret_cast<struct tagVARIANT*>(&_layout); }

    // 0 and the empty text for a variant of another type.
    std::int32_t Number() const;
    std::string Text() const;

private:
    // As in the system's oaidl.h, as far as it is used here.
    struct Layout
    {
        std::uint16_t type = 0;
        std::uint16_t reserved[3] = {};
        union
        {
            std::int32_t number;
            QXWCHAR* text;
            void* room[2] = {};
        };
    };
    static_assert(sizeof(Layout) == 8 + 2 * sizeof(void*));

    Layout _layout;
};

} // namespace qxut
