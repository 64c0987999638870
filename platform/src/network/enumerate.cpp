#include <winnetwk.h>

#include "base/handle_table.h"
#include "base/mutex.h"
#include "network/connections.h"

#include <algorithm>
#include <cstring>
#include <mutex>

using namespace qxplatform;

namespace
{

std::size_t SizeOf(const Connection& connection)
{
    return sizeof(NETRESOURCEW) + SizeOfText(connection.drive) + SizeOfText(connection.share);
}

// A walk over the connections that existed when it began.
class ConnectionWalk : public Object
{
public:
    static constexpr ObjectType kObjectType = ObjectType::NetworkEnumeration;

    explicit ConnectionWalk(std::vector<Connection> connections)
        : Object(kObjectType),
          _connections(std::move(connections))
    {
    }

    // Fills the block with at most `count` entries, as many as fit, and stores their number in `count`. If no entry
    // fits, stores the size needed for the next entry in `size`.
    DWORD Next(DWORD& count, BYTE* block, DWORD& size);

private:
    std::size_t CountThatFits(std::size_t wanted, std::size_t room) const;

    Mutex _lock; // guards the position
    const std::vector<Connection> _connections;
    std::size_t _position = 0;
};

std::size_t ConnectionWalk::CountThatFits(std::size_t wanted, std::size_t room) const
{
    std::size_t count = 0;
    wanted = std::min(wanted, _connections.size() - _position);
    while (count < wanted && SizeOf(_connections[_position + count]) <= room)
        room -= SizeOf(_connections[_position + count++]);
    return count;
}

DWORD ConnectionWalk::Next(DWORD& count, BYTE* block, DWORD& size)
{
    const std::lock_guard guard(_lock);
    if (_position == _connections.size())
        return ERROR_NO_MORE_ITEMS;
    const std::size_t taken = CountThatFits(count, size);
    if (taken == 0 && count != 0)
    {
        size = static_cast<DWORD>(SizeOf(_connections[_position]));
        return ERROR_MORE_DATA;
    }
    BYTE* texts = block + taken * sizeof(NETRESOURCEW); // the entries come first
    for (std::size_t i = 0; i < taken; ++i)
    {
        const Connection& connection = _connections[_position++];
        NETRESOURCEW entry{};
        entry.dwScope = RESOURCE_REMEMBERED;
        entry.dwType = RESOURCETYPE_DISK;
        entry.dwDisplayType = RESOURCEDISPLAYTYPE_SHARE;
        entry.dwUsage = RESOURCEUSAGE_CONNECTABLE;
        entry.lpLocalName = PutText(texts, connection.drive);
        entry.lpRemoteName = PutText(texts, connection.share);
        std::memcpy(block + i * sizeof entry, &entry, sizeof entry);
    }
    count = static_cast<DWORD>(taken);
    return ERROR_SUCCESS;
}

} // namespace

DWORD WINAPI WNetOpenEnumW(DWORD dwScope, DWORD dwType, DWORD, LPNETRESOURCEW, LPHANDLE lphEnum)
{
    if (lphEnum == nullptr)
        return ERROR_INVALID_PARAMETER;
    *lphEnum = nullptr;
    if (dwScope != RESOURCE_REMEMBERED || dwType != RESOURCETYPE_DISK)
        return ERROR_NOT_SUPPORTED;
    *lphEnum = AddHandle(MakeObject<ConnectionWalk>(Connections()));
    return *lphEnum == nullptr ? ERROR_NO_SYSTEM_RESOURCES : ERROR_SUCCESS;
}

DWORD WINAPI WNetEnumResourceW(HANDLE hEnum, LPDWORD lpcCount, LPVOID lpBuffer, LPDWORD lpBufferSize)
{
    const Ref<Object> object = ObjectOf(hEnum);
    if (!object || object->type != ConnectionWalk::kObjectType)
        return ERROR_INVALID_HANDLE;
    if (lpcCount == nullptr || lpBufferSize == nullptr || lpBuffer == nullptr)
        return ERROR_INVALID_PARAMETER;
    return static_cast<ConnectionWalk&>(*object).Next(*lpcCount, static_cast<BYTE*>(lpBuffer), *lpBufferSize);
}

DWORD WINAPI WNetCloseEnum(HANDLE hEnum)
{
    const Ref<Object> object = ObjectOf(hEnum);
    const auto isWalk = [](const Object& candidate)
    {
        return candidate.type == ConnectionWalk::kObjectType;
    };
    if (!object || !isWalk(*object))
        return ERROR_INVALID_HANDLE;
    return CloseEntry(hEnum, isWalk) ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_INVALID_HANDLE};
}
