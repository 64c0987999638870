// The second process of the tests that need two.
//    hold FILE                 holds the file exclusively, creates FILE.ready, and ends when FILE.go exists
//    save FILE LETTER COUNT    saves its own profile to the file COUNT times
//    rewrite FILE COUNT        holds the file exclusively and saves to it in place COUNT times
//    paste FILE                saves the clipboard's contents to the file
//    copy                      puts an empty profile on the clipboard
// Exit code: 0, or the absolute value of a PROF_ERR_ code.
#include "exports/profile/whole_content.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <thread>

using namespace profiletest;

namespace
{

constexpr int kLeaves = 400;

std::int32_t Hold(const std::string& path)
{
    const Job job = Job::Exclusive(path);
    std::ofstream(path + ".ready").put('r');
    for (int i = 0; i < 6000 && !std::filesystem::exists(path + ".go"); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return job.Error();
}

std::int32_t Save(const std::string& path, char letter, int count)
{
    const Job job;
    FillWhole(job, letter, kLeaves);
    std::int32_t error = PROF_OK;
    for (int i = 0; i < count && error == PROF_OK; ++i)
        error = job.Save(path);
    return error;
}

// Alternates between longer and shorter contents, and between the two ways to save to the held file.
std::int32_t Rewrite(const std::string& path, int count)
{
    const Job job = Job::Exclusive(path);
    std::int32_t error = job.Error();
    for (int i = 0; i < count && error == PROF_OK; ++i)
    {
        FillWhole(job, static_cast<char>('a' + i % 26), i % 2 == 0 ? kLeaves : kLeaves / 3);
        error = i % 4 < 2 ? ProfSaveW(job, nullptr, PROF_FORM_TEXT) : ProfSaveToStream(job, nullptr, PROF_FORM_TEXT);
    }
    return error;
}

std::int32_t Paste(const std::string& path)
{
    const Job job(ProfJobOpenClipboard(nullptr));
    return job.Error() == PROF_OK ? job.Save(path) : job.Error();
}

} // namespace

int main(int argc, char** argv)
{
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "hold" && argc == 3)
        return -Hold(argv[2]);
    if (command == "save" && argc == 5)
        return -Save(argv[2], argv[3][0], std::atoi(argv[4]));
    if (command == "rewrite" && argc == 4)
        return -Rewrite(argv[2], std::atoi(argv[3]));
    if (command == "paste" && argc == 3)
        return -Paste(argv[2]);
    if (command == "copy" && argc == 2)
        return -ProfSaveToClipboard(Job(), nullptr, PROF_FORM_TEXT);
    return 99;
}
