// A variant that receives results of the library, for programs that don't include the system's headers.
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

    // Return the contents, or 0 and the empty text if the variant has another type.
    std::int32_t Number() const;
    std::string Text() const;
    // Days since 30 December 1899.
    bool IsDate() const;
    double Date() const;

private:
    // As in the system's oaidl.h; only the members used here.
    struct Layout
    {
        std::uint16_t type = 0;
        std::uint16_t reserved[3] = {};
        union
        {
            std::int32_t number;
            QXWCHAR* text;
            double date;
            void* room[2] = {};
        };
    };
    static_assert(sizeof(Layout) == 8 + 2 * sizeof(void*));

    Layout _layout;
};

} // namespace qxut
