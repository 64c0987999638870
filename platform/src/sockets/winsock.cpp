#include <winsock2.h>

#include "base/fail.h"
#include "sockets/native_socket.h"

#include <atomic>
#include <bit>
#include <cerrno>
#include <cstring>

#include <unistd.h>

using namespace qxplatform;

namespace
{

constexpr DWORD kLargestDatagram = 65'507; // 65,535 bytes less the headers of IP and UDP

std::atomic<int> startups = 0;

struct SocketError
{
    int code;
    int error;
};

constexpr SocketError kSocketErrors[] = {
    {EPERM, WSAEACCES}, // a packet filter refuses it
    {EACCES, WSAEACCES},
    {EBADF, WSAENOTSOCK},
    {ENOTSOCK, WSAENOTSOCK},
    {EFAULT, WSAEFAULT},
    {EINTR, WSAEINTR},
    {EINVAL, WSAEINVAL},
    {EMFILE, WSAEMFILE},
    {ENFILE, WSAEMFILE},
    {ENOMEM, WSAENOBUFS},
    {ENOBUFS, WSAENOBUFS},
    {EAGAIN, WSAEWOULDBLOCK},
    {EDESTADDRREQ, WSAEDESTADDRREQ},
    {EMSGSIZE, WSAEMSGSIZE},
    {ENOPROTOOPT, WSAENOPROTOOPT},
    {EPROTONOSUPPORT, WSAEPROTONOSUPPORT},
    {EOPNOTSUPP, WSAEOPNOTSUPP},
    {EAFNOSUPPORT, WSAEAFNOSUPPORT},
    {EADDRINUSE, WSAEADDRINUSE},
    {EADDRNOTAVAIL, WSAEADDRNOTAVAIL},
    {ENETDOWN, WSAENETDOWN},
    {ENETUNREACH, WSAENETUNREACH},
    {EHOSTUNREACH, WSAEHOSTUNREACH},
    {ECONNRESET, WSAECONNRESET},
    {ECONNREFUSED, WSAECONNREFUSED},
    {ENOTCONN, WSAENOTCONN},
    {EPIPE, WSAECONNRESET},
    {ETIMEDOUT, WSAETIMEDOUT},
};

int FailSocket(int error)
{
    SetLastError(static_cast<DWORD>(error));
    return SOCKET_ERROR;
}

int FailSocketErrno()
{
    const int code = errno;
    for (const SocketError& row : kSocketErrors)
        if (row.code == code)
            return FailSocket(row.error);
    return FailSocket(WSAENETDOWN);
}

int ResultOf(bool isDone)
{
    return isDone ? 0 : FailSocketErrno();
}

// Returns the descriptor, or -1 with a last error.
int DescriptorOf(SOCKET socket)
{
    if (startups.load(std::memory_order_relaxed) <= 0)
        return FailSocket(WSANOTINITIALISED);
    if (socket > INT32_MAX)
        return FailSocket(WSAENOTSOCK);
    return static_cast<int>(socket);
}

} // namespace

int WINAPI WSAStartup(WORD wVersionRequested, LPWSADATA lpWSAData)
{
    constexpr WORD kVersion = 0x0202;
    if ((wVersionRequested & 0xFF) < 2)
        return WSAVERNOTSUPPORTED;
    *lpWSAData = {};
    lpWSAData->wVersion = lpWSAData->wHighVersion = kVersion;
    ++startups;
    return 0;
}

int WINAPI WSACleanup(void)
{
    int count = startups.load();
    do
    {
        if (count <= 0)
            return FailSocket(WSANOTINITIALISED);
    } while (!startups.compare_exchange_weak(count, count - 1));
    return 0;
}

int WINAPI WSAGetLastError(void)
{
    return static_cast<int>(GetLastError());
}

SOCKET WINAPI WSASocketW(int af, int type, int protocol, void*, UINT, DWORD)
{
    int error = 0;
    if (startups.load() <= 0)
        error = WSANOTINITIALISED;
    else if (af != AF_INET)
        error = WSAEAFNOSUPPORT;
    else if (type != SOCK_DGRAM)
        error = WSAESOCKTNOSUPPORT;
    else if (protocol != IPPROTO_UDP && protocol != 0)
        error = WSAEPROTONOSUPPORT;
    if (error != 0)
    {
        FailSocket(error);
        return INVALID_SOCKET;
    }
    const int descriptor = native::OpenDatagramSocket();
    if (descriptor >= 0)
        return static_cast<SOCKET>(descriptor);
    FailSocketErrno();
    return INVALID_SOCKET;
}

// Only sockets are closed, so that a stale value can't close a file of someone else.
int WINAPI closesocket(SOCKET s)
{
    const int descriptor = DescriptorOf(s);
    if (descriptor < 0)
        return SOCKET_ERROR;
    return ResultOf(native::IsSocket(descriptor) && close(descriptor) == 0);
}

int WINAPI shutdown(SOCKET s, int)
{
    const int descriptor = DescriptorOf(s);
    return descriptor < 0 ? SOCKET_ERROR : ResultOf(native::Shutdown(descriptor));
}

int WINAPI bind(SOCKET s, const struct sockaddr* name, int namelen)
{
    const int descriptor = DescriptorOf(s);
    if (descriptor < 0)
        return SOCKET_ERROR;
    return ResultOf(native::Bind(descriptor, name, static_cast<std::size_t>(namelen)));
}

int WINAPI getsockname(SOCKET s, struct sockaddr* name, int* namelen)
{
    const int descriptor = DescriptorOf(s);
    if (descriptor < 0)
        return SOCKET_ERROR;
    if (*namelen < static_cast<int>(native::kAddressSize))
        return FailSocket(WSAEFAULT);
    *namelen = native::kAddressSize;
    return ResultOf(native::LocalAddress(descriptor, name));
}

int WINAPI getsockopt(SOCKET s, int level, int optname, char* optval, int* optlen)
{
    const int descriptor = DescriptorOf(s);
    if (descriptor < 0)
        return SOCKET_ERROR;
    if (level != SOL_SOCKET || optname != SO_MAX_MSG_SIZE)
        return FailSocket(WSAENOPROTOOPT);
    if (*optlen < static_cast<int>(sizeof kLargestDatagram))
        return FailSocket(WSAEFAULT);
    if (!native::IsSocket(descriptor))
        return FailSocketErrno();
    std::memcpy(optval, &kLargestDatagram, sizeof kLargestDatagram);
    *optlen = sizeof kLargestDatagram;
    return 0;
}

int WINAPI setsockopt(SOCKET s, int level, int optname, const char* optval, int optlen)
{
    const int descriptor = DescriptorOf(s);
    if (descriptor < 0)
        return SOCKET_ERROR;
    DWORD milliseconds = 0;
    if (level != SOL_SOCKET || optname != SO_RCVTIMEO)
        return FailSocket(WSAENOPROTOOPT);
    if (optlen < static_cast<int>(sizeof milliseconds))
        return FailSocket(WSAEFAULT);
    std::memcpy(&milliseconds, optval, sizeof milliseconds);
    return ResultOf(native::SetReceiveTimeout(descriptor, milliseconds));
}

int WINAPI ioctlsocket(SOCKET s, int cmd, ULONG* argp)
{
    const int descriptor = DescriptorOf(s);
    if (descriptor < 0)
        return SOCKET_ERROR;
    if (cmd != static_cast<int>(FIONBIO))
        return FailSocket(WSAEINVAL);
    if (!native::IsSocket(descriptor))
        return FailSocketErrno();
    return ResultOf(native::SetBlocking(descriptor, *argp == 0));
}

int WINAPI WSAIoctl(
    SOCKET s, DWORD dwIoControlCode, LPVOID, DWORD, LPVOID, DWORD, LPDWORD lpcbBytesReturned, void*, void*)
{
    const int descriptor = DescriptorOf(s);
    if (descriptor < 0)
        return SOCKET_ERROR;
    if (dwIoControlCode != SIO_FLUSH)
        return FailSocket(WSAEOPNOTSUPP);
    if (lpcbBytesReturned != nullptr)
        *lpcbBytesReturned = 0;
    return ResultOf(native::IsSocket(descriptor));
}

int WINAPI WSASendTo(SOCKET s, LPWSABUF lpBuffers, DWORD dwBufferCount, LPDWORD lpNumberOfBytesSent, DWORD dwFlags,
    const struct sockaddr* lpTo, int iTolen, void* lpOverlapped, void* lpCompletionRoutine)
{
    const int descriptor = DescriptorOf(s);
    if (descriptor < 0)
        return SOCKET_ERROR;
    if (dwBufferCount != 1 || dwFlags != 0 || lpOverlapped != nullptr || lpCompletionRoutine != nullptr)
        return FailSocket(WSAEOPNOTSUPP);
    const std::ptrdiff_t sent =
        native::SendTo(descriptor, lpBuffers->buf, lpBuffers->len, lpTo, static_cast<std::size_t>(iTolen));
    if (sent < 0)
        return FailSocketErrno();
    if (lpNumberOfBytesSent != nullptr)
        *lpNumberOfBytesSent = static_cast<DWORD>(sent);
    return 0;
}

// When the time of SO_RCVTIMEO has passed, the error of a blocking socket is WSAETIMEDOUT.
int WINAPI recvfrom(SOCKET s, char* buf, int len, int flags, struct sockaddr* from, int* fromlen)
{
    const int descriptor = DescriptorOf(s);
    if (descriptor < 0)
        return SOCKET_ERROR;
    if (flags != 0)
        return FailSocket(WSAEOPNOTSUPP);
    if (from != nullptr && *fromlen < static_cast<int>(native::kAddressSize))
        return FailSocket(WSAEFAULT);
    bool isCut = false;
    const std::ptrdiff_t received =
        native::ReceiveFrom(descriptor, buf, static_cast<std::size_t>(len), flags, from, isCut);
    if (received < 0)
        return errno == EAGAIN && native::Blocks(descriptor) ? FailSocket(WSAETIMEDOUT) : FailSocketErrno();
    if (from != nullptr)
        *fromlen = native::kAddressSize;
    return isCut ? FailSocket(WSAEMSGSIZE) : static_cast<int>(received);
}

static_assert(std::endian::native == std::endian::little);

u_short WINAPI htons(u_short hostshort)
{
    return __builtin_bswap16(hostshort);
}

u_short WINAPI ntohs(u_short netshort)
{
    return __builtin_bswap16(netshort);
}

ULONG WINAPI htonl(ULONG hostlong)
{
    return __builtin_bswap32(hostlong);
}
