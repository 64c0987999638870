#include "accounts/account_of_sid.h"

#include "core/packing/base64.h"
#include "core/packing/byte_block.h"
#include "module/late_libraries.h"

#include <cstddef>
#include <iterator>
#include <utility>

namespace qx
{
namespace
{

constexpr std::size_t kSidHead = 8; // revision, number of subauthorities, authority
constexpr std::size_t kSubauthoritySize = 4;

// Converts the text form of an identifier. Copies the bytes, because the system's block must be freed with LocalFree.
ByteBlock BytesOfText(const wchar_t* text)
{
    auto& advAPI = AdvAPI32();
    PSID sid = nullptr;
    if (!advAPI.p_ConvertStringSidToSid.IsThere() || !advAPI.p_GetSidSubAuthorityCount.IsThere() ||
        !advAPI.p_GetSidLengthRequired.IsThere() || !advAPI.p_CopySid.IsThere() ||
        !advAPI.p_ConvertStringSidToSid(text, &sid))
        return {};
    ByteBlock bytes(advAPI.p_GetSidLengthRequired(*advAPI.p_GetSidSubAuthorityCount(sid)));
    const bool isCopied = advAPI.p_CopySid(static_cast<DWORD>(bytes.size()), bytes.data(), sid) != FALSE;
    LocalFree(sid);
    return isCopied ? std::move(bytes) : ByteBlock();
}

ByteBlock BytesOfSid(const String& sid)
{
    constexpr int kPrefixLength = 4;
    if (sid.Compare(L"SID:", kPrefixLength) == 0)
        return BytesOfText(sid.Text() + kPrefixLength);
    ByteBlock bytes;
    Base64DecodeToBytes(sid, bytes);
    return bytes;
}

// Returns true if the bytes contain a complete identifier. The second byte determines its length.
bool IsWholeSid(const ByteBlock& bytes)
{
    return bytes.size() >= kSidHead && bytes.size() >= kSidHead + bytes.data()[1] * kSubauthoritySize;
}

} // namespace

String AccountOfSid(const String& sid)
{
    auto& advAPI = AdvAPI32();
    ByteBlock bytes = BytesOfSid(sid);
    if (!IsWholeSid(bytes) || !advAPI.p_LookupAccountSid.IsThere())
        return {};
    wchar_t name[514];
    wchar_t domain[338];
    DWORD nameSize = static_cast<DWORD>(std::size(name));
    DWORD domainSize = static_cast<DWORD>(std::size(domain));
    SID_NAME_USE use{};
    if (!advAPI.p_LookupAccountSid(nullptr, bytes.data(), name, &nameSize, domain, &domainSize, &use))
        return {};
    String account(domain[0] ? domain : L".");
    account += L'\\';
    account += name;
    return account;
}

} // namespace qx
