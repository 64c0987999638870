#include "diag/marker_manifest.h"

#include <cstdio>

namespace qx
{
namespace
{

// The format of the manifest; the only argument is the id of the provider. It ends in a blank.
// clang-format off
constexpr char kManifest[] =
    "<instrumentationManifest xmlns=\"http://schemas.microsoft.com/win/2004/08/events\" "
    "xmlns:win=\"http://manifests.microsoft.com/win/2004/08/windows/events\" "
    "xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">\r\n"
    "  <instrumentation>\r\n"
    "    <events>\r\n"
    "      <provider name=\"ConcurrencyVisualizerMarkers\" guid=\"%s\" "
    "symbol=\"ConcurrencyVisualizerMarkers\" messageFileName=\"\" resourceFileName=\"\">\r\n"
    "        <tasks>\r\n"
    "          <task name=\"Span\" value=\"1\" />\r\n"
    "          <task name=\"Flag\" value=\"2\" />\r\n"
    "          <task name=\"Message\" value=\"3\" />\r\n"
    "        </tasks>\r\n"
    "        <opcodes>\r\n"
    "          <opcode name=\"WriteFlag\" value=\"11\" message=\"$(string.opcode_WriteFlag)\" />\r\n"
    "          <opcode name=\"WriteMessage\" value=\"12\" message=\"$(string.opcode_WriteMessage)\" />\r\n"
    "        </opcodes>\r\n"
    "        <events>\r\n"
    "          <event symbol=\"EnterSpan\" value=\"1\" version=\"1\" level=\"win:Informational\" "
    "task=\"Span\" opcode=\"win:Start\" template=\"EnterSpanArgs\" />\r\n"
    "          <event symbol=\"LeaveSpan\" value=\"2\" version=\"1\" level=\"win:Informational\" "
    "task=\"Span\" opcode=\"win:Stop\" template=\"LeaveSpanArgs\" />\r\n"
    "          <event symbol=\"WriteFlag\" value=\"3\" version=\"1\" level=\"win:Informational\" "
    "task=\"Flag\" opcode=\"WriteFlag\" template=\"WriteFlagArgs\" />\r\n"
    "          <event symbol=\"WriteMessage\" value=\"4\" version=\"1\" level=\"win:Informational\" "
    "task=\"Message\" opcode=\"WriteMessage\" template=\"WriteMessageArgs\" />\r\n"
    "        </events>\r\n"
    "        <templates>\r\n"
    "          <template tid=\"EnterSpanArgs\">\r\n"
    "            <data name=\"cvType\" inType=\"win:UInt8\" />\r\n"
    "            <data name=\"cvImportance\" inType=\"win:UInt8\" />\r\n"
    "            <data name=\"cvCategory\" inType=\"win:UInt8\" />\r\n"
    "            <data name=\"cvSpanId\" inType=\"win:Int32\" />\r\n"
    "            <data name=\"cvSeries\" inType=\"win:UnicodeString\" />\r\n"
    "            <data name=\"cvTextW\" inType=\"win:UnicodeString\" />\r\n"
    "            <data name=\"cvTextA\" inType=\"win:AnsiString\" />\r\n"
    "          </template>\r\n"
    "          <template tid=\"LeaveSpanArgs\">\r\n"
    "            <data name=\"cvType\" inType=\"win:UInt8\" />\r\n"
    "            <data name=\"cvImportance\" inType=\"win:UInt8\" />\r\n"
    "            <data name=\"cvCategory\" inType=\"win:UInt8\" />\r\n"
    "            <data name=\"cvSpanId\" inType=\"win:Int32\" />\r\n"
    "            <data name=\"cvSeries\" inType=\"win:UnicodeString\" />\r\n"
    "            <data name=\"cvTextW\" inType=\"win:UnicodeString\" />\r\n"
    "            <data name=\"cvTextA\" inType=\"win:AnsiString\" />\r\n"
    "          </template>\r\n"
    "          <template tid=\"WriteFlagArgs\">\r\n"
    "            <data name=\"cvType\" inType=\"win:UInt8\" />\r\n"
    "            <data name=\"cvImportance\" inType=\"win:UInt8\" />\r\n"
    "            <data name=\"cvCategory\" inType=\"win:UInt8\" />\r\n"
    "            <data name=\"cvSeries\" inType=\"win:UnicodeString\" />\r\n"
    "            <data name=\"cvTextW\" inType=\"win:UnicodeString\" />\r\n"
    "            <data name=\"cvTextA\" inType=\"win:AnsiString\" />\r\n"
    "          </template>\r\n"
    "          <template tid=\"WriteMessageArgs\">\r\n"
    "            <data name=\"cvType\" inType=\"win:UInt8\" />\r\n"
    "            <data name=\"cvImportance\" inType=\"win:UInt8\" />\r\n"
    "            <data name=\"cvCategory\" inType=\"win:UInt8\" />\r\n"
    "            <data name=\"cvSeries\" inType=\"win:UnicodeString\" />\r\n"
    "            <data name=\"cvTextW\" inType=\"win:UnicodeString\" />\r\n"
    "            <data name=\"cvTextA\" inType=\"win:AnsiString\" />\r\n"
    "          </template>\r\n"
    "        </templates>\r\n"
    "      </provider>\r\n"
    "    </events>\r\n"
    "  </instrumentation>\r\n"
    "  <localization>\r\n"
    "    <resources culture=\"en-US\">\r\n"
    "      <stringTable>\r\n"
    "        <string id=\"opcode_WriteFlag\" value=\"WriteFlag\" />\r\n"
    "        <string id=\"opcode_WriteMessage\" value=\"WriteMessage\" />\r\n"
    "      </stringTable>\r\n"
    "    </resources>\r\n"
    "  </localization>\r\n"
    "</instrumentationManifest> ";
// clang-format on

} // namespace

std::size_t PrintMarkerManifest(char* buffer, const GUID& providerId)
{
    char id[39];
    const BYTE* const rest = providerId.Data4;
    std::snprintf(id, sizeof(id), "{%08lX-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
        static_cast<unsigned long>(providerId.Data1), unsigned{providerId.Data2}, unsigned{providerId.Data3},
        unsigned{rest[0]}, unsigned{rest[1]}, unsigned{rest[2]}, unsigned{rest[3]}, unsigned{rest[4]},
        unsigned{rest[5]}, unsigned{rest[6]}, unsigned{rest[7]});
    const int length = std::snprintf(buffer, kMarkerManifestSize, kManifest, id);
    return length > 0 && length < static_cast<int>(kMarkerManifestSize) ? static_cast<std::size_t>(length) : 0;
}

} // namespace qx
