#include "log_setting.h"

#include "failure.h"
#include "text.h"

#include <qxut23/log_setting.h>

#include <cstdint>
#include <vector>

namespace qxut
{

LogSetting ReadLogSetting()
{
    std::uint32_t flags = 0;
    std::vector<QXWCHAR> path(QxGetLogSetting(nullptr, 0, nullptr) + 1);
    QxGetLogSetting(path.data(), path.size(), &flags);
    return {Utf8(path.data()), (flags & QXUT_LOG_FLUSH) != 0, (flags & QXUT_LOG_COUNTER) != 0};
}

void WriteLogSetting(const std::string& name, bool isFlushed)
{
    if (QxSetLogSetting(WideText(name), isFlushed ? QXUT_LOG_FLUSH : 0) == 0)
        throw Failure(kCannotWrite, LibraryErrorText("the machine's settings can't be written"));
}

} // namespace qxut
