// A conversion specification in the Microsoft dialect, and its arguments.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <optional>

namespace qxplatform
{

// An argument list that can be passed by reference.
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

// The argument size given by the letters before the conversion. `l` and `w` mean 32 bits for a number and wide for
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

// Parses the size letters at `format` and advances past them.
ArgumentSize ReadArgumentSize(const wchar_t*& format);

// Parses the conversion whose `%` precedes `format`, reads its `*` arguments, and advances past it.
Conversion ReadConversion(const wchar_t*& format, Arguments& arguments);

} // namespace qxplatform
