#include "failure.h"

#include "text.h"

#include <qxut23/bstr.h>
#include <qxut23/errors.h>

namespace qxut
{

std::string LibraryErrorText(const std::string& otherwise)
{
    QXWCHAR* text = nullptr;
    if (QxGetErrorText(&text) == 0)
        return otherwise;
    std::string result = Utf8(text);
    SysFreeString(text);
    return result;
}

} // namespace qxut
