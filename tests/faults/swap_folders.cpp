// Extracts archives and embedded files many times. Meanwhile another process swaps a folder of the target, and files in
// it, with links that lead outside. Fails if anything is written outside.
#include <qxut23/archives.h>
#include <qxut23/profile.h>

#include "rounds.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;

constexpr int kFiles = 40;

std::vector<QXWCHAR> Wide(const std::string& text)
{
    std::vector<QXWCHAR> wide(text.begin(), text.end());
    wide.push_back(0);
    return wide;
}

void Exchange(const fs::path& one, const fs::path& other)
{
    renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
}

class Place
{
public:
    Place() : _root(fs::temp_directory_path() / ("qxut-swap-" + std::to_string(getpid())))
    {
        fs::create_directories(_root / "source");
        for (int i = 0; i < kFiles; ++i)
            std::ofstream(_root / "source" / Name(i)) << "content of the file " << i;
    }
    ~Place() { fs::remove_all(_root); }

    static std::string Name(int number) { return "file" + std::to_string(number); }
    fs::path Path(const char* name) const { return _root / name; }

    // Creates a new target that contains the folder `folder`, and links that lead outside: `link` in the target,
    // `parent` next to it, and one in `links` for each file.
    void Prepare() const
    {
        for (const char* name : {"target", "parent", "outside", "links"})
            fs::remove_all(_root / name);
        for (const char* name : {"target/folder", "outside", "links"})
            fs::create_directories(_root / name);
        fs::create_directory_symlink(_root / "outside", _root / "target/link");
        fs::create_directory_symlink(_root / "outside", _root / "parent");
        for (int i = 0; i < kFiles; ++i)
            fs::create_symlink(_root / "outside" / Name(i), _root / "links" / Name(i));
    }

    std::size_t CountOutside() const
    {
        std::size_t count = 0;
        for (const auto& entry : fs::recursive_directory_iterator(_root / "outside"))
            count += entry.is_regular_file() ? 1 : 0;
        return count;
    }

private:
    fs::path _root;
};

// Runs until it is killed.
void Swap(const Place& place, const char* folder, const char* link)
{
    for (;;)
        Exchange(place.Path(folder), place.Path(link));
}

void SwapFolders(const Place& place)
{
    Swap(place, "target/folder", "target/link");
}

void SwapParents(const Place& place)
{
    Swap(place, "target", "parent");
}

void SwapNames(const Place& place)
{
    for (;;)
        for (int i = 0; i < kFiles; ++i)
        {
            const fs::path name = place.Path("target/folder") / Place::Name(i);
            const fs::path link = place.Path("links") / Place::Name(i);
            if (rename(link.c_str(), name.c_str()) == 0) [[maybe_unused]]
                const int ignored = symlink((place.Path("outside") / Place::Name(i)).c_str(), link.c_str());
        }
}

using Attack = void (*)(const Place&);

// Returns the number of extractions, out of `count`, that wrote outside. With `waits`, the attack begins when the first
// file exists, because a folder that is a link from the start is the caller's choice.
std::size_t CountAttacks(const Place& place, int count, bool waits, Attack attack, const std::function<void()>& extract)
{
    std::size_t outside = 0;
    for (int i = 0; i < count; ++i)
    {
        place.Prepare();
        const pid_t attacker = fork();
        if (attacker == 0)
        {
            while (waits && !fs::exists(place.Path("target/folder") / Place::Name(0)))
                continue;
            attack(place);
        }
        extract();
        kill(attacker, SIGKILL);
        waitpid(attacker, nullptr, 0);
        outside += place.CountOutside() != 0 ? 1 : 0;
    }
    return outside;
}

std::string MakeArchive(const Place& place)
{
    const std::string path = place.Path("x.zip");
    const HZIPFILE zip = UtilZIPCreate(Wide(path).data(), nullptr);
    for (int i = 0; i < kFiles; ++i)
        UtilZIPAppend(
            zip, Wide(place.Path("source") / Place::Name(i)).data(), nullptr, Wide("folder/" + Place::Name(i)).data());
    return UtilZIPClose(zip) == QXUT_ZIP_OK ? path : std::string();
}

} // namespace

int main()
{
    const int count = faults::Rounds(100);
    const Place place;
    const std::string archive = MakeArchive(place);
    const HPROFJOB job = ProfJobOpenW(nullptr);
    if (archive.empty() ||
        ProfAppendFilesW(job, nullptr, Wide(place.Path("source") / "*").data(), Wide("key").data()) != kFiles)
        return std::fputs("the archive or the profile can't be made\n", stderr), 2;
    const auto extractArchive = [&]
    {
        QxExtractZip(Wide(archive).data(), Wide(place.Path("target")).data(), 0, nullptr, nullptr, nullptr);
    };
    const auto extractEmbedded = [&]
    {
        ProfExtractFilesW(job, nullptr, Wide(place.Path("target/folder")).data(), Wide("key").data());
    };

    // Without interference all files must be extracted; otherwise the attacks would prove nothing.
    place.Prepare();
    extractArchive();
    const bool archiveWrites = fs::exists(place.Path("target/folder") / Place::Name(kFiles - 1));
    place.Prepare();
    extractEmbedded();
    const bool embeddedWrites = fs::exists(place.Path("target/folder") / Place::Name(kFiles - 1));

    struct
    {
        const char* name;
        bool waits;
        Attack attack;
        std::function<void()> extract;
    } const rounds[] = {{"archive, folder swapped", false, SwapFolders, extractArchive},
        {"archive, names swapped", false, SwapNames, extractArchive},
        {"archive, parent swapped", true, SwapParents, extractArchive},
        {"embedded files, names swapped", false, SwapNames, extractEmbedded},
        {"embedded files, folder swapped", true, SwapFolders, extractEmbedded},
        {"embedded files, parent swapped", true, SwapParents, extractEmbedded}};
    std::size_t total = 0;
    for (const auto& round : rounds)
    {
        const std::size_t outside = CountAttacks(place, count, round.waits, round.attack, round.extract);
        std::printf("%-30s %6d tries, %zu outside\n", round.name, count, outside);
        total += outside;
    }
    ProfJobClose(job);
    return count > 0 && total == 0 && archiveWrites && embeddedWrites ? 0 : 1;
}
