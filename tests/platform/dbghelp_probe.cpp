// A library with known functions and variables, compiled without optimisation. The test runs inside these functions.
#include "dbghelp_probe.h"

#include <cstdint>

namespace probe
{

struct Triple
{
    std::int64_t a, b, c;
};

enum Colour : unsigned char
{
    kGreen = 7
};

template <class T>
int Twice(T value, void (*inside)(void*), void* user)
{
    int doubled = static_cast<int>(value + value);
    inside(user);
    return doubled;
}

class Walker
{
public:
    int operator()(const char* text, void (*inside)(void*), void* user) const
    {
        int own = text ? 1 : 0;
        inside(user);
        return own;
    }
};

} // namespace probe

extern "C" PROBE_API int ProbeVariables(void (*inside)(void*), void* user)
{
    struct Inner
    {
        static int Run(signed char small, short medium, int whole, long long large, unsigned char byte, float real,
            double wide, bool flag, const char* text, const char* noText, probe::Triple triple, probe::Colour colour,
            void* pointer, void (*inner)(void*), void* argument)
        {
            int local = whole + 1;
            int array[5] = {1, 2, 3, 4, 5};
            const long long volatile qualified = -5;
            {
                int nested = 77;
                inner(argument);
                local += nested;
            }
            {
                int elsewhere = 88; // out of scope during the call
                local += elsewhere;
            }
            return local + array[4] + static_cast<int>(qualified) + small + medium + static_cast<int>(large) + byte +
                   static_cast<int>(real + static_cast<float>(wide)) + flag + (text != noText) +
                   static_cast<int>(triple.c) + colour + (pointer != nullptr);
        }
    };
    return Inner::Run(-3, -300, 42, -5000000000LL, 200, 1.5F, 2.25, true, "hello", nullptr, {1, 2, 3}, probe::kGreen,
        user, inside, user);
}

extern "C" PROBE_API int ProbeNames(void (*inside)(void*), void* user)
{
    return probe::Twice(21, inside, user) + probe::Walker()("x", inside, user);
}

extern "C" PROBE_API int ProbeManyVariables(void (*inside)(void*), void* user)
{
#define TEN(name)                                                                                                      \
    name##0 = 0, name##1 = 1, name##2 = 2, name##3 = 3, name##4 = 4, name##5 = 5, name##6 = 6, name##7 = 7,            \
    name##8 = 8, name##9 = 9
    [[maybe_unused]] int TEN(a), TEN(b), TEN(c), TEN(d), TEN(e);
#undef TEN
    inside(user);
    return a0 + b0 + c0 + d0 + e0;
}
