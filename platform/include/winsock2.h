// Datagram sockets. The functions have the system's names and conventions; their errors are read with WSAGetLastError.
#pragma once

#include <winerror.h>
#include <winnt.h>

typedef UINT_PTR SOCKET;        // the descriptor
typedef unsigned short u_short; // u_long is missing: the C library has a type of that name with 64 bits

#define INVALID_SOCKET ((SOCKET)(~0))
#define SOCKET_ERROR (-1)

#define AF_UNSPEC 0
#define AF_INET 2
#define SOCK_DGRAM 2
#define IPPROTO_UDP 17
#define INADDR_LOOPBACK 0x7f000001
#define SOL_SOCKET 0xffff
#define SO_MAX_MSG_SIZE 0x2003
#define SO_RCVTIMEO 0x1006
#define SD_BOTH 2
#define FIONBIO 0x8004667e
#define SIO_FLUSH 0x28000004

#define WSADESCRIPTION_LEN 256
#define WSASYS_STATUS_LEN 128

#define WSAEINTR 10004
#define WSAEBADF 10009
#define WSAEACCES 10013
#define WSAEFAULT 10014
#define WSAEINVAL 10022
#define WSAEMFILE 10024
#define WSAEWOULDBLOCK 10035
#define WSAENOTSOCK 10038
#define WSAEDESTADDRREQ 10039
#define WSAEMSGSIZE 10040
#define WSAENOPROTOOPT 10042
#define WSAEPROTONOSUPPORT 10043
#define WSAESOCKTNOSUPPORT 10044
#define WSAEOPNOTSUPP 10045
#define WSAEAFNOSUPPORT 10047
#define WSAEADDRINUSE 10048
#define WSAEADDRNOTAVAIL 10049
#define WSAENETDOWN 10050
#define WSAENETUNREACH 10051
#define WSAECONNRESET 10054
#define WSAENOBUFS 10055
#define WSAENOTCONN 10057
#define WSAETIMEDOUT 10060
#define WSAECONNREFUSED 10061
#define WSAEHOSTUNREACH 10065
#define WSAVERNOTSUPPORTED 10092
#define WSANOTINITIALISED 10093
#define WSATYPE_NOT_FOUND 10109
#define WSAHOST_NOT_FOUND 11001
#define WSA_NOT_ENOUGH_MEMORY 8

EXTERN_C_START

typedef struct WSAData
{
    WORD wVersion;
    WORD wHighVersion;
    unsigned short iMaxSockets;
    unsigned short iMaxUdpDg;
    char* lpVendorInfo;
    char szDescription[WSADESCRIPTION_LEN + 1];
    char szSystemStatus[WSASYS_STATUS_LEN + 1];
} WSADATA, *LPWSADATA;

typedef struct _WSABUF
{
    ULONG len;
    CHAR* buf;
} WSABUF, *LPWSABUF;

struct sockaddr
{
    u_short sa_family;
    CHAR sa_data[14];
};

struct in_addr
{
    union
    {
        ULONG S_addr;
    } S_un;
#define s_addr S_un.S_addr
};

struct sockaddr_in
{
    short sin_family;
    u_short sin_port;
    struct in_addr sin_addr;
    CHAR sin_zero[8];
};

// Provides version 2.2. Requests for a lower major version than 2 fail (WSAVERNOTSUPPORTED). Sockets work only between
// this call and the matching WSACleanup (WSANOTINITIALISED).
int WINAPI WSAStartup(WORD wVersionRequested, LPWSADATA lpWSAData) QXP(WSAStartup);
int WINAPI WSACleanup(void) QXP(WSACleanup);
int WINAPI WSAGetLastError(void) QXP(WSAGetLastError);

#define WSA_FLAG_OVERLAPPED 0x01

// Flags have no effect. Only datagram sockets of AF_INET (WSAEAFNOSUPPORT, WSAESOCKTNOSUPPORT or WSAEPROTONOSUPPORT
// otherwise). The socket is not inherited by other programs.
SOCKET WINAPI WSASocketW(int af, int type, int protocol, void* lpProtocolInfo, UINT g, DWORD dwFlags) QXP(WSASocketW);
int WINAPI closesocket(SOCKET s) QXP(closesocket);
int WINAPI shutdown(SOCKET s, int how) QXP(shutdown);
int WINAPI bind(SOCKET s, const struct sockaddr* name, int namelen) QXP(bind);
int WINAPI getsockname(SOCKET s, struct sockaddr* name, int* namelen) QXP(getsockname);

// SO_MAX_MSG_SIZE can be read, SO_RCVTIMEO (milliseconds) can be set. All others fail with WSAENOPROTOOPT.
int WINAPI getsockopt(SOCKET s, int level, int optname, char* optval, int* optlen) QXP(getsockopt);
int WINAPI setsockopt(SOCKET s, int level, int optname, const char* optval, int optlen) QXP(setsockopt);
// Only FIONBIO.
int WINAPI ioctlsocket(SOCKET s, int cmd, ULONG* argp) QXP(ioctlsocket);
// Only SIO_FLUSH, which does nothing: the kernel keeps no datagrams back.
int WINAPI WSAIoctl(SOCKET s, DWORD dwIoControlCode, LPVOID lpvInBuffer, DWORD cbInBuffer, LPVOID lpvOutBuffer,
    DWORD cbOutBuffer, LPDWORD lpcbBytesReturned, void* lpOverlapped, void* lpCompletionRoutine) QXP(WSAIoctl);

// One buffer, no overlapped transfers (WSAEOPNOTSUPP).
int WINAPI WSASendTo(SOCKET s, LPWSABUF lpBuffers, DWORD dwBufferCount, LPDWORD lpNumberOfBytesSent, DWORD dwFlags,
    const struct sockaddr* lpTo, int iTolen, void* lpOverlapped, void* lpCompletionRoutine) QXP(WSASendTo);
// A datagram that is larger than the buffer fails with WSAEMSGSIZE, after its beginning has been stored.
int WINAPI recvfrom(SOCKET s, char* buf, int len, int flags, struct sockaddr* from, int* fromlen) QXP(recvfrom);

u_short WINAPI htons(u_short hostshort) QXP(htons);
u_short WINAPI ntohs(u_short netshort) QXP(ntohs);
ULONG WINAPI htonl(ULONG hostlong) QXP(htonl);

EXTERN_C_END

#ifdef __cplusplus
static_assert(sizeof(WSADATA) == 408 && sizeof(sockaddr) == 16 && sizeof(sockaddr_in) == 16 && sizeof(in_addr) == 4);
static_assert(sizeof(WSABUF) == 16);
#endif
