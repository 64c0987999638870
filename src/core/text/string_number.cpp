#include "core/text/string.h"

#include <array>
#include <charconv>

namespace qx
{

namespace
{

constexpr int kSmallest = -10;
constexpr int kLargest = 10;
constexpr std::size_t kNumberCapacity = 32;

template <class Number>
String Decimal(Number value)
{
    char digits[16];
    const char* end = std::to_chars(digits, digits + sizeof(digits), value).ptr;
    const auto length = static_cast<std::size_t>(end - digits);
    String text;
    std::copy(digits, digits + length, text.GetBuffer(kNumberCapacity));
    text.ReleaseBuffer(length);
    return text;
}

using SmallNumbers = std::array<String, kLargest - kSmallest + 1>;

SmallNumbers MakeSmallNumbers()
{
    SmallNumbers numbers;
    int value = kSmallest;
    for (String& number : numbers)
        number = Decimal(value++);
    return numbers;
}

// Returns the text of a small number. The strings are created on first use. The compiler's guard for static variables
// makes other threads wait and later costs only a load, whereas a critical section would have to be entered by each
// caller.
const String& SmallNumber(int value)
{
    static const SmallNumbers numbers = MakeSmallNumbers();
    return numbers[static_cast<std::size_t>(value - kSmallest)];
}

} // namespace

String String::FromInt(int value)
{
    return kSmallest <= value && value <= kLargest ? SmallNumber(value) : Decimal(value);
}

String String::FromUnsigned(unsigned value)
{
    return value <= unsigned{kLargest} ? SmallNumber(static_cast<int>(value)) : Decimal(value);
}

} // namespace qx
