// Scaling of the profile store: the time to load and save a leaf, the time of a look-up, and the peak memory relative
// to the size of the file (unpacked, if it is packed). Each row is measured in a process of its own. Look-ups in one
// list are compared with GLib's GKeyFile with one group, which also depend on the processor's caches. With the argument
// "large": a file of 1 GB, with leaves and as a sparse file.
#include <qxut23/profile.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include <glib.h>

namespace
{

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using WideText = std::vector<wchar_t>;

constexpr int kLookUps = 200000;

// A tree with its leaves in lists of a given size below the root. With a size of 0 all leaves are in the root.
struct Shape
{
    const char* name;
    int leavesOfList;
};

constexpr Shape kShapes[] = {{"lists of 20 leaves", 20}, {"one list", 0}};
constexpr int kLeaves[] = {100000, 250000, 500000, 1000000};

std::string LeafName(int i)
{
    return "name" + std::to_string(i);
}

std::string ListName(int list)
{
    return "list" + std::to_string(list);
}

void Append(std::string& bytes, std::string_view ascii)
{
    for (const char c : ascii)
    {
        bytes += c;
        bytes += '\0';
    }
}

void WriteProfile(const fs::path& path, const Shape& shape, int leaves)
{
    std::ofstream file(path, std::ios::binary);
    std::string bytes = "\xFF\xFE";
    Append(bytes, "[/]\r\n {\r\n");
    for (int i = 0; i < leaves; ++i)
    {
        if (shape.leavesOfList != 0 && i % shape.leavesOfList == 0)
        {
            Append(bytes, i == 0 ? " [" : "  }\r\n [");
            Append(bytes, ListName(i / shape.leavesOfList));
            Append(bytes, "]\r\n  {\r\n");
        }
        Append(bytes, "  ");
        Append(bytes, LeafName(shape.leavesOfList != 0 ? i % shape.leavesOfList : i));
        Append(bytes, "=value of ");
        Append(bytes, std::to_string(i));
        Append(bytes, "\r\n");
        if (bytes.size() > 1 << 20)
        {
            file << bytes;
            bytes.clear();
        }
    }
    Append(bytes, shape.leavesOfList != 0 ? "  }\r\n }\r\n" : " }\r\n");
    file << bytes;
}

// Returns a line of /proc/self/status in bytes.
std::uint64_t Status(std::string_view key)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
    {
        if (line.starts_with(key))
            return std::strtoull(line.c_str() + key.size() + 1, nullptr, 10) * 1024;
    }
    return 0;
}

double Seconds(Clock::time_point since)
{
    return std::chrono::duration<double>(Clock::now() - since).count();
}

WideText Wide(const std::string& text)
{
    WideText wide(text.begin(), text.end());
    wide.push_back(0);
    return wide;
}

int LookedUp(int n, int leaves)
{
    return static_cast<int>(std::int64_t{n} * 7919 % leaves);
}

double LookUp(HPROFJOB job, const Shape& shape, int leaves)
{
    std::vector<WideText> paths;
    for (int n = 0; n < kLookUps; ++n)
    {
        const int i = LookedUp(n, leaves);
        paths.push_back(
            Wide(shape.leavesOfList != 0 ? ListName(i / shape.leavesOfList) + "/" + LeafName(i % shape.leavesOfList)
                                         : LeafName(i)));
    }
    wchar_t buffer[64];
    ProfGetStringW(job, nullptr, paths[0].data(), buffer, 64, nullptr); // builds the indexes of the lists
    for (const WideText& path : paths)
        ProfGetStringW(job, nullptr, path.data(), buffer, 64, nullptr);
    const Clock::time_point start = Clock::now();
    for (const WideText& path : paths)
    {
        if (ProfGetStringW(job, nullptr, path.data(), buffer, 64, nullptr) <= 0)
            std::exit(1);
    }
    return Seconds(start) / kLookUps;
}

// Returns seconds.
double LookUpInKeyFile(int leaves)
{
    std::string text = "[list]\n";
    for (int i = 0; i < leaves; ++i)
        text += LeafName(i) + "=value of " + std::to_string(i) + "\n";
    GKeyFile* const file = g_key_file_new();
    g_key_file_load_from_data(file, text.data(), text.size(), G_KEY_FILE_NONE, nullptr);
    std::vector<std::string> names;
    for (int n = 0; n < kLookUps; ++n)
        names.push_back(LeafName(LookedUp(n, leaves)));
    const Clock::time_point start = Clock::now();
    for (const std::string& name : names)
    {
        char* const value = g_key_file_get_value(file, "list", name.c_str(), nullptr);
        if (value == nullptr)
            std::exit(1);
        g_free(value);
    }
    const double seconds = Seconds(start) / kLookUps;
    g_key_file_unref(file);
    return seconds;
}

// Runs the work in a child process, so that each row starts with fresh memory.
template <class Work>
void InChild(Work work)
{
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0)
    {
        work();
        std::fflush(stdout);
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0)
    {
        std::printf("  failed (%d)\n", status);
        std::exit(1);
    }
}

struct Loaded
{
    HPROFJOB job;
    double seconds;
    std::uint64_t peak; // peak memory in bytes
};

Loaded Load(const fs::path& path)
{
    ProfJobClose(ProfJobOpenW(nullptr));           // reads the settings
    std::ofstream("/proc/self/clear_refs") << "5"; // resets the peak
    const std::uint64_t before = Status("VmRSS:");
    const Clock::time_point start = Clock::now();
    const HPROFJOB job = ProfJobOpenW(Wide(path.string()).data());
    const double seconds = Seconds(start);
    return {job, seconds, Status("VmHWM:") - before};
}

const char* NameOf(int form)
{
    return form == PROF_FORM_XML ? "XML" : form == PROF_SAVE_PACKED ? "packed" : "";
}

void Measure(const fs::path& folder, const Shape& shape, int leaves, int form)
{
    const fs::path path = folder / "profile";
    WriteProfile(path, shape, leaves);
    const uintmax_t asText = fs::file_size(path);
    if (form != PROF_FORM_TEXT)
    {
        InChild(
            [&]
            {
                const HPROFJOB job = ProfJobOpenW(Wide(path.string()).data());
                if (ProfSaveW(job, nullptr, form) != PROF_OK)
                    std::exit(1);
            });
    }
    InChild(
        [&]
        {
            const Loaded loaded = Load(path);
            if (ProfGetError(loaded.job) != PROF_OK)
                std::exit(1);
            const Clock::time_point start = Clock::now();
            if (ProfSaveW(loaded.job, Wide((folder / "saved").string()).data(), form) != PROF_OK)
                std::exit(1);
            const double save = Seconds(start);
            const uintmax_t unpacked = form == PROF_SAVE_PACKED ? asText : fs::file_size(path);
            std::printf(
                "%-20s %-6s %9d leaves %8.1f MB   load %6.1f ns a leaf   save %6.1f ns a leaf   look up %6.1f ns   "
                "memory %5.2f files\n",
                shape.name, NameOf(form), leaves, static_cast<double>(fs::file_size(path)) / 1e6,
                loaded.seconds / leaves * 1e9, save / leaves * 1e9, LookUp(loaded.job, shape, leaves) * 1e9,
                static_cast<double>(loaded.peak) / static_cast<double>(unpacked));
        });
}

void MeasureLarge(const fs::path& folder)
{
    constexpr std::uint64_t kSize = std::uint64_t{1} << 30;
    constexpr int kLeavesOf1GB = 17500000;
    const fs::path path = folder / "profile";
    const auto print = [&](const char* what)
    {
        InChild(
            [&]
            {
                const Loaded loaded = Load(path);
                std::printf("%-20s %8.1f MB   error %d   load %.1f s   memory %.2f files\n", what,
                    static_cast<double>(fs::file_size(path)) / 1e6, ProfGetError(loaded.job), loaded.seconds,
                    static_cast<double>(loaded.peak) / static_cast<double>(fs::file_size(path)));
            });
    };
    WriteProfile(path, kShapes[0], kLeavesOf1GB);
    print("1 GB of leaves");
    std::ofstream(path, std::ios::binary) << std::string("\xFF\xFE[\0/\0]\0\n\0", 10);
    fs::resize_file(path, kSize);
    print("1 GB, mostly a hole");
    fs::resize_file(path, kSize * 2);
    print("2 GB are refused");
}

} // namespace

int main(int argc, char** argv)
{
    std::string folder = (fs::temp_directory_path() / "profile-growth-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr)
        return 1;
    if (argc > 1 && std::string_view(argv[1]) == "large")
        MeasureLarge(folder);
    else
    {
        for (const Shape& shape : kShapes)
            for (const int leaves : kLeaves)
                Measure(folder, shape, leaves, PROF_FORM_TEXT);
        for (const int leaves : kLeaves)
            InChild(
                [=]
                {
                    std::printf("%-27s %9d leaves %13s look up %6.1f ns\n", "GKeyFile, one group", leaves, "",
                        LookUpInKeyFile(leaves) * 1e9);
                });
        for (const int form : {PROF_FORM_XML, PROF_SAVE_PACKED})
            for (const Shape& shape : kShapes)
                for (const int leaves : {kLeaves[0], kLeaves[3]})
                    Measure(folder, shape, leaves, form);
    }
    fs::remove_all(folder);
    return 0;
}
