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
    NotAsked,
    No,
    Yes
};

std::atomic<Answer> answer = Answer::NotAsked;

Answer AskEnvironment()
{
    wchar_t user[9];
    const DWORD length = GetEnvironmentVariableW(L"user", user, 9);
    return length == 3 && _wcsicmp(user, L"qvx") == 0 ? Answer::Yes : Answer::No;
}

} // namespace

bool UtilIsDeveloperRun()
{
    Answer known = answer.load(std::memory_order_relaxed);
    if (known == Answer::NotAsked)
    {
        known = AskEnvironment();
        answer.store(known, std::memory_order_relaxed);
    }
    return known == Answer::Yes;
}

void ForgetDeveloperRun()
{
    answer.store(Answer::NotAsked, std::memory_order_relaxed);
}

} // namespace qx
