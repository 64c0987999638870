#include <ws2tcpip.h>

#include "base/fail.h"
#include "base/text.h"

#include <charconv>
#include <new>
#include <optional>
#include <string>
#include <string_view>

using namespace qxplatform;

namespace
{

constexpr ULONG kLocalHost = INADDR_LOOPBACK;

// One result and its address, in one block.
struct AddressEntry
{
    ADDRINFOW info{};
    sockaddr_in address{};
};

template <class Number>
std::optional<Number> WholeNumber(std::string_view text, Number limit)
{
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number > limit)
        return std::nullopt;
    return number;
}

// Parses four decimal numbers with dots between them.
std::optional<ULONG> DottedAddress(std::string_view text)
{
    ULONG address = 0;
    for (int part = 0; part < 4; ++part)
    {
        const std::size_t end = part < 3 ? text.find('.') : text.size();
        if (end == std::string_view::npos)
            return std::nullopt;
        const std::optional<ULONG> number = WholeNumber<ULONG>(text.substr(0, end), 255);
        if (!number)
            return std::nullopt;
        address = address << 8 | *number;
        text.remove_prefix(part < 3 ? end + 1 : end);
    }
    return address;
}

} // namespace

INT WINAPI GetAddrInfoW(PCWSTR pNodeName, PCWSTR pServiceName, const ADDRINFOW* pHints, PADDRINFOW* ppResult)
try
{
    *ppResult = nullptr;
    if (pHints != nullptr && pHints->ai_family != AF_INET && pHints->ai_family != AF_UNSPEC)
        return WSAEAFNOSUPPORT;
    if (pHints != nullptr && pHints->ai_socktype != SOCK_DGRAM && pHints->ai_socktype != 0)
        return WSAESOCKTNOSUPPORT;
    if (pNodeName == nullptr)
        return WSAHOST_NOT_FOUND;
    const std::optional<ULONG> host =
        EqualWithoutCase(View(pNodeName), u"localhost") ? kLocalHost : DottedAddress(ToBytes(View(pNodeName)));
    if (!host)
        return WSAHOST_NOT_FOUND;
    const std::optional<unsigned> port =
        pServiceName == nullptr ? 0 : WholeNumber<unsigned>(ToBytes(View(pServiceName)), 0xFFFF);
    if (!port)
        return WSATYPE_NOT_FOUND;
    auto* const entry = new AddressEntry;
    entry->address.sin_family = AF_INET;
    entry->address.sin_port = htons(static_cast<u_short>(*port));
    entry->address.sin_addr.s_addr = htonl(*host);
    entry->info.ai_family = AF_INET;
    entry->info.ai_socktype = SOCK_DGRAM;
    entry->info.ai_protocol = IPPROTO_UDP;
    entry->info.ai_addrlen = sizeof entry->address;
    entry->info.ai_addr = reinterpret_cast<sockaddr*>(&entry->address);
    *ppResult = &entry->info;
    return 0;
}
catch (const std::bad_alloc&)
{
    return WSA_NOT_ENOUGH_MEMORY;
}

VOID WINAPI FreeAddrInfoW(PADDRINFOW pAddrInfo)
{
    static_assert(offsetof(AddressEntry, info) == 0);
    delete reinterpret_cast<AddressEntry*>(pAddrInfo);
}
