#include "threads/message_queue.h"

#include <algorithm>
#include <utility>

namespace qxplatform
{
namespace
{

constexpr DWORD kPostedKinds = QS_POSTMESSAGE | QS_ALLPOSTMESSAGE;

bool Admits(const MessageQueue::Filter& filter, const MSG& message)
{
    const HWND threadMessages = reinterpret_cast<HWND>(LONG_PTR{-1});
    const bool isWindowRight =
        filter.window == nullptr || message.hwnd == (filter.window == threadMessages ? nullptr : filter.window);
    const bool isNumberRight =
        (filter.first == 0 && filter.last == 0) || (filter.first <= message.message && message.message <= filter.last);
    return isWindowRight && isNumberRight;
}

} // namespace

void MessageQueue::Post(const MSG& message)
{
    _posted.push_back(message);
    _new |= kPostedKinds;
}

std::optional<MSG> MessageQueue::Get(const Filter& filter, bool remove)
{
    const auto found =
        std::find_if(_posted.begin(), _posted.end(), [&filter](const MSG& message) { return Admits(filter, message); });
    if (found == _posted.end())
        return std::nullopt;
    const MSG message = *found;
    if (remove)
        _posted.erase(found);
    return message;
}

} // namespace qxplatform
