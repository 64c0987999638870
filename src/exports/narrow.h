// Generates the 8-bit form of an exported function from the signature of its wide form.
#pragma once

#include "core/charset/charset_conversion.h"
#include "exports/guard.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

namespace qx
{

// A secret text argument. An 8-bit form erases its converted copy after the call.
struct scSecretText
{
    const wchar_t* text;
};

// NarrowForm<ProfGetStringW>::Call takes the arguments of ProfGetStringA. `const wchar_t*` becomes `const char*`,
// and so does `scSecretText`. `wchar_t*` becomes `char*`; the next argument must be the size of the buffer. A callback
// becomes a callback with 8-bit texts; the next argument must be its context. Null stays null, and all other arguments
// are passed on unchanged. `Failed` is the result if memory for a conversion runs out.
template <auto Wide, auto Failed = nullptr>
struct NarrowForm;

template <class T>
struct NarrowType
{
    using Type = T;
};

template <>
struct NarrowType<const wchar_t*>
{
    using Type = const char*;
};

template <>
struct NarrowType<scSecretText>
{
    using Type = const char*;
};

template <>
struct NarrowType<wchar_t*>
{
    using Type = char*;
};

template <class Result, class... Parameters>
struct NarrowType<Result (*)(Parameters...)>
{
    using Type = Result (*)(typename NarrowType<Parameters>::Type...);
};

template <class T>
constexpr bool kIsCallback = std::is_pointer_v<T>&& std::is_function_v<std::remove_pointer_t<T>>;

// A position in the list of the narrow arguments.
template <std::size_t Index, class Arguments>
struct scArgumentPlace
{
    const Arguments& all;
    auto Value() const { return std::get<Index>(all); }
    auto Following() const { return std::get<Index + 1>(all); }
};

// Holds an argument in both forms for the duration of one call.
template <class T>
class clsNarrowArgument
{
public:
    template <std::size_t Index, class Arguments>
    explicit clsNarrowArgument(scArgumentPlace<Index, Arguments> place) : _value(place.Value())
    {
    }
    T Wide() { return _value; }

private:
    T _value;
};

template <>
class clsNarrowArgument<const wchar_t*>
{
public:
    template <std::size_t Index, class Arguments>
    explicit clsNarrowArgument(scArgumentPlace<Index, Arguments> place)
    {
        if (place.Value() != nullptr)
            _text.emplace(place.Value());
    }
    const wchar_t* Wide() { return _text ? _text->GetWide() : nullptr; }

private:
    std::optional<clsCharsetConversionString> _text;
};

template <>
class clsNarrowArgument<scSecretText>
{
public:
    template <std::size_t Index, class Arguments>
    explicit clsNarrowArgument(scArgumentPlace<Index, Arguments> place)
    {
        if (place.Value() != nullptr)
            _text.emplace(place.Value());
    }
    clsNarrowArgument(const clsNarrowArgument&) = delete;
    clsNarrowArgument& operator=(const clsNarrowArgument&) = delete;
    ~clsNarrowArgument()
    {
        if (_text)
            _text->Wipe();
    }
    scSecretText Wide() { return {_text ? _text->GetWide() : nullptr}; }

private:
    std::optional<clsCharsetConversionString> _text;
};

// A buffer; the next argument is its size. The destructor, which runs after the call, copies the text to the caller.
template <>
class clsNarrowArgument<wchar_t*>
{
public:
    template <std::size_t Index, class Arguments>
    explicit clsNarrowArgument(scArgumentPlace<Index, Arguments> place)
    {
        if (place.Value() != nullptr && place.Following() > 0)
            _buffer.emplace(place.Value(), static_cast<std::uint32_t>(place.Following()));
    }
    wchar_t* Wide() { return _buffer ? _buffer->WideBuffer() : nullptr; }

private:
    std::optional<clsCharsetConversionString> _buffer;
};

// An argument for an 8-bit callback.
template <class T>
class clsCallbackArgument
{
public:
    explicit clsCallbackArgument(T value) : _value(value) {}
    T Narrow() { return _value; }

private:
    T _value;
};

template <>
class clsCallbackArgument<const wchar_t*>
{
public:
    explicit clsCallbackArgument(const wchar_t* text) : _text(text) {}
    const char* Narrow() { return _text.GetNarrow(); }

private:
    clsCharsetConversionString _text;
};

// A callback; the next argument is its context. The wide function gets Forward as its callback and this object as the
// context, which is the last argument of every callback.
template <class Result, class... Parameters>
class clsNarrowArgument<Result (*)(Parameters...)>
{
    using WideCallback = Result (*)(Parameters...);
    using NarrowCallback = typename NarrowType<WideCallback>::Type;

public:
    template <std::size_t Index, class Arguments>
    explicit clsNarrowArgument(scArgumentPlace<Index, Arguments> place)
        : _callback(place.Value()),
          _context(place.Following())
    {
    }
    WideCallback Wide() { return _callback != nullptr ? Forward : nullptr; }

private:
    static constexpr std::size_t kContext = sizeof...(Parameters) - 1;

    static Result Forward(Parameters... parameters)
    {
        const auto all = std::tie(parameters...);
        auto* self = static_cast<clsNarrowArgument*>(std::get<kContext>(all));
        return self->CallNarrow(std::make_index_sequence<kContext>(), all);
    }

    template <std::size_t... Indices>
    Result CallNarrow(std::index_sequence<Indices...>, const std::tuple<Parameters&...>& all)
    {
        return _callback(
            clsCallbackArgument<std::tuple_element_t<Indices, std::tuple<Parameters...>>>(std::get<Indices>(all))
                .Narrow()...,
            _context);
    }

    NarrowCallback _callback;
    void* _context;
};

template <class Result, class... Parameters, Result (*Wide)(Parameters...), auto Failed>
struct NarrowForm<Wide, Failed>
{
    static Result Call(typename NarrowType<Parameters>::Type... arguments)
    {
        // The additional null is the "next argument" of the last one.
        const auto call = [&]
        {
            return CallWide(std::index_sequence_for<Parameters...>(), std::tuple(arguments..., nullptr));
        };
        if constexpr (std::is_void_v<Result>)
            Guarded(call);
        else
            return Guarded(static_cast<Result>(Failed), call);
    }

private:
    using Holders = std::tuple<clsNarrowArgument<Parameters>...>;

    template <std::size_t... Indices, class Arguments>
    static Result CallWide(std::index_sequence<Indices...>, const Arguments& narrow)
    {
        Holders holders(scArgumentPlace<Indices, Arguments>{narrow}...);
        return Wide(WideArgument<Indices>(holders)...);
    }

    template <std::size_t Index>
    static auto WideArgument(Holders& holders)
    {
        if constexpr (Index > 0)
        {
            using Before = std::tuple_element_t<Index - 1, std::tuple<Parameters...>>;
            if constexpr (kIsCallback<Before>)
                return static_cast<void*>(&std::get<Index - 1>(holders));
        }
        return std::get<Index>(holders).Wide();
    }
};

} // namespace qx
