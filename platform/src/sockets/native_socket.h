// Calls of the kernel for datagram sockets, with plain types: the C library's headers of sockets and the layer's define
// the same names. All functions set errno on failure.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qxplatform::native
{

// The kernel's sockaddr_in has the same layout as the system's.
inline constexpr std::size_t kAddressSize = 16;

int OpenDatagramSocket();
bool Shutdown(int socket);
bool Bind(int socket, const void* address, std::size_t size);
bool LocalAddress(int socket, void* address);
bool SetReceiveTimeout(int socket, unsigned milliseconds);
bool SetBlocking(int socket, bool blocks);
bool Blocks(int socket);
bool IsSocket(int socket);

// Return the number of bytes, or -1.
std::ptrdiff_t SendTo(int socket, const void* bytes, std::size_t count, const void* address, std::size_t size);
// `isCut` reports that the datagram was larger.
std::ptrdiff_t ReceiveFrom(int socket, void* bytes, std::size_t count, int flags, void* address, bool& isCut);

} // namespace qxplatform::native
