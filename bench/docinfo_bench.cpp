// Document information of 2,000 documents of eight kinds (make_documents.py): all of them compared with exiftool in one
// process, the mails with GMime in this process, the PDF files with one process of pdfinfo each. Then the time and
// memory of valid records in a list of 100,000, and how qxut scales with the processors.
#include <qxut23/docinfo.h>

#include <benchmark/benchmark.h>
#include <gmime/gmime.h>
#include <oleauto.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace
{

namespace fs = std::filesystem;

using WideText = std::vector<wchar_t>;

constexpr int kRecords = 100'000;
const std::string kFolder = QXUT_BENCH_DOCUMENTS;

WideText Wide(std::string_view ascii)
{
    WideText text(ascii.begin(), ascii.end());
    text.push_back(0);
    return text;
}

// Returns the documents of a kind, or all of them for an empty extension.
std::vector<std::string> Documents(std::string_view extension)
{
    std::vector<std::string> paths;
    for (const fs::directory_entry& entry : fs::directory_iterator(QXUT_BENCH_DOCUMENTS))
        if (extension.empty() || entry.path().extension() == extension)
            paths.push_back(entry.path().string());
    std::sort(paths.begin(), paths.end());
    return paths;
}

// Receives everything that a document says about itself.
class Information
{
public:
    Information()
        : _request{sizeof _request, 0, &_values[0], &_values[1], &_values[2], &_values[3], &_values[4], &_values[5],
              &_values[6], &_values[7], nullptr}
    {
    }
    Information(const Information&) = delete;
    Information& operator=(const Information&) = delete;
    ~Information()
    {
        for (VARIANT& value : _values)
            VariantClear(&value);
    }

    bool Get(HUTDOCINFO list, const WideText& path) { return UtilDocInfoGet(list, path.data(), &_request, 0) == 1; }

private:
    VARIANT _values[8]{};
    const QxUtDocumentInfo _request;
};

void ReadOurs(benchmark::State& state, std::string_view extension)
{
    std::vector<WideText> paths;
    for (const std::string& path : Documents(extension))
        paths.push_back(Wide(path));
    const HUTDOCINFO list = UtilDocInfoOpen(0);
    Information information;
    for (auto _ : state)
        for (const WideText& path : paths)
            if (!information.Get(list, path))
                state.SkipWithError("a document can't be read");
    UtilDocInfoClose(list);
    state.SetItemsProcessed(state.iterations() * static_cast<long>(paths.size()));
}

void RunCommand(benchmark::State& state, const std::string& command)
{
    for (auto _ : state)
        if (std::system((command + " >/dev/null 2>&1").c_str()) != 0) // NOLINT(cert-env33-c)
            state.SkipWithError("the peer failed");
}

void ReadMailsByGMime(benchmark::State& state)
{
    g_mime_init();
    const std::vector<std::string> paths = Documents(".eml");
    for (auto _ : state)
        for (const std::string& path : paths)
        {
            GMimeStream* const stream = g_mime_stream_file_open(path.c_str(), "r", nullptr);
            GMimeParser* const parser = g_mime_parser_new_with_stream(stream);
            GMimeMessage* const message = g_mime_parser_construct_message(parser, nullptr);
            benchmark::DoNotOptimize(g_mime_message_get_subject(message));
            benchmark::DoNotOptimize(g_mime_message_get_date(message));
            for (InternetAddressList* const list : {g_mime_message_get_from(message), g_mime_message_get_to(message)})
                g_free(internet_address_list_to_string(list, nullptr, FALSE));
            g_object_unref(message);
            g_object_unref(parser);
            g_object_unref(stream);
        }
}

// The resident memory in bytes.
double Memory()
{
    std::ifstream file("/proc/self/statm");
    long pages = 0;
    file >> pages >> pages;
    return static_cast<double>(pages) * 4096;
}

// Each record has its own key; all keys refer to the same small document.
void LookAtValidRecord(benchmark::State& state)
{
    const std::string document = Documents(".jpg").front();
    const HUTDOCINFO list = UtilDocInfoOpen(3600);
    Information information;
    std::vector<WideText> keys;
    for (int i = 0; i < kRecords; ++i)
        keys.push_back(Wide(document + '|' + std::to_string(i)));
    const double before = Memory();
    for (const WideText& key : keys)
        information.Get(list, key);
    // The function runs several times. Later runs reuse the memory of the first.
    static const double bytes = (Memory() - before) / kRecords;
    state.counters["bytes a record"] = bytes;
    std::size_t next = 0;
    for (auto _ : state)
    {
        information.Get(list, keys[next]);
        next = (next + 7919) % keys.size();
    }
    UtilDocInfoClose(list);
}

// qxut reads the folder 50 times, which is 100,000 files.
void RunProgram(benchmark::State& state, int jobs)
{
    std::string command = QXUT_BENCH_PROGRAM " doc --csv --jobs " + std::to_string(jobs);
    for (int i = 0; i < 50; ++i)
        command += ' ' + kFolder;
    RunCommand(state, command);
}

BENCHMARK_CAPTURE(ReadOurs, all, "")->Name("documents/ours")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(RunCommand, all, "exiftool -q -j " + kFolder)
    ->Name("documents/exiftool")
    ->UseRealTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadOurs, mails, ".eml")->Name("mails/ours")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ReadMailsByGMime)->Name("mails/gmime")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadOurs, pdf, ".pdf")->Name("pdf/ours")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(RunCommand, pdf, "for file in " + kFolder + "/*.pdf; do pdfinfo $file; done")
    ->Name("pdf/pdfinfo")
    ->UseRealTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(LookAtValidRecord)->Name("valid record/ours")->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(RunProgram, two, 2)
    ->Name("processors/ours")
    ->UseRealTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(RunProgram, one, 1)
    ->Name("processors/one job")
    ->UseRealTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

} // namespace
