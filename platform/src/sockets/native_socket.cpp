#include "sockets/native_socket.h"

#include <cerrno>

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace qxplatform::native
{

static_assert(sizeof(sockaddr_in) == kAddressSize && offsetof(sockaddr_in, sin_port) == 2);

int OpenDatagramSocket()
{
    return socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP);
}

bool Shutdown(int socket)
{
    return shutdown(socket, SHUT_RDWR) == 0;
}

bool Bind(int socket, const void* address, std::size_t size)
{
    return bind(socket, static_cast<const sockaddr*>(address), static_cast<socklen_t>(size)) == 0;
}

bool LocalAddress(int socket, void* address)
{
    socklen_t size = kAddressSize;
    return getsockname(socket, static_cast<sockaddr*>(address), &size) == 0;
}

bool SetReceiveTimeout(int socket, unsigned milliseconds)
{
    const timeval time{milliseconds / 1000, static_cast<suseconds_t>(milliseconds % 1000 * 1000)};
    return setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time) == 0;
}

bool SetBlocking(int socket, bool blocks)
{
    const int flags = fcntl(socket, F_GETFL);
    return flags >= 0 && fcntl(socket, F_SETFL, blocks ? flags & ~O_NONBLOCK : flags | O_NONBLOCK) == 0;
}

bool Blocks(int socket)
{
    return (fcntl(socket, F_GETFL) & O_NONBLOCK) == 0;
}

bool IsSocket(int socket)
{
    int type = 0;
    socklen_t size = sizeof type;
    return getsockopt(socket, SOL_SOCKET, SO_TYPE, &type, &size) == 0;
}

std::ptrdiff_t SendTo(int socket, const void* bytes, std::size_t count, const void* address, std::size_t size)
{
    std::ptrdiff_t sent;
    do
        sent = sendto(
            socket, bytes, count, MSG_NOSIGNAL, static_cast<const sockaddr*>(address), static_cast<socklen_t>(size));
    while (sent < 0 && errno == EINTR);
    return sent;
}

std::ptrdiff_t ReceiveFrom(int socket, void* bytes, std::size_t count, int flags, void* address, bool& isCut)
{
    iovec part{bytes, count};
    msghdr message{};
    message.msg_name = address;
    message.msg_namelen = address == nullptr ? 0 : kAddressSize;
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    std::ptrdiff_t received;
    do
        received = recvmsg(socket, &message, flags);
    while (received < 0 && errno == EINTR);
    isCut = received >= 0 && (message.msg_flags & MSG_TRUNC) != 0;
    return received;
}

} // namespace qxplatform::native
