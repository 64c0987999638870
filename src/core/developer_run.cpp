#include "core/developer_run.h"

#include <windows.h>

#include <wchar.h>

#include <atomic>

namespace qx
{

namespace
{

enum class Answer
{
    notAsked,
    no,
    yes
};

std::atomic<Answer> answer{Answer::notAsked};

Answer AskEnvironment()
{
    wchar_t user[9];
    const DWORD length = GetEnvironmentVariableW(L"user", user, 9);
    return length == 3 && _wcsicmp(user, L"qvx") == 0 ? Answer::yes : Answer::no;
}

} // namespace

bool UtilIsDeveloperRun()
{
    Answer known = answer.load(std::memory_order_relaxed);
    if (known == Answer::notAsked)
    {
        known = AskEnvironment();
        answer.store(known, std::memory_order_relaxed);
    }
    return known == Answer::yes;
}

void ForgetDeveloperRun()
{
    answer.store(Answer::notAsked, std::memory_order_relaxed);
}

} // namespace qx
