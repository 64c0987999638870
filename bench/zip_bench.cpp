// 200 files with 100 MB, archived and extracted, compared with loops over minizip's API at the same zlib level. The
// files are created in the temp folder: text, tables and incompressible data in the proportion 6 : 2 : 2.
// QXUT_BENCH_BUNDLE names a folder to use instead.
#include <qxut23/zip.h>

#include <benchmark/benchmark.h>
#include <minizip/unzip.h>
#include <minizip/zip.h>
#include <unistd.h>
#include <utime.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;

constexpr std::size_t bundleSize = 100u << 20;
constexpr std::size_t fileCount = 200;

// For ASCII names.
std::vector<QXWCHAR> Wide(const std::string& text)
{
    std::vector<QXWCHAR> wide(text.begin(), text.end());
    wide.push_back(0);
    return wide;
}

class Words
{
public:
    explicit Words(std::mt19937& random) : _random(random), _words(2000)
    {
        for (std::string& word : _words)
            for (auto length = 2 + random() % 9; length != 0; --length)
                word += static_cast<char>('a' + random() % 26);
    }
    const std::string& operator()() { return _words[std::min(_random() % 2000, _random() % 2000)]; }

private:
    std::mt19937& _random;
    std::vector<std::string> _words;
};

std::string Content(std::size_t kind, std::size_t size, std::mt19937& random, Words& word)
{
    std::string content;
    content.reserve(size + 64);
    while (content.size() < size)
        if (kind < 6)
            content += word() + (random() % 12 != 0 ? ' ' : '\n');
        else if (kind < 8)
            content += std::to_string(content.size()) + ';' + std::to_string(random() % 1000000) + ';' + word() + '\n';
        else
            content += static_cast<char>(random());
    content.resize(size);
    return content;
}

// The working folder of the benchmarks, deleted when the program ends.
class Place
{
public:
    Place() : _root(fs::temp_directory_path() / ("qxut-bench-zip-" + std::to_string(getpid())))
    {
        fs::create_directories(_root);
        const char* given = std::getenv("QXUT_BENCH_BUNDLE");
        _bundle = given ? fs::path(given) : _root / "bundle";
        if (!given)
            MakeBundle();
        for (const auto& entry : fs::recursive_directory_iterator(_bundle))
            if (entry.is_regular_file())
                _files.push_back(fs::relative(entry.path(), _bundle).string());
        std::sort(_files.begin(), _files.end());
    }
    ~Place() { fs::remove_all(_root); }

    const std::vector<std::string>& Files() const { return _files; }
    std::string PathOf(const std::string& file) const { return _bundle.string() + '/' + file; }
    std::string Archive(const char* who) const { return (_root / who).string() + ".zip"; }
    std::string NewTarget() const
    {
        const fs::path target = _root / "extracted";
        fs::remove_all(target);
        return target.string();
    }

private:
    void MakeBundle() const
    {
        std::mt19937 random(3);
        Words word(random);
        std::vector<std::size_t> cuts{0, bundleSize};
        while (cuts.size() <= fileCount)
            cuts.push_back(random() % bundleSize);
        std::sort(cuts.begin(), cuts.end());
        for (std::size_t i = 0; i < fileCount; ++i)
        {
            const fs::path folder = _bundle / ("dir" + std::to_string(i % 13));
            fs::create_directories(folder);
            std::ofstream file(folder / ("file" + std::to_string(i)), std::ios::binary);
            file << Content(i % 10, cuts[i + 1] - cuts[i], random, word);
        }
    }

    fs::path _root;
    fs::path _bundle;
    std::vector<std::string> _files;
};

const Place& ThePlace()
{
    static const Place place;
    return place;
}

void Require(bool holds)
{
    if (!holds)
        std::abort();
}

void WriteOurs(const std::string& archive)
{
    const HZIPFILE zip = UtilZIPCreate(Wide(archive).data(), nullptr);
    for (const std::string& file : ThePlace().Files())
        Require(UtilZIPAppend(zip, Wide(ThePlace().PathOf(file)).data(), nullptr, Wide(file).data()) == 0);
    Require(UtilZIPClose(zip) == 0);
}

void WriteMinizip(const std::string& archive)
{
    std::vector<char> buffer(1 << 20);
    const zipFile zip = zipOpen64(archive.c_str(), APPEND_STATUS_CREATE);
    for (const std::string& file : ThePlace().Files())
    {
        const zip_fileinfo info{};
        zipOpenNewFileInZip64(
            zip, file.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED, Z_DEFAULT_COMPRESSION, 0);
        std::ifstream source(ThePlace().PathOf(file), std::ios::binary);
        while (source.read(buffer.data(), static_cast<std::streamsize>(buffer.size())), source.gcount() > 0)
            zipWriteInFileInZip(zip, buffer.data(), static_cast<unsigned>(source.gcount()));
        Require(zipCloseFileInZip(zip) == ZIP_OK);
    }
    Require(zipClose(zip, nullptr) == ZIP_OK);
}

void ExtractOurs(const std::string& archive, const std::string& target)
{
    Require(UtilExtractZip(Wide(archive).data(), Wide(target).data()) == 1);
}

// Sets the time like minizip's own program.
void SetTime(const fs::path& path, const tm_unz& time)
{
    tm local{};
    local.tm_year = time.tm_year > 1900 ? time.tm_year - 1900 : time.tm_year;
    local.tm_mon = time.tm_mon;
    local.tm_mday = time.tm_mday;
    local.tm_hour = time.tm_hour;
    local.tm_min = time.tm_min;
    local.tm_sec = time.tm_sec;
    local.tm_isdst = -1;
    const std::time_t seconds = std::mktime(&local);
    const utimbuf times{seconds, seconds};
    Require(utime(path.c_str(), &times) == 0);
}

void ExtractMinizip(const std::string& archive, const std::string& target)
{
    std::vector<char> buffer(1 << 20);
    const unzFile zip = unzOpen64(archive.c_str());
    for (int result = unzGoToFirstFile(zip); result == UNZ_OK; result = unzGoToNextFile(zip))
    {
        char name[1024];
        unz_file_info64 info;
        unzGetCurrentFileInfo64(zip, &info, name, sizeof name, nullptr, 0, nullptr, 0);
        unzOpenCurrentFile(zip);
        const fs::path path = target + '/' + name;
        fs::create_directories(path.parent_path());
        std::ofstream file(path, std::ios::binary);
        int count;
        while ((count = unzReadCurrentFile(zip, buffer.data(), static_cast<unsigned>(buffer.size()))) > 0)
            file.write(buffer.data(), count);
        file.close();
        Require(unzCloseCurrentFile(zip) == UNZ_OK);
        SetTime(path, info.tmu_date);
    }
    unzClose(zip);
}

void Write(benchmark::State& state, void (*write)(const std::string&), const char* who)
{
    ThePlace();
    for (auto _ : state)
        write(ThePlace().Archive(who));
    state.counters["MB"] = static_cast<double>(fs::file_size(ThePlace().Archive(who))) / 1e6;
}

// Both extract the same archive.
void Extract(benchmark::State& state, void (*extract)(const std::string&, const std::string&))
{
    const std::string archive = ThePlace().Archive("both");
    if (!fs::exists(archive))
        WriteOurs(archive);
    for (auto _ : state)
    {
        state.PauseTiming();
        const std::string target = ThePlace().NewTarget();
        state.ResumeTiming();
        extract(archive, target);
    }
}

} // namespace

BENCHMARK_CAPTURE(Write, ours, WriteOurs, "ours")->Name("write/ours")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Write, minizip, WriteMinizip, "minizip")
    ->Name("write/minizip")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(Extract, ours, ExtractOurs)->Name("extract/ours")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Extract, minizip, ExtractMinizip)
    ->Name("extract/minizip")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
