#include "log_commands.h"

#include "failure.h"
#include "log_reader.h"
#include "log_setting.h"
#include "terminal.h"
#include "text.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <chrono>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

namespace qxut
{

namespace
{

using nlohmann::ordered_json;

constexpr std::size_t kLinesBeforeFollowing = 20;
constexpr auto kTimeBetweenLooks = std::chrono::milliseconds(100); // polling interval for a growing file

struct LogOptions
{
    std::string file;
    std::string colour = "auto";
    std::string newName;
    std::size_t last = LogReader::kAll;
    double seconds = -1;
    bool show = false;
    bool follow = false;
    bool flush = false;
    bool asJson = false;
};

// Returns the name to store in the settings. A name with a folder is made absolute, because each process has its own
// current folder. A name without a folder refers to the temp folder, and a name with a drive is left to the system.
std::string SettingOf(const std::string& name)
{
    const std::size_t separator = name.find_first_of("\\/");
    const bool hasDrive = name.size() > 1 && name[1] == ':';
    if (separator == name.npos || separator == 0 || hasDrive)
        return name;
    const auto path = (std::filesystem::current_path() / std::filesystem::u8path(name)).lexically_normal().u8string();
    return {path.begin(), path.end()};
}

// Returns the reason if the option is refused, otherwise an empty text. CLI11 expects this from the checks of options.
std::string RefusedIf(bool isRefused, const char* reason)
{
    return isRefused ? reason : "";
}

void TellWhere(const LogSetting& setting, bool asJson)
{
    std::error_code error;
    const uintmax_t size = std::filesystem::file_size(std::filesystem::u8path(setting.path), error);
    const bool exists = !setting.path.empty() && !error;
    if (asJson)
    {
        std::cout << JsonText({{"file", setting.path.empty() ? ordered_json() : ordered_json(setting.path)},
                         {"bytes", exists ? ordered_json(size) : ordered_json()}, {"flush", setting.isFlushed},
                         {"time", setting.usesCounter ? "counter" : "clock"}})
                  << '\n';
        return;
    }
    if (setting.path.empty())
    {
        std::cout << "no log is written; switch it on with `qxut log on FILE`\n";
        return;
    }
    std::cout << "file   " << Shown(setting.path) << '\n'
              << "size   " << (exists ? std::to_string(size) + " bytes" : "no file yet") << '\n'
              << "flush  " << (setting.isFlushed ? "each line is written through to the disk" : "left to the system")
              << '\n'
              << "time   " << (setting.usesCounter ? "since a program's first line" : "time of day") << '\n';
}

// Returns a colour for a thread, derived from its id. Threads share colours if there are more threads than colours.
std::string ThreadColour(std::string_view thread)
{
    constexpr int kColours[] = {32, 33, 34, 35, 36, 92, 93, 94, 95, 96};
    unsigned sum = 0;
    for (const char c : thread)
        sum = sum * 31 + static_cast<unsigned char>(c);
    return std::to_string(kColours[sum % std::size(kColours)]);
}

std::string MessageColour(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(' ');
    text.remove_prefix(begin == text.npos ? text.size() : begin);
    if (text.starts_with("ERR: ") || text.starts_with("ERROR: ") || text.starts_with("Error: "))
        return "31";
    return text.starts_with("WRN: ") || text.starts_with("Warning: ") ? "33" : "";
}

std::string Coloured(std::string_view text, const std::string& colour)
{
    if (text.empty() || colour.empty())
        return std::string(text);
    return "\x1B[" + colour + 'm' + std::string(text) + "\x1B[0m";
}

// Returns the text of a line as people read it: lines of reports are indented by two blanks for each level, and a line
// feed at the end is left out.
std::string TextForPeople(std::string_view text, bool inColour)
{
    if (text.ends_with('\n'))
        text.remove_suffix(1);
    std::string before;
    if (ReportLine report; ParseReportLine(text, report))
    {
        before = Shown(report.before) + std::string(2 * report.depth, ' ');
        text = report.text;
    }
    const std::string shown = Shown(text);
    return before + (inColour ? Coloured(shown, MessageColour(text)) : shown);
}

std::string ForPeople(const std::string& line, bool inColour)
{
    const LogColumns columns = ColumnsOf(line);
    std::string text = TextForPeople(columns.text, inColour && !columns.time.empty());
    if (columns.time.empty())
        return text;
    const std::string tag = Shown(columns.tag);
    if (!inColour)
        return tag + std::string(columns.time) + ' ' + std::string(columns.thread) + std::string(columns.processor) +
               ' ' + std::string(columns.digit) + ' ' + text;
    return Coloured(tag, "1") + Coloured(columns.time, "36") + ' ' +
           Coloured(columns.thread, ThreadColour(columns.thread)) + Coloured(columns.processor, "2") + ' ' +
           Coloured(columns.digit, "2") + ' ' + text;
}

std::string AsJson(const std::string& line)
{
    const LogColumns columns = ColumnsOf(line);
    ordered_json json;
    if (!columns.time.empty())
    {
        std::string_view tag = columns.tag.substr(0, columns.tag.empty() ? 0 : columns.tag.size() - 2);
        tag = tag.substr(0, tag.find_last_not_of(' ') + 1);
        json["tag"] = tag;
        json["time"] = columns.time;
        json["thread"] = std::stoul(std::string(columns.thread), nullptr, 16);
        json["processor"] = std::stoul(std::string(columns.processor.substr(1)), nullptr, 16);
        json["digit"] = columns.digit[0] - '0';
    }
    ReportLine report;
    const bool isReport = ParseReportLine(columns.text, report);
    if (isReport)
        json["depth"] = report.depth;
    json["text"] = isReport ? std::string(report.before) + std::string(report.text) : columns.text;
    return JsonText(json);
}

class Printer
{
public:
    explicit Printer(const LogOptions& options)
        : _asJson(options.asJson),
          _inColour(options.colour == "always" || (options.colour == "auto" && TerminalHasColours()))
    {
    }

    void Print(const std::string& line) const
    {
        if (_asJson)
            std::cout << AsJson(line) << '\n';
        else
            std::cout << ForPeople(line, _inColour) << '\n';
    }

private:
    const bool _asJson;
    const bool _inColour;
};

void Follow(LogReader& reader, const Printer& printer, double seconds)
{
    const auto begin = std::chrono::steady_clock::now();
    while (std::cout)
    {
        const std::vector<std::string> lines = reader.Next();
        for (const std::string& line : lines)
            printer.Print(line);
        std::cout.flush();
        if (seconds >= 0 && std::chrono::steady_clock::now() - begin >= std::chrono::duration<double>(seconds))
            return;
        if (lines.empty())
            std::this_thread::sleep_for(kTimeBetweenLooks);
    }
}

void ShowLines(const LogOptions& options, const std::string& path)
{
    const std::filesystem::path file = std::filesystem::u8path(path);
    std::error_code error;
    const bool exists = std::filesystem::exists(file, error);
    if (exists && !std::filesystem::is_regular_file(file, error))
        throw Failure(kCannotRead, path + ": is not a file");
    if (!exists && !options.follow) // a program that is followed may create it later
        throw Failure(kCannotRead, path + ": no such file");
    const std::size_t before = options.follow && !options.show ? kLinesBeforeFollowing : LogReader::kAll;
    LogReader reader(file, options.last != LogReader::kAll ? options.last : before);
    const Printer printer(options);
    if (options.follow)
        return Follow(reader, printer, options.seconds);
    for (std::vector<std::string> lines = reader.Next(); !lines.empty(); lines = reader.Next())
        for (const std::string& line : lines)
            printer.Print(line);
    if (const std::string rest = reader.Rest(); !rest.empty())
        printer.Print(rest);
}

void Log(const LogOptions& options)
{
    LogSetting setting = ReadLogSetting();
    if (!options.file.empty())
        setting.path = options.file;
    if (!options.show && !options.follow)
        return TellWhere(setting, options.asJson);
    if (setting.path.empty())
        throw Failure(kNotFound, "no log is written; switch it on with `qxut log on FILE`");
    ShowLines(options, setting.path);
}

} // namespace

void AddLogCommands(CLI::App& program)
{
    const auto options = std::make_shared<LogOptions>();
    CLI::App& log = *program.add_subcommand("log", "show the debug output and its settings");
    log.require_subcommand(0, 1);
    log.add_flag("--show", options->show, "print the lines of the log");
    log.add_flag("--follow", options->follow, "print the last lines, and new lines as they are written");
    log.add_option("--last", options->last, "start with this number of existing lines")
        ->check([](const std::string& count) { return RefusedIf(count.starts_with('-'), "must not be negative"); });
    log.add_option("--file", options->file, "use this file instead of the one in the settings");
    log.add_option("--seconds", options->seconds, "with --follow: stop after this number of seconds");
    log.add_option("--colour,--color", options->colour, "auto (if standard output is a terminal), always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}));
    log.add_flag("--json", options->asJson, "print JSON, one object per line of the log");
    log.footer("The settings apply to the whole machine. A process reads them when it loads the library.");
    log.callback(
        [&log, options]
        {
            if (log.get_subcommands().empty())
                Log(*options);
        });

    CLI::App& on = *log.add_subcommand("on", "switch the log on for all processes started from now on");
    on.add_option("FILE", options->newName, "the log file; a name without a folder refers to the temp folder")
        ->required()
        ->check([](const std::string& name) { return RefusedIf(name.empty(), "the file name is empty"); });
    on.add_flag("--flush", options->flush, "write each line through to the disk");
    on.callback([options] { WriteLogSetting(SettingOf(options->newName), options->flush); });
    CLI::App& off = *log.add_subcommand("off", "switch the log off");
    off.callback([] { WriteLogSetting("", false); });
}

} // namespace qxut
