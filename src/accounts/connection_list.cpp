#include "accounts/connection_list.h"

#include <winnetwk.h>

namespace qx
{

ConnectionList::ConnectionList(DWORD blockSize) : _size(blockSize)
{
    if (WNetOpenEnumW(RESOURCE_REMEMBERED, RESOURCETYPE_DISK, 0, nullptr, &_walk) != ERROR_SUCCESS)
        _walk = nullptr;
}

ConnectionList::~ConnectionList()
{
    if (_walk)
        WNetCloseEnum(_walk);
}

// Replaces the entries by the next block. On failure, stores the size that the system requires.
DWORD ConnectionList::Read()
{
    _read.clear();
    _position = 0;
    _block.resize(_size / sizeof(std::max_align_t) + 1);
    constexpr DWORD kAll = 0xFFFFFFFF; // as many as fit
    DWORD count = kAll;
    const DWORD result = WNetEnumResourceW(_walk, &count, _block.data(), &_size);
    if (result != ERROR_SUCCESS)
        return result;
    const auto* const entries = reinterpret_cast<const NETRESOURCEW*>(_block.data());
    if (count == 0 || count == kAll)
        return ERROR_NO_MORE_ITEMS; // otherwise Find would repeat the call forever
    for (DWORD i = 0; i < count; ++i)
        _read.push_back({IString(entries[i].lpLocalName), IString(entries[i].lpRemoteName)});
    return ERROR_SUCCESS;
}

bool ConnectionList::ReadFirst()
{
    const DWORD before = _size;
    DWORD result = Read();
    if (result == ERROR_SUCCESS || result == ERROR_NO_MORE_ITEMS || _size == before)
        return true;
    result = Read();
    return result == ERROR_SUCCESS || result == ERROR_NO_MORE_ITEMS;
}

bool ConnectionList::Find(const std::function<bool(const RememberedConnection&)>& isWanted, RememberedConnection& found)
{
    do
    {
        while (_position < _read.size())
            if (const RememberedConnection& connection = _read[_position++]; isWanted(connection))
            {
                found = connection;
                return true;
            }
    } while (Read() == ERROR_SUCCESS);
    return false;
}

} // namespace qx
