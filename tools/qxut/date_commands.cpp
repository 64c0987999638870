#include "date_commands.h"

#include "failure.h"
#include "input_output.h"
#include "text.h"

#include <qxut23/dates.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// Declared as the system declares it, because the system's headers use another character type than this program.
struct _SYSTEMTIME
{
    std::uint16_t year, month, dayOfWeek, day, hour, minute, second, milliseconds;
};

namespace qxut
{

namespace
{

using Time = _SYSTEMTIME;
using Json = nlohmann::ordered_json;

constexpr std::uint32_t kUsersLocale = 0x400;
constexpr std::uint16_t kNotGiven = 0xFFFF;

struct DateOptions
{
    std::string file = "-";
    bool json = false;
    bool machine = false;
    std::uint32_t locale = kUsersLocale;
    std::uint32_t flags = 0;
};

struct ParseFlag
{
    const char* name;
    std::uint32_t bit;
    const char* description;
};
constexpr ParseFlag kParseFlags[] = {
    {"--expand-year", QXUT_LOCDATE_EXPAND_YEAR, "two-digit years are 1930 to 2029"},
    {"--report-default", QXUT_LOCDATE_REPORT_DEFAULT, "reject texts with a missing part"},
    {"--zero-missing", QXUT_LOCDATE_ZERO_MISSING, "missing parts are 0, and any numbers are accepted"},
    {"--time-only", QXUT_LOCDATE_ALLOW_TIME_ONLY, "also accept a time alone; its date is 0"},
    {"--mark-no-time", QXUT_LOCDATE_MARK_NO_TIME, "print -- for the time if a text has none"},
};

// Splits the input into lines without their CR LF or LF.
std::vector<std::string> Lines(std::string_view input)
{
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (input.substr(0, kMark.size()) == kMark)
        input.remove_prefix(kMark.size());
    if (input.find('\0') != input.npos)
        throw Failure(kMalformed, "the input is not text: it contains a zero byte");
    std::vector<std::string> lines;
    while (!input.empty())
    {
        const std::size_t end = input.find('\n');
        std::string_view line = input.substr(0, end);
        input.remove_prefix(end == input.npos ? input.size() : end + 1);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        lines.emplace_back(line);
    }
    return lines;
}

std::string Part(std::uint16_t value, const char* format)
{
    char text[8];
    std::snprintf(text, sizeof text, format, value);
    return value == kNotGiven ? "--" : text;
}

std::string DateTextOf(const Time& time)
{
    return Part(time.year, "%04d") + '-' + Part(time.month, "%02d") + '-' + Part(time.day, "%02d") + ' ' +
           Part(time.hour, "%02d") + ':' + Part(time.minute, "%02d") + ':' + Part(time.second, "%02d");
}

// Returns true if the date and the time of day exist. Leap seconds (second 60) are accepted.
bool Exists(const Time& time)
{
    const std::chrono::year_month_day day{
        std::chrono::year{time.year}, std::chrono::month{time.month}, std::chrono::day{time.day}};
    return day.ok() && time.hour < 24 && time.minute < 60 && time.second <= 60;
}

// Reads the forms that don't depend on a locale. The library also accepts numbers that are no date.
bool ReadMachineForm(const std::string& line, Time& time)
{
    time = {};
    UtilLocDateTimeToSYSTEMTIME(WideText{line}, &time);
    return Exists(time);
}

// Returns false if the text is not a date, or if the options reject it.
bool Read(const std::string& line, const DateOptions& options, Time& time)
{
    if (options.machine)
        return ReadMachineForm(line, time);
    time = {};
    if (UtilLocSystemTimeFromLocaleString(options.locale, WideText{line}, &time, options.flags) != 0)
        return false;
    const bool mayBeTime = (options.flags & QXUT_LOCDATE_ALLOW_TIME_ONLY) != 0;
    const bool isAllZero = time.year == 0 && time.month == 0 && time.day == 0;
    return !isAllZero || (mayBeTime && line.find_first_of("123456789") != line.npos);
}

std::string ParseLine(const std::string& line, const DateOptions& options)
{
    Time time;
    return Read(line, options, time) ? DateTextOf(time) : std::string();
}

// Returns true for a date in digits only, which may be followed by hours, minutes and seconds.
bool IsCompactDate(const std::string& line)
{
    Time time;
    return line.size() >= 8 && line.size() <= 14 && line.size() % 2 == 0 &&
           line.find_first_not_of("0123456789") == line.npos && ReadMachineForm(line, time);
}

std::string FormatLine(const std::string& line, const DateOptions&)
{
    if (!IsCompactDate(line))
        return "";
    QXWCHAR text[128];
    if (UtilDateTimeToLocaleString(WideText{line}, text, 128) != 1)
        throw Failure(kCannotRead, "the formatted date is too long");
    return Utf8(text);
}

// Converts each line. A line without a result becomes an empty line, or null in JSON, and is named in a message.
void Run(const DateOptions& options, std::string (*convert)(const std::string&, const DateOptions&))
{
    std::string output;
    Json list = Json::array();
    std::vector<std::string> problems;
    std::size_t number = 0;
    for (const std::string& line : Lines(ReadInput(options.file)))
    {
        ++number;
        const std::string result = convert(line, options);
        if (result.empty())
            problems.push_back((options.file == "-" ? "line " : options.file + ": line ") + std::to_string(number) +
                               ": '" + line + "' is not a date");
        if (options.json)
            list.push_back({{"input", line}, {"result", result.empty() ? Json() : Json(result)}});
        else
            output += result + '\n';
    }
    if (options.json)
        output = JsonText(list, 2) + '\n';
    WriteOutput("-", output);
    std::cout.flush();
    if (!problems.empty())
        throw Failure(kMalformed, problems);
}

std::shared_ptr<DateOptions> AddConversion(CLI::App& date, const char* name, const char* description,
    std::string (*convert)(const std::string&, const DateOptions&))
{
    auto options = std::make_shared<DateOptions>();
    CLI::App& command = *date.add_subcommand(name, description);
    command.add_option("FILE", options->file, "the input, one text per line; standard input if omitted or -");
    command.add_flag("--json", options->json, "print JSON: a list of inputs and results");
    command.callback([options, convert] { Run(*options, convert); });
    return options;
}

} // namespace

void AddDateCommands(CLI::App& program)
{
    CLI::App& date = *program.add_subcommand("date", "parse and format dates and times");
    date.require_subcommand(1);

    const auto parse = AddConversion(date, "parse",
        "parse each line and print it as 2018-02-03 04:05:06; an empty line is the current time; a line that is no "
        "date prints an empty line, is named on standard error, and makes the exit code 4",
        ParseLine);
    CLI::App& command = *date.get_subcommand("parse");
    command.add_flag("--machine", parse->machine,
        "parse digits, RFC 822 and ISO 8601 (both in UTC) and the system's forms instead of a locale's forms");
    command.add_option("--locale", parse->locale, "a locale identifier (LCID) other than the user's: 0x407 for German");
    for (const ParseFlag& flag : kParseFlags)
        command.add_flag_callback(
            flag.name, [parse, bit = flag.bit] { parse->flags |= bit; }, flag.description);

    AddConversion(date, "format",
        "print compact dates (20180203 or 20180203040506) in the forms of the user's locale; another line prints an "
        "empty line, is named on standard error, and makes the exit code 4",
        FormatLine);
}

} // namespace qxut
