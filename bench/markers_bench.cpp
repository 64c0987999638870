// Markers: a span without a record, one with a record but without a session, and recorded events, compared with a
// tracepoint of lttng-ust and with spdlog's asynchronous logger. Needs the program lttng-sessiond for the first peer.
#include "diag/marker_series.h"
#include "markers_tracepoint.h"

#include <qxut23/traces.h>

#include <benchmark/benchmark.h>
#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

namespace
{

using Series = qx::clsConcurrencyVisualizerMarkerSeries;

// A folder with settings and files of its own, and a recording.
class Recording
{
public:
    Recording()
    {
        mkdtemp(_folder);
        setenv("QXPLATFORM_HOME", _folder, 1);
        const qx::String file(qx::String::kFormatted, L"%hs/a.trace", _folder);
        isRunning = QxTraceStart(file.Text(), 1) == 0;
    }
    ~Recording()
    {
        Stop();
        std::filesystem::remove_all(_folder);
    }
    void Stop() { QxTraceStop(nullptr, 0); }

    bool isRunning;

private:
    char _folder[32] = "/tmp/qxut-bench-XXXXXX";
};

// A session of lttng that records the tracepoint.
class LttngSession
{
public:
    LttngSession()
    {
        const bool isStarted = std::system("lttng-sessiond --daemonize >/dev/null 2>&1") == 0;
        isRunning = std::system("lttng create qxut-bench --output=/tmp/qxut-bench-lttng >/dev/null 2>&1 && "
                                "lttng enable-event --userspace qxut_bench:mark >/dev/null 2>&1 && "
                                "lttng start >/dev/null 2>&1") == 0;
        static_cast<void>(isStarted); // another daemon may run already
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        isRunning = isRunning && lttng_ust_tracepoint_enabled(qxut_bench, mark);
    }
    ~LttngSession()
    {
        static_cast<void>(
            std::system("lttng destroy qxut-bench 2>&1 | grep -i discarded; rm -rf /tmp/qxut-bench-lttng"));
    }

    bool isRunning;
};

// Measures batches that fit into all buffers, and lets the writers empty them in between.
template <class Event>
void InBatches(benchmark::State& state, Event event)
{
    constexpr int kBatch = 500;
    for (auto _ : state)
    {
        const auto begin = std::chrono::steady_clock::now();
        for (int number = 0; number < kBatch; ++number)
            event(number);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        state.SetIterationTime(time.count() / kBatch);
        std::this_thread::sleep_for(std::chrono::milliseconds(15));
    }
}

void Span_NoRecord(benchmark::State& state)
{
    Series* series = nullptr;
    benchmark::DoNotOptimize(series);
    for (auto _ : state)
        const qx::clsConcurrencyVisualizerSpan span(series, L"%s", L"job");
}

void Span_NoSession(benchmark::State& state)
{
    Recording recording;
    Series series(L"LIBRARY::Worker");
    recording.Stop();
    while (series.IsListenedTo())
        std::this_thread::yield();
    for (auto _ : state)
        const qx::clsConcurrencyVisualizerSpan span(&series, L"%s", L"job");
    if (!series.HasRecord())
        state.SkipWithError("nothing was recorded");
}

void Message_Ours(benchmark::State& state)
{
    const Recording recording;
    Series series(L"LIBRARY::Worker");
    if (!series.HasRecord())
        return state.SkipWithError("nothing is recorded");
    InBatches(state, [&](int number) { series.WriteMessage(4, L"result=%d", number); });
}

void Span_Ours(benchmark::State& state)
{
    const Recording recording;
    Series series(L"LIBRARY::Worker");
    if (!series.HasRecord())
        return state.SkipWithError("nothing is recorded");
    InBatches(state, [&](int) { const qx::clsConcurrencyVisualizerSpan span(&series, L"%s", L"a job"); });
}

void Tracepoints(benchmark::State& state, int each)
{
    const LttngSession session;
    if (!session.isRunning)
        return state.SkipWithError("lttng doesn't record");
    InBatches(state,
        [&](int number)
        {
            for (int event = 0; event < each; ++event)
                lttng_ust_tracepoint(qxut_bench, mark, "LIBRARY::Worker", "a job", number);
        });
}

void Spdlog(benchmark::State& state, int each)
{
    spdlog::init_thread_pool(8192, 1);
    const auto logger = spdlog::basic_logger_mt<spdlog::async_factory>("async", "/tmp/qxut-bench-spdlog.log");
    InBatches(state,
        [&](int number)
        {
            for (int event = 0; event < each; ++event)
                logger->info("{} {}", "LIBRARY::Worker", number);
        });
    spdlog::shutdown();
    std::filesystem::remove("/tmp/qxut-bench-spdlog.log");
}

[[maybe_unused]] const bool areRegistered = []
{
    benchmark::RegisterBenchmark("no record/ours", &Span_NoRecord);
    benchmark::RegisterBenchmark("no session/ours", &Span_NoSession);
    const auto recorded = [](const char* name, auto function)
    {
        benchmark::RegisterBenchmark(name, function)->UseManualTime()->Iterations(60)->Repetitions(3);
    };
    recorded("message/ours", &Message_Ours);
    recorded("message/lttng-ust", [](benchmark::State& state) { Tracepoints(state, 1); });
    recorded("message/spdlog", [](benchmark::State& state) { Spdlog(state, 1); });
    recorded("span/ours", &Span_Ours);
    recorded("span/lttng-ust", [](benchmark::State& state) { Tracepoints(state, 2); });
    recorded("span/spdlog", [](benchmark::State& state) { Spdlog(state, 2); });
    return true;
}();

} // namespace
