// Completion ports: packet queues processed by threads.
#include <ioapiset.h>

#include "base/handle_table.h"
#include "pool/waitable_queue.h"

#include <new>

using namespace qxplatform;

namespace
{

struct Packet
{
    DWORD bytes;
    ULONG_PTR key;
    LPOVERLAPPED overlapped;
};

class PortObject : public WaitableQueue<Packet>
{
public:
    static constexpr ObjectType kObjectType = ObjectType::CompletionPort;

    PortObject() : WaitableQueue(kObjectType) {}

    // Only GetQueuedCompletionStatus() receives packets.
    Waitable* AsWaitable() override { return nullptr; }

protected:
    void LastHandleClosed() override
    {
        const std::lock_guard guard(DispatcherLock());
        End();
    }
};

// Returns a packet if one is available. Otherwise returns the port, if the handle is valid, for callers that may wait.
std::optional<Packet> TakeAtOnce(HANDLE handle, Ref<PortObject>& port)
{
    const Pinned<PortObject> pinned(handle, IO_COMPLETION_MODIFY_STATE);
    if (!pinned)
        return std::nullopt;
    std::optional<Packet> packet = pinned->TakeAtOnce();
    if (!packet)
        port = Ref<PortObject>(pinned.get());
    return packet;
}

DWORD WaitForPacket(HANDLE handle, DWORD milliseconds, std::optional<Packet>& packet)
{
    Ref<PortObject> port;
    packet = TakeAtOnce(handle, port);
    if (packet)
        return WAIT_OBJECT_0;
    return port ? port->WaitForItem(milliseconds, packet) : WAIT_FAILED;
}

} // namespace

// Files complete transfers immediately, so none can be associated with a port.
HANDLE WINAPI CreateIoCompletionPort(HANDLE FileHandle, HANDLE ExistingCompletionPort, ULONG_PTR, DWORD)
{
    DWORD error = ERROR_INVALID_PARAMETER;
    if (FileHandle != INVALID_HANDLE_VALUE)
        error = ObjectOf(FileHandle) ? ERROR_INVALID_PARAMETER : ERROR_INVALID_HANDLE;
    else if (ExistingCompletionPort == nullptr)
        return AddHandle(MakeObject<PortObject>());
    SetLastError(error);
    return nullptr;
}

BOOL WINAPI GetQueuedCompletionStatus(HANDLE CompletionPort, LPDWORD lpNumberOfBytesTransferred,
    PULONG_PTR lpCompletionKey, LPOVERLAPPED* lpOverlapped, DWORD dwMilliseconds)
{
    *lpOverlapped = nullptr;
    std::optional<Packet> packet;
    const DWORD result = FinishWait(WaitForPacket(CompletionPort, dwMilliseconds, packet));
    if (result == WAIT_FAILED)
        return FALSE;
    if (!packet)
        return Fail(result == WAIT_TIMEOUT ? WAIT_TIMEOUT : ERROR_ABANDONED_WAIT_0);
    *lpNumberOfBytesTransferred = packet->bytes;
    *lpCompletionKey = packet->key;
    *lpOverlapped = packet->overlapped;
    return TRUE;
}

BOOL WINAPI PostQueuedCompletionStatus(
    HANDLE CompletionPort, DWORD dwNumberOfBytesTransferred, ULONG_PTR dwCompletionKey, LPOVERLAPPED lpOverlapped)
{
    const Pinned<PortObject> port(CompletionPort, IO_COMPLETION_MODIFY_STATE);
    if (!port)
        return FALSE;
    try
    {
        port->PutAndWake({dwNumberOfBytesTransferred, dwCompletionKey, lpOverlapped});
    }
    catch (const std::bad_alloc&)
    {
        return Fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    return TRUE;
}
