// One conversion of a format in the Microsoft dialect, and the arguments that go with it.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <optional>

namespace qxplatform
{

// A list of arguments that can be handed on by reference.
class Arguments
{
public:
    explicit Arguments(va_list list) { va_copy(_list, list); }
    ~Arguments() { va_end(_list); }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    template <class T>
    T Next()
    {
        return va_arg(_list, T);
    }

private:
    va_list _list;
};

// What the letters before the conversion say of the argument's size. `l` and `w` mean 32 bits for a number and wide for
// text, `h` 16 bits and narrow.
enum class ArgumentSize
{
    Default,
    Short,
    Long,
    Bits64,
    Own // `T`: text of the format's own width
};

struct Conversion
{
    bool left = false;
    bool plus = false;
    bool blank = false;
    bool alternate = false;
    bool zero = false;
    std::size_t width = 0;
    std::optional<std::size_t> precision;
    ArgumentSize size = ArgumentSize::Default;
    wchar_t letter = 0; // 0 if the format ended within the conversion
};

// Reads the size letters at `format`, and goes behind them.
ArgumentSize ReadArgumentSize(const wchar_t*& format);

// Reads the conversion whose `%` stands before `format`, takes its `*` arguments, and goes behind it.
Conversion ReadConversion(const wchar_t*& format, Arguments& arguments);

} // namespace qxplatform
