#include "xml/xml_errors.h"

#include <libxml/xmlerror.h>

#include <algorithm>
#include <iterator>

namespace qxplatform
{
namespace
{

struct ErrorRow
{
    int error;
    unsigned result;
};

constexpr ErrorRow kXmlErrors[] = {
    {XML_ERR_DOCUMENT_EMPTY, 0xC00CEE01},
    {XML_ERR_DOCUMENT_END, 0xC00CEE01},
    {XML_ERR_GT_REQUIRED, 0xC00CEE23},
    {XML_ERR_ATTRIBUTE_NOT_STARTED, 0xC00CEE24},
    {XML_ERR_INVALID_CHAR, 0xC00CEE2B},
    {XML_ERR_HYPHEN_IN_COMMENT, 0xC00CEE2F},
    {XML_ERR_TAG_NAME_MISMATCH, 0xC00CEE3B},
    {XML_ERR_ATTRIBUTE_REDEFINED, 0xC00CEE3C},
    {XML_ERR_RESERVED_XML_NAME, 0xC00CEE3E},
    {XML_ERR_UNKNOWN_ENCODING, 0xC00CEE41},
    {XML_ERR_UNSUPPORTED_ENCODING, 0xC00CEE41},
    {XML_ERR_MISPLACED_CDATA_END, 0xC00CEE4D},
    {XML_ERR_NAME_REQUIRED, 0xC00CEE61},
    {XML_NS_ERR_QNAME, 0xC00CEE62},
    {XML_ERR_NO_MEMORY, 0x8007000E},
};

} // namespace

HRESULT XmlResult(int error)
{
    const auto* const row = std::find_if(
        std::begin(kXmlErrors), std::end(kXmlErrors), [=](const ErrorRow& other) { return other.error == error; });
    return row != std::end(kXmlErrors) ? static_cast<HRESULT>(row->result) : kSyntaxError;
}

} // namespace qxplatform
