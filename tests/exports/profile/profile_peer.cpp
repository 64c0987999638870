// The other process of the tests with two.
//     hold FILE                 holds the file exclusively, makes FILE.ready, and ends when FILE.go is there
//     save FILE LETTER COUNT    saves a profile of its own to the file, so many times
//     rewrite FILE COUNT        holds the file exclusively and saves to it in place, so many times
//     paste FILE                saves what the clipboard holds to the file
//     copy                      puts an empty profile on the clipboard
// Ends with 0, or a code of the profile family without its sign.
#include "exports/profile/whole_content.h"

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

// Longer and shorter by turns, and on both roads to the held file.
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
