#include "trace_commands.h"

#include "failure.h"
#include "input_output.h"
#include "text.h"
#include "trace_reader.h"

#include <qxut23/traces.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace qxut
{
namespace
{

using nlohmann::ordered_json;

constexpr char kStartOnWindows[] =
    "on windows the system records traces; run as an administrator: logman start qxut -p "
    "{AE1860CF-EE7C-4659-BB7B-C7AED00F23E4} 0xFFFFFFFFFFFFFFFF 0xFF -o FILE.etl -ets";
constexpr char kStopOnWindows[] =
    "on windows the system records traces; run as an administrator: logman stop qxut -ets";

// Results of the library that have messages of their own.
enum
{
    kNotSupported = 50,
    kAlreadyExists = 183,
    kNoTrace = 1168,
};

void Start(const std::string& file)
{
    const std::string path = Utf8Path(std::filesystem::absolute(std::filesystem::u8path(file)));
    switch (QxTraceStart(WideText(path), 1))
    {
    case 0:
        std::cout << "recording to " << Shown(path)
                  << "\nPrograms that run already are recorded only if they use no threads of the library yet.\n";
        return;
    case kNotSupported:
        throw Failure(kCannotWrite, kStartOnWindows);
    case kAlreadyExists:
        throw Failure(kLocked, "a trace is being recorded already; stop it with `qxut trace stop`");
    default:
        throw Failure(kCannotWrite, file + ": " + LibraryErrorText("the recording can't be started"));
    }
}

void Stop()
{
    std::vector<QXWCHAR> path(8192);
    switch (QxTraceStop(path.data(), path.size()))
    {
    case 0:
        std::cout << "recorded to " << Shown(Utf8(path.data())) << '\n';
        return;
    case kNotSupported:
        throw Failure(kCannotWrite, kStopOnWindows);
    case kNoTrace:
        throw Failure(kNotFound, "no trace is being recorded; start one with `qxut trace start FILE`");
    default:
        throw Failure(kCannotWrite, LibraryErrorText("the recording can't be stopped"));
    }
}

std::string Utf8Of(const std::u16string& text)
{
    return Utf8(reinterpret_cast<const QXWCHAR*>(text.c_str()));
}

double Microseconds(std::uint64_t nanoseconds)
{
    return static_cast<double>(nanoseconds) / 1000;
}

ordered_json NameOf(const char* what, std::uint32_t process, std::size_t lane, const std::string& name)
{
    return {{"name", what}, {"ph", "M"}, {"pid", process}, {"tid", lane}, {"args", {{"name", name}}}};
}

// Viewers show the number of a lane as the id of a thread. Lanes are numbered from 1.
ordered_json EventOf(const TraceMark& mark)
{
    const bool isMessage = mark.kind == TraceMark::Kind::Message;
    ordered_json event = {{"name", Utf8Of(mark.text)}, {"ph", isMessage ? "i" : "X"}, {"ts", Microseconds(mark.time)}};
    if (isMessage)
        event["s"] = "t";
    else
        event["dur"] = Microseconds(mark.duration);
    event["pid"] = mark.processId;
    event["tid"] = mark.lane + 1;
    event["args"] = {{"thread", mark.threadId}};
    if (mark.kind == TraceMark::Kind::UnfinishedSpan)
        event["args"]["unfinished"] = true;
    return event;
}

// Writes one event a line, because a trace may have millions.
void Convert(const std::string& file, const std::string& output)
{
    const TraceContents trace = ReadTrace(ReadInput(file));
    if (!trace.isTrace)
        throw Failure(kMalformed, file + ": is not a trace recorded by `qxut trace start`");
    std::string text = "{\"displayTimeUnit\":\"ms\",\"traceEvents\":[";
    const char* separator = "\n";
    const auto add = [&](const ordered_json& event)
    {
        text += separator + JsonText(event);
        separator = ",\n";
    };
    for (const auto& [process, name] : trace.processes)
        add(NameOf("process_name", process, 0, name));
    for (std::size_t lane = 0; lane < trace.lanes.size(); ++lane)
        add(NameOf("thread_name", trace.lanes[lane].processId, lane + 1, Utf8Of(trace.lanes[lane].name)));
    for (const TraceMark& mark : trace.marks)
        add(EventOf(mark));
    WriteOutput(output, text + "\n]}\n");
    if (trace.lost != 0)
        std::cerr << "qxut: " << Shown(file) << ": " << trace.lost << " events were lost while recording\n";
    if (trace.damaged != 0)
        throw Failure(kMalformed, file + ": " + std::to_string(trace.damaged) + " damaged places were left out");
}

} // namespace

void AddTraceCommands(CLI::App& program)
{
    CLI::App& trace = *program.add_subcommand("trace", "record threads and jobs on a timeline");
    trace.require_subcommand(1);
    const auto file = std::make_shared<std::string>(), output = std::make_shared<std::string>("-");
    CLI::App& start = *trace.add_subcommand("start", "record all programs of the user that use the library");
    start.add_option("FILE", *file, "the new file of the recording")->required();
    start.callback([file] { Start(*file); });
    trace.add_subcommand("stop", "stop recording")->callback(&Stop);
    CLI::App& convert =
        *trace.add_subcommand("convert", "convert a recording to JSON for Perfetto and the trace viewer of Chrome");
    convert.add_option("FILE", *file, "the file of the recording; - for standard input")->required();
    convert.add_option("-o,--output", *output, "the file to write; - for standard output");
    convert.callback([file, output] { Convert(*file, *output); });
}

} // namespace qxut
