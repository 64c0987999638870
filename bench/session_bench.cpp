// Sessions of the debug-help library. Compares the time and memory for the functions and lines of 1,000 addresses with
// llvm-symbolizer and addr2line, each as a whole process, and measures opening a session in a process with 100 modules.
//
//     bench_session [IMAGE]    IMAGE: the file with the addresses; by default the library itself
#include <qxut23/addresses.h>
#include <qxut23/stacks.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;

constexpr std::size_t kAddresses = 1000;
constexpr int kRepetitions = 5;
constexpr int kModules = 100;

double Now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// The first executable segment of a loaded image.
struct Code
{
    std::uintptr_t bias = 0;
    std::uintptr_t begin = 0; // as in the file
    std::size_t size = 0;
};

Code CodeOf(const std::string& image)
{
    void* const library = dlopen(image.c_str(), RTLD_NOW | RTLD_LOCAL);
    link_map* map = nullptr;
    if (library == nullptr || dlinfo(library, RTLD_DI_LINKMAP, static_cast<void*>(&map)) != 0)
    {
        std::fprintf(stderr, "bench_session: %s\n", dlerror());
        std::exit(1);
    }
    struct Search
    {
        std::uintptr_t bias;
        Code found;
    } search{map->l_addr, {}};
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* user)
        {
            auto& wanted = *static_cast<Search*>(user);
            for (int index = 0; info->dlpi_addr == wanted.bias && index < info->dlpi_phnum; ++index)
                if (info->dlpi_phdr[index].p_type == PT_LOAD && (info->dlpi_phdr[index].p_flags & PF_X) != 0)
                    wanted.found = {wanted.bias, info->dlpi_phdr[index].p_vaddr, info->dlpi_phdr[index].p_memsz};
            return 0;
        },
        &search);
    return search.found;
}

std::vector<std::uintptr_t> OffsetsIn(const Code& code)
{
    std::mt19937_64 random(15);
    std::vector<std::uintptr_t> offsets(kAddresses);
    for (std::uintptr_t& offset : offsets)
        offset = code.begin + random() % code.size;
    return offsets;
}

// The work that is measured in a process of its own: describes all addresses, from opening the session to closing it.
int DescribeAll(const char* image)
{
    const Code code = CodeOf(image);
    std::vector<std::uint64_t> addresses;
    for (const std::uintptr_t offset : OffsetsIn(code))
        addresses.push_back(code.bias + offset);
    std::size_t lines = 0;
    const auto receive = [](void* user, std::size_t, const QXWCHAR* text)
    {
        for (; *text != 0; ++text)
            *static_cast<std::size_t*>(user) += text[0] == ':' && text[1] == ':';
    };
    return QxDescribeAddresses(addresses.data(), addresses.size(), 1, receive, &lines) != 0 && lines > 0 ? 0 : 1;
}

struct Cost
{
    double seconds = 1e9;
    long kilobytes = 0; // peak
};

Cost CostOf(std::vector<std::string> command)
{
    std::vector<char*> arguments;
    for (std::string& argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    Cost best;
    for (int repetition = 0; repetition < kRepetitions; ++repetition)
    {
        const double start = Now();
        pid_t child = 0;
        int status = 0;
        rusage usage{};
        if (posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) != 0 ||
            wait4(child, &status, 0, &usage) != child || status != 0)
        {
            std::fprintf(stderr, "bench_session: %s failed\n", arguments[0]);
            std::exit(1);
        }
        best.seconds = std::min(best.seconds, Now() - start);
        best.kilobytes = std::max(best.kilobytes, usage.ru_maxrss);
    }
    posix_spawn_file_actions_destroy(&actions);
    return best;
}

void CompareAddresses(const std::string& image)
{
    std::vector<std::string> llvm = {"llvm-symbolizer", "--no-inlines", "--obj=" + image};
    std::vector<std::string> binutils = {"addr2line", "-f", "-C", "-e", image};
    for (const std::uintptr_t offset : OffsetsIn(CodeOf(image)))
    {
        char text[32];
        std::snprintf(text, sizeof text, "0x%zx", offset);
        llvm.emplace_back(text);
        binutils.emplace_back(text);
    }
    const Cost ours = CostOf({"/proc/self/exe", "--describe", image});
    const Cost llvmCost = CostOf(std::move(llvm));
    const Cost binutilsCost = CostOf(std::move(binutils));
    std::printf("1,000 addresses of %s, process included\n", image.c_str());
    std::printf("  %-16s %7.3f s  %6.1f MB\n", "ours", ours.seconds, static_cast<double>(ours.kilobytes) / 1024);
    for (const auto& [name, cost] : {std::pair{"llvm-symbolizer", llvmCost}, std::pair{"addr2line", binutilsCost}})
        std::printf("  %-16s %7.3f s  %6.1f MB  ratio %.2f\n", name, cost.seconds,
            static_cast<double>(cost.kilobytes) / 1024, ours.seconds / cost.seconds);
}

// Loads copies of a library, because each copy counts as a separate module.
void LoadModules(const fs::path& folder, const std::string& image)
{
    for (int number = 0; number < kModules; ++number)
    {
        const fs::path copy = folder / ("module" + std::to_string(number) + ".so");
        fs::copy_file(image, copy);
        if (dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL) == nullptr)
        {
            std::fprintf(stderr, "bench_session: %s\n", dlerror());
            std::exit(1);
        }
    }
}

void MeasureOpening()
{
    const fs::path folder = fs::temp_directory_path() / ("bench_session." + std::to_string(getpid()));
    fs::create_directory(folder);
    LoadModules(folder, "/usr/lib/x86_64-linux-gnu/libz.so.1");
    double open = 1e9;
    double list = 1e9;
    for (int repetition = 0; repetition < kRepetitions; ++repetition)
    {
        const double start = Now();
        const HDEBUGHELPJOB job = UtilDebugHelpJobOpen();
        const double opened = Now();
        IDBGModuleList* modules = nullptr;
        const bool isListed = UtilDebugHelpGetModuleList(job, &modules) != 0;
        const double listed = Now();
        if (!isListed || modules->Skip(kModules) != 0)
            std::exit(1);
        modules->Release();
        UtilDebugHelpJobClose(job);
        open = std::min(open, opened - start);
        list = std::min(list, listed - opened);
    }
    fs::remove_all(folder);
    std::printf("session in a process with more than %d modules: opening %.2f ms, list of modules %.2f ms\n", kModules,
        open * 1e3, list * 1e3);
}

std::string OwnLibrary()
{
    Dl_info info{};
    dladdr(reinterpret_cast<const void*>(&UtilDebugHelpJobOpen), &info);
    return fs::canonical(info.dli_fname).string();
}

} // namespace

int main(int count, char** arguments)
{
    if (count == 3 && std::strcmp(arguments[1], "--describe") == 0)
        return DescribeAll(arguments[2]);
    if (count == 2 && std::strcmp(arguments[1], "--open") == 0)
        return MeasureOpening(), 0;
    CompareAddresses(count > 1 ? arguments[1] : OwnLibrary());
    MeasureOpening();
    return 0;
}
