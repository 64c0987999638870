// The fixture of the tests of named mappings.
#pragma once

#include "peer.h"

namespace qxtest
{

inline constexpr DWORD kMappingSize = 100'000;

class Mappings : public testing::Test
{
protected:
    Handle Create(DWORD size = kMappingSize) const
    {
        return Handle(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, name));
    }
    Handle OpenExisting(DWORD access = FILE_MAP_WRITE) const { return Handle(OpenFileMappingW(access, FALSE, name)); }

    const Text plain = MappingName(GetCurrentProcessId());
    const Text name = Text(L"Local\\") + plain;
};

} // namespace qxtest
