// The typed profile values: one row for each type generates its exports in wide and 8-bit form.
#include <qxut23/profile_values.h>

#include "exports/guard.h"
#include "exports/narrow.h"
#include "exports/profile_handle.h"
#include "prof/typed.h"
#include "prof/typed_variant.h"

#include <bit>
#include <cstdint>
#include <string_view>

using namespace qx;

namespace
{

template <class T>
void AppendValue(HPROFJOB job, HPROFLIST list, const wchar_t* path, const scTypedForm<T>& form, T value)
{
    if (job != kInvalidJob)
        Guarded([&] { AppendTyped(ListOf(job, list), path, form, value); });
}

template <class T>
void SetValue(HPROFJOB job, HPROFLIST list, const wchar_t* path, const scTypedForm<T>& form, T value)
{
    if (job != kInvalidJob && path != nullptr)
        Guarded([&] { SetTyped(ListOf(job, list), path, form, value); });
}

template <class T>
std::int32_t GetValue(HPROFJOB job, HPROFLIST list, const wchar_t* path, const scTypedForm<T>& form, T& result)
{
    if (job == kInvalidJob)
        return kProfNoLeaf;
    return Guarded(
        std::int32_t{kProfStopped}, [&] { return std::int32_t{GetTyped(ListOf(job, list), path, form, result)}; });
}

// Overloads for the callers' argument types: numbers are passed by value, structures by address.

template <class T>
std::int32_t GetValue(
    HPROFJOB job, HPROFLIST list, const wchar_t* path, const scTypedForm<T>& form, T* result, T defaultValue)
{
    T value = result != nullptr ? *result : T{};
    const std::int32_t code = GetValue(job, list, path, form, value);
    if (result != nullptr)
        *result = code == kProfNoLeaf ? defaultValue : value;
    return code;
}

template <class T, class Structure>
void AppendValue(HPROFJOB job, HPROFLIST list, const wchar_t* path, const scTypedForm<T>& form, const Structure* value)
{
    if (value != nullptr)
        AppendValue(job, list, path, form, std::bit_cast<T>(*value));
}

template <class T, class Structure>
void SetValue(HPROFJOB job, HPROFLIST list, const wchar_t* path, const scTypedForm<T>& form, const Structure* value)
{
    if (value != nullptr)
        SetValue(job, list, path, form, std::bit_cast<T>(*value));
}

template <class T, class Structure>
std::int32_t GetValue(HPROFJOB job, HPROFLIST list, const wchar_t* path, const scTypedForm<T>& form, Structure* result,
    const Structure* defaultValue)
{
    T value = result != nullptr ? std::bit_cast<T>(*result) : T{};
    const std::int32_t code = GetValue(job, list, path, form, value);
    if (code == kProfNoLeaf && defaultValue != nullptr)
        value = std::bit_cast<T>(*defaultValue);
    if (result != nullptr)
        *result = std::bit_cast<Structure>(value);
    return code;
}

template <class T>
void ReadText(const wchar_t* text, bool (*read)(std::wstring_view, T&), T* result, T defaultValue)
{
    T value{};
    if (result != nullptr)
        *result = text != nullptr && read(text, value) ? value : defaultValue;
}

template <class T, class Structure>
void ReadText(
    const wchar_t* text, bool (*read)(std::wstring_view, T&), Structure* result, const Structure* defaultValue)
{
    T value{};
    if (result == nullptr)
        return;
    if (text != nullptr && read(text, value))
        *result = std::bit_cast<Structure>(value);
    else if (defaultValue != nullptr)
        *result = *defaultValue;
}

} // namespace

// Macros, because only the preprocessor can assemble function names.

#define QX_WRITER(operation, type, Argument, form)                                                                     \
    void Prof##operation##type##W(HPROFJOB job, HPROFLIST list, const wchar_t* path, Argument value)                   \
    {                                                                                                                  \
        operation##Value(job, list, path, form, value);                                                                \
    }                                                                                                                  \
    void Prof##operation##type##A(HPROFJOB job, HPROFLIST list, const char* path, Argument value)                      \
    {                                                                                                                  \
        NarrowForm<Prof##operation##type##W>::Call(job, list, path, value);                                            \
    }

#define QX_WRITERS(type, Argument, form)                                                                               \
    QX_WRITER(Append, type, Argument, form)                                                                            \
    QX_WRITER(Set, type, Argument, form)

#define QX_READER(type, Result, Default, form)                                                                         \
    std::int32_t ProfGet##type##W(                                                                                     \
        HPROFJOB job, HPROFLIST list, const wchar_t* path, Result* result, Default defaultValue)                       \
    {                                                                                                                  \
        return GetValue(job, list, path, form, result, defaultValue);                                                  \
    }                                                                                                                  \
    std::int32_t ProfGet##type##A(                                                                                     \
        HPROFJOB job, HPROFLIST list, const char* path, Result* result, Default defaultValue)                          \
    {                                                                                                                  \
        return NarrowForm<ProfGet##type##W, PROF_ERR_STOPPED>::Call(job, list, path, result, defaultValue);            \
    }

#define QX_NUMBER(type, Number)                                                                                        \
    QX_WRITERS(type, Number, kProf##type)                                                                              \
    QX_READER(type, Number, Number, kProf##type)

#define QX_STRUCTURE(type, Structure)                                                                                  \
    QX_WRITERS(type, const Structure*, kProf##type)                                                                    \
    QX_READER(type, Structure, const Structure*, kProf##type)

#define QX_TEXT_READER(type, Result, Default, read)                                                                    \
    void ProfLPSTRto##type##W(const wchar_t* text, Result* result, Default defaultValue)                               \
    {                                                                                                                  \
        ReadText(text, read, result, defaultValue);                                                                    \
    }                                                                                                                  \
    void ProfLPSTRto##type##A(const char* text, Result* result, Default defaultValue)                                  \
    {                                                                                                                  \
        NarrowForm<ProfLPSTRto##type##W>::Call(text, result, defaultValue);                                            \
    }

QX_NUMBER(Bool, std::int32_t)
QX_NUMBER(Colorref, std::uint32_t)
QX_NUMBER(Double, double)
QX_NUMBER(Int, std::int32_t)
QX_NUMBER(Int64, std::int64_t)
QX_STRUCTURE(Point, ProfPoint)
QX_STRUCTURE(Rect, ProfRect)
QX_STRUCTURE(RectLTWH, ProfRect)
QX_WRITERS(IntHex, std::int32_t, kProfIntHex)
QX_WRITERS(Int64Hex, std::int64_t, kProfInt64Hex)

QX_TEXT_READER(BOOL, std::int32_t, std::int32_t, ReadFlagText)
QX_TEXT_READER(COLORREF, std::uint32_t, std::uint32_t, kProfColorref.read)
QX_TEXT_READER(INT, std::int32_t, std::int32_t, ReadDecimalText)
QX_TEXT_READER(INT64, std::int64_t, std::int64_t, ReadDecimalText)
QX_TEXT_READER(RECT, ProfRect, const ProfRect*, kProfRect.read)

// ---- Variants

void ProfAppendVariant(HPROFJOB job, HPROFLIST list, const wchar_t* path, const VARIANT* value)
{
    if (value != nullptr)
        Guarded([&] { ProfAppendStringW(job, list, path, VariantToText(*value)); });
}

void ProfSetVariant(HPROFJOB job, HPROFLIST list, const wchar_t* path, const VARIANT* value)
{
    if (value != nullptr)
        Guarded([&] { ProfSetStringW(job, list, path, VariantToText(*value)); });
}

std::int32_t ProfGetVariant(
    HPROFJOB job, HPROFLIST list, const wchar_t* path, VARIANT* value, const VARIANT* defaultValue)
{
    if (value == nullptr || job == kInvalidJob)
        return kProfOk;
    return Guarded(std::int32_t{kProfStopped},
        [&]
        {
            const clsItem* const leaf = FindLeafByPath(ListOf(job, list), path);
            if (leaf != nullptr)
                VariantFromText(leaf->Value(), *value);
            else if (defaultValue != nullptr)
                VariantCopyInd(value, const_cast<VARIANT*>(defaultValue));
            return std::int32_t{leaf != nullptr ? kProfOk : kProfNoLeaf};
        });
}

std::int32_t ProfGetVariantFromContents(const wchar_t* text, VARIANT* value)
{
    if (text == nullptr)
        return kProfNotOfThisType;
    if (value == nullptr)
        return kProfOk;
    return Guarded(std::int32_t{kProfStopped},
        [&]
        {
            VariantFromText(text, *value);
            return std::int32_t{kProfOk};
        });
}
