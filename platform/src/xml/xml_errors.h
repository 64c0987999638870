// Results of the XML reader.
#pragma once

#include <winerror.h>

namespace qxplatform
{

constexpr HRESULT kInputEnd = static_cast<HRESULT>(0xC00CEE01);       // the document is incomplete
constexpr HRESULT kSyntaxError = static_cast<HRESULT>(0xC00CEE2D);    // any error without a code of its own
constexpr HRESULT kEncodingName = static_cast<HRESULT>(0xC00CEE41);   // unknown or not supported
constexpr HRESULT kTypeProhibited = static_cast<HRESULT>(0xC00CEE4F); // a document type declaration
constexpr HRESULT kDepthExceeded = static_cast<HRESULT>(0xC00CEE81);

// Returns the result for an error code of libxml2.
HRESULT XmlResult(int error);

} // namespace qxplatform
