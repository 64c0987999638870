// Addresses of hosts.
#pragma once

#include <winsock2.h>

EXTERN_C_START

typedef struct addrinfoW
{
    int ai_flags;
    int ai_family;
    int ai_socktype;
    int ai_protocol;
    size_t ai_addrlen;
    PWSTR ai_canonname;
    struct sockaddr* ai_addr;
    struct addrinfoW* ai_next;
} ADDRINFOW, *PADDRINFOW;

// Supports the host "localhost" and addresses such as 127.0.0.1, with a decimal port, for datagrams of AF_INET. No
// other name is resolved (WSAHOST_NOT_FOUND), so the call never waits. Returns an error code.
INT WINAPI GetAddrInfoW(PCWSTR pNodeName, PCWSTR pServiceName, const ADDRINFOW* pHints, PADDRINFOW* ppResult)
    QXP(GetAddrInfoW);
VOID WINAPI FreeAddrInfoW(PADDRINFOW pAddrInfo) QXP(FreeAddrInfoW);

EXTERN_C_END
