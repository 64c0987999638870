#include "variant/array_block.h"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace qxplatform
{

namespace
{

constexpr USHORT kMadeAsVector = 0x2000;
constexpr USHORT kNotOnTheHeap = FADF_AUTO | FADF_STATIC | FADF_EMBEDDED;

// The header before the array contains an interface identifier or, in its last four bytes, the element type.
constexpr std::size_t kHeaderSize = sizeof(GUID);

char* HeaderEnd(SAFEARRAY* array)
{
    return reinterpret_cast<char*>(array);
}

void WriteHeader(SAFEARRAY* array, VARTYPE type)
{
    if (array->fFeatures & FADF_HAVEVARTYPE)
    {
        const DWORD wide = type;
        std::memcpy(HeaderEnd(array) - sizeof wide, &wide, sizeof wide);
        return;
    }
    const IID& id = type == VT_DISPATCH ? IID_IDispatch : IID_IUnknown;
    std::memcpy(HeaderEnd(array) - kHeaderSize, &id, sizeof id);
}

// Returns true if the number of elements and their size fit in 32 bits.
bool FitsIn32Bits(const SAFEARRAYBOUND* bounds, UINT dimensions, std::size_t elementSize)
{
    std::size_t size = elementSize;
    for (UINT i = 0; i < dimensions; ++i)
    {
        size *= bounds[i].cElements;
        if (size > std::numeric_limits<ULONG>::max())
            return false;
    }
    return true;
}

} // namespace

const ValueType* ElementsOfArrays(VARTYPE type)
{
    const ValueType* const known = FindValueType(type);
    return known != nullptr && known->features != 0 ? known : nullptr;
}

VARTYPE ElementType(SAFEARRAY* array)
{
    if (array->fFeatures & FADF_HAVEVARTYPE)
    {
        DWORD type;
        std::memcpy(&type, HeaderEnd(array) - sizeof type, sizeof type);
        return static_cast<VARTYPE>(type);
    }
    if (array->fFeatures & FADF_DISPATCH)
        return VT_DISPATCH;
    return array->fFeatures & FADF_UNKNOWN ? VT_UNKNOWN : VT_EMPTY;
}

std::size_t CountElements(const SAFEARRAY* array)
{
    std::size_t count = 1;
    for (USHORT i = 0; i < array->cDims; ++i)
        count *= array->rgsabound[i].cElements;
    return count;
}

SAFEARRAY* AllocateArray(const ValueType& type, UINT dimensions, const SAFEARRAYBOUND* bounds, bool madeAsVector)
{
    if (!FitsIn32Bits(bounds, dimensions, type.size))
        return nullptr;
    const std::size_t size = kHeaderSize + sizeof(SAFEARRAY) + (dimensions - 1) * sizeof(SAFEARRAYBOUND);
    char* const block = static_cast<char*>(std::calloc(1, size));
    if (block == nullptr)
        return nullptr;
    auto* const array = reinterpret_cast<SAFEARRAY*>(block + kHeaderSize);
    array->cDims = static_cast<USHORT>(dimensions);
    array->fFeatures = static_cast<USHORT>(type.features | (madeAsVector ? kMadeAsVector : 0));
    array->cbElements = type.size;
    for (UINT i = 0; i < dimensions; ++i)
        array->rgsabound[i] = bounds[dimensions - 1 - i];
    WriteHeader(array, type.type);
    // An array without elements still allocates memory, for callers that treat null as a failure.
    const std::size_t dataSize = CountElements(array) * type.size;
    array->pvData = std::calloc(1, dataSize != 0 ? dataSize : 1);
    if (array->pvData == nullptr)
    {
        std::free(block);
        return nullptr;
    }
    return array;
}

bool WasMadeAsVector(const SAFEARRAY* array)
{
    return (array->fFeatures & kMadeAsVector) != 0;
}

void FreeArray(SAFEARRAY* array)
{
    if (array->fFeatures & kNotOnTheHeap)
        return;
    std::free(array->pvData);
    std::free(HeaderEnd(array) - kHeaderSize);
}

HRESULT LockArray(SAFEARRAY* array)
{
    constexpr ULONG kMostLocks = 0xffff;
    ULONG locks = __atomic_load_n(&array->cLocks, __ATOMIC_RELAXED);
    do
    {
        if (locks >= kMostLocks)
            return E_UNEXPECTED;
    } while (
        !__atomic_compare_exchange_n(&array->cLocks, &locks, locks + 1, false, __ATOMIC_ACQUIRE, __ATOMIC_RELAXED));
    return S_OK;
}

HRESULT UnlockArray(SAFEARRAY* array)
{
    ULONG locks = __atomic_load_n(&array->cLocks, __ATOMIC_RELAXED);
    do
    {
        if (locks == 0)
            return E_UNEXPECTED;
    } while (
        !__atomic_compare_exchange_n(&array->cLocks, &locks, locks - 1, false, __ATOMIC_RELEASE, __ATOMIC_RELAXED));
    return S_OK;
}

} // namespace qxplatform
