// The identifiers of the interfaces and classes declared by the layer.
#include <oaidl.h>
#include <shobjidl.h>
#include <xmllite.h>

// Nearly all of them differ only in their first number.
namespace
{
constexpr GUID CommonId(DWORD number)
{
    return {number, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
}
} // namespace

const GUID GUID_NULL = {};
const IID IID_IUnknown = CommonId(0x00000000);
const IID IID_IMarshal = CommonId(0x00000003);
const IID IID_IStorage = CommonId(0x0000000B);
const IID IID_IStream = CommonId(0x0000000C);
const IID IID_IPersistFile = CommonId(0x0000010B);
const IID IID_IPersist = CommonId(0x0000010C);
const IID IID_IDispatch = CommonId(0x00020400);
const IID IID_IXmlReader = {0x7279FC81, 0x709D, 0x4095, {0xB6, 0x3D, 0x69, 0xFE, 0x4B, 0x0D, 0x90, 0x30}};
const CLSID CLSID_ShellLink = CommonId(0x00021401);
const IID IID_IShellLinkW = CommonId(0x000214F9);
const IID IID_ISequentialStream = {0x0C733A30, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
