// The debug output: a line while the output is off, compared with spdlog with its level off; and a line to a log file,
// compared with a writer that only opens the file, appends and closes it.
#include <qxut23/debug.h>

#include "core/debug_line.h"
#include "diag/debug_channels.h"

#include <benchmark/benchmark.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace
{

class LogPath
{
public:
    LogPath() { mkdtemp(_folder); }
    ~LogPath()
    {
        unlink(File().c_str());
        rmdir(_folder);
    }

    std::string File() const { return std::string(_folder) + "/log"; }

private:
    char _folder[32] = "/tmp/qxut-bench-XXXXXX";
};

// The line as the library's own code writes it.
void Off_Ours(benchmark::State& state)
{
    int number = 0;
    for (auto _ : state)
        qx::DebugLine(L"line %d of %s", number++, L"text");
}

// The exported function as a program calls it.
void Off_Export(benchmark::State& state)
{
    int number = 0;
    for (auto _ : state)
        UtilDebug(L"line %d of %s", number++, L"text");
}

void Off_Spdlog(benchmark::State& state)
{
    spdlog::logger logger("off", std::make_shared<spdlog::sinks::null_sink_mt>());
    logger.set_level(spdlog::level::off);
    int number = 0;
    for (auto _ : state)
        logger.info("line {} of {}", number++, "text");
}

void File_Ours(benchmark::State& state)
{
    const LogPath path;
    qx::clsDebugChannels& channels = qx::clsDebugChannels::Instance();
    channels.SetLogFile(qx::DebugLogFile(qx::String(qx::String::kFormatted, L"%hs", path.File().c_str()), false));
    int number = 0;
    for (auto _ : state)
        qx::DebugLine(L"line %d of %s", number++, L"text");
    channels.Close();
}

// Writes the same columns and the same bytes.
void File_Writer(benchmark::State& state)
{
    const LogPath path;
    const std::string file = path.File();
    int number = 0;
    for (auto _ : state)
    {
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        tm local{};
        localtime_r(&now.tv_sec, &local);
        char line[256];
        const int length = snprintf(line, sizeof(line), "%02d:%02d:%02d.%03ld %08x/%02x %c line %d of %s\r\n",
            local.tm_hour, local.tm_min, local.tm_sec, now.tv_nsec / 1'000'000, static_cast<unsigned>(gettid()),
            static_cast<unsigned>(sched_getcpu()), '0' + number % 10, number, "text");
        ++number;
        char16_t wide[256];
        for (int i = 0; i < length; ++i)
            wide[i] = static_cast<unsigned char>(line[i]);
        const int descriptor = open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
        if (write(descriptor, wide, static_cast<std::size_t>(length) * 2) < 0)
            std::abort();
        close(descriptor);
    }
}

} // namespace

BENCHMARK(Off_Ours)->Name("off/ours");
BENCHMARK(Off_Spdlog)->Name("off/spdlog");
BENCHMARK(Off_Export)->Name("off-export/ours");
BENCHMARK(Off_Spdlog)->Name("off-export/spdlog");
BENCHMARK(File_Ours)->Name("file/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK(File_Writer)->Name("file/open-append-close")->Unit(benchmark::kMicrosecond);
