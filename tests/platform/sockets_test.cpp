// Datagram sockets on the local host.
#include <ws2tcpip.h> // windows requires it before windows.h

#include "system_support.h"

#include <cstring>
#include <string>

using namespace qxtest;

namespace
{

class Sockets : public testing::Test
{
protected:
    Sockets() { EXPECT_EQ(WSAStartup(0x0202, &_data), 0); }
    ~Sockets() override { EXPECT_EQ(WSACleanup(), 0); }

    static int ErrorOf(int result)
    {
        EXPECT_EQ(result, SOCKET_ERROR);
        return WSAGetLastError();
    }

    // Overlapped, because Wine ignores the time-out of other sockets.
    static SOCKET OpenSocket() { return WSASocketW(AF_INET, SOCK_DGRAM, IPPROTO_UDP, nullptr, 0, WSA_FLAG_OVERLAPPED); }

    static sockaddr_in AddressOf(const wchar_t* host, const wchar_t* port)
    {
        ADDRINFOW hints{};
        hints.ai_family = AF_INET;
        hints.ai_socktype = SOCK_DGRAM;
        ADDRINFOW* found = nullptr;
        sockaddr_in address{};
        EXPECT_EQ(GetAddrInfoW(host, port, &hints, &found), 0);
        if (found != nullptr)
            std::memcpy(&address, found->ai_addr, sizeof address);
        FreeAddrInfoW(found);
        return address;
    }

    static int Send(SOCKET socket, std::string bytes, const sockaddr_in& to)
    {
        WSABUF buffer{static_cast<ULONG>(bytes.size()), bytes.data()};
        DWORD sent = 0xBEEF;
        const int result = WSASendTo(
            socket, &buffer, 1, &sent, 0, reinterpret_cast<const sockaddr*>(&to), sizeof to, nullptr, nullptr);
        if (result == 0)
        {
            EXPECT_EQ(sent, bytes.size());
        }
        return result;
    }

    WSADATA _data{};
};

TEST_F(Sockets, DatagramsArrive)
{
    EXPECT_EQ(_data.wVersion, 0x0202);
    const SOCKET receiver = OpenSocket(), sender = OpenSocket();
    ASSERT_TRUE(receiver != INVALID_SOCKET && sender != INVALID_SOCKET);
    sockaddr_in address = AddressOf(L"127.0.0.1", L"0");
    ASSERT_EQ(bind(receiver, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    int size = sizeof address;
    ASSERT_EQ(getsockname(receiver, reinterpret_cast<sockaddr*>(&address), &size), 0);
    const sockaddr_in to = AddressOf(L"LocalHost", Text::Widen(std::to_string(ntohs(address.sin_port))));
    EXPECT_EQ(std::memcmp(&to, &address, 8), 0);

    ULONG isNonBlocking = 1;
    ASSERT_EQ(ioctlsocket(sender, static_cast<int>(FIONBIO), &isNonBlocking), 0);
    const DWORD patience = 50;
    ASSERT_EQ(
        setsockopt(receiver, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&patience), sizeof patience), 0);
    char buffer[8] = {};
    sockaddr_in from{};
    EXPECT_EQ(Send(sender, std::string("a\0b", 3), to), 0);
    ASSERT_EQ(recvfrom(receiver, buffer, sizeof buffer, 0, reinterpret_cast<sockaddr*>(&from), &size), 3);
    EXPECT_EQ(std::string(buffer, 3), std::string("a\0b", 3));
    EXPECT_EQ(from.sin_addr.s_addr, htonl(INADDR_LOOPBACK));
    EXPECT_EQ(Send(sender, "0123456789", to), 0);
    EXPECT_EQ(ErrorOf(recvfrom(receiver, buffer, sizeof buffer, 0, nullptr, nullptr)), WSAEMSGSIZE);
    EXPECT_EQ(std::string(buffer, 8), "01234567");
    EXPECT_EQ(ErrorOf(recvfrom(receiver, buffer, sizeof buffer, 0, nullptr, nullptr)), WSAETIMEDOUT);
    EXPECT_EQ(ErrorOf(recvfrom(sender, buffer, sizeof buffer, 0, nullptr, nullptr)), WSAEWOULDBLOCK);

    // A receiver that doesn't read never makes the sender wait. What doesn't fit is lost.
    const ULONGLONG start = GetTickCount64();
    for (int count = 0; count < 1000; ++count)
        Send(sender, std::string(4000, 'x'), to);
    EXPECT_LT(GetTickCount64() - start, 2000u);

    DWORD largest = 0;
    size = sizeof largest;
    ASSERT_EQ(getsockopt(sender, SOL_SOCKET, SO_MAX_MSG_SIZE, reinterpret_cast<char*>(&largest), &size), 0);
    EXPECT_EQ(Send(sender, std::string(1, 'x'), to), 0);
    EXPECT_EQ(ErrorOf(Send(sender, std::string(largest + 1, 'x'), to)), WSAEMSGSIZE);
    EXPECT_EQ(closesocket(receiver), 0);
    EXPECT_EQ(Send(sender, "nobody", to), 0);
    EXPECT_EQ(closesocket(sender), 0);
    EXPECT_EQ(ErrorOf(closesocket(sender)), WSAENOTSOCK);
    EXPECT_EQ(ErrorOf(Send(sender, "closed", to)), WSAENOTSOCK);
}

TEST_F(Sockets, WrongArguments)
{
    ADDRINFOW* found = nullptr;
    ADDRINFOW hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_DGRAM;
    if (kIsLayer) // the system asks its name servers
    {
        for (const wchar_t* const host : {L"localhost.x", L"127.0.0", L"127.0.0.256", L"127.0.0.1.", L""})
            EXPECT_EQ(GetAddrInfoW(host, L"1", &hints, &found), WSAHOST_NOT_FOUND) << Text(host).Narrow();
        for (const wchar_t* const port : {L"65536", L"-1", L"1x", L"", L"99999999999999999999"})
            EXPECT_EQ(GetAddrInfoW(L"localhost", port, &hints, &found), WSATYPE_NOT_FOUND) << Text(port).Narrow();
        EXPECT_EQ(found, nullptr);

        EXPECT_EQ(ErrorOf(closesocket(0x7FFFFFFF)), WSAENOTSOCK);
        EXPECT_EQ(ErrorOf(closesocket(0)), WSAENOTSOCK) << "a descriptor of another kind stays open";
    }
    EXPECT_EQ(ErrorOf(closesocket(INVALID_SOCKET)), WSAENOTSOCK);
    EXPECT_EQ(WSASocketW(AF_INET, 77, IPPROTO_UDP, nullptr, 0, 0), INVALID_SOCKET);
    EXPECT_EQ(WSAGetLastError(), WSAESOCKTNOSUPPORT);
}

TEST(SocketsWithoutStartup, Fail)
{
    EXPECT_EQ(WSASocketW(AF_INET, SOCK_DGRAM, IPPROTO_UDP, nullptr, 0, 0), INVALID_SOCKET);
    EXPECT_EQ(WSAGetLastError(), WSANOTINITIALISED);
    EXPECT_EQ(WSACleanup(), SOCKET_ERROR);
}

} // namespace
