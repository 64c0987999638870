#include "profile_commands.h"

#include "failure.h"
#include "profile_convert.h"
#include "profile_file.h"
#include "profile_show.h"
#include "profile_types.h"
#include "text.h"

#include <qxut23/profile.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qxut
{

namespace
{

using nlohmann::ordered_json;

// What the command line says. Each command uses some of it.
struct ProfileOptions
{
    std::string file;
    std::string list;
    std::string path;
    std::string value;
    std::string type; // empty: text
    std::string defaultValue;
    std::string output;
    std::string target;
    std::string targetList;
    bool hasDefault = false;
    bool isList = false;
    bool create = false;
    bool asJson = false;
};

std::string ValueOf(HPROFJOB job, HPROFLIST list, const std::string& path, std::int32_t length)
{
    std::vector<QXWCHAR> buffer(static_cast<std::size_t>(length) + 1);
    ProfGetStringW(job, list, WideText(path), buffer.data(), length + 1, nullptr);
    return Utf8(buffer.data());
}

void Show(const ProfileOptions& options)
{
    const ProfileFile profile(options.file, Sharing::Readers);
    const HPROFLIST list = profile.List(options.list);
    if (options.asJson)
        ShowAsJson(std::cout, profile.Job(), list);
    else
        ShowAsText(std::cout, profile.Job(), list);

    std::error_code ignored;
    if (CountEntries(profile.Job()) == 0 &&
        std::filesystem::file_size(std::filesystem::u8path(options.file), ignored) > 0)
        std::cerr << "qxut: note: " << options.file
                  << " has no entries; the first line of a profile is [/], a section in brackets, or that of its XML "
                     "form or of XFDF\n";
}

// The value, or nothing where there is none.
std::optional<ordered_json> ReadText(HPROFJOB job, HPROFLIST list, const ProfileOptions& options)
{
    const std::int32_t length = ProfGetStringLengthW(job, list, WideText(options.path));
    if (length < 0)
        return std::nullopt;
    return ValueOf(job, list, options.path, length);
}

std::optional<ordered_json> ReadTyped(HPROFJOB job, HPROFLIST list, const ProfileOptions& options)
{
    ordered_json value;
    const std::int32_t code = FindValueType(options.type)->get(job, list, WideText(options.path), value);
    if (code == PROF_ERR_NOT_THAT_TYPE)
        throw Failure(
            kNotFound, options.file + ": the value '" + Shown(options.path) + "' is not of the type " + options.type);
    return code == PROF_OK ? std::optional(value) : std::nullopt;
}

void Get(const ProfileOptions& options)
{
    const ProfileFile profile(options.file, Sharing::Readers);
    const HPROFLIST list = profile.List(options.list);
    const std::optional<ordered_json> value =
        (options.type.empty() ? ReadText : ReadTyped)(profile.Job(), list, options);
    if (!value && !options.hasDefault)
        throw Failure(kNotFound, options.file + ": there is no value '" + Shown(options.path) + "'");
    const ordered_json shown = value.value_or(options.defaultValue);
    if (options.asJson)
        std::cout << ordered_json{{"path", options.path}, {"value", shown}, {"found", value.has_value()}}.dump()
                  << '\n';
    else
        std::cout << ValueText(shown) << '\n';
}

// Says what a change did: in words to whoever looks on, as JSON to a program.
void Report(const ProfileOptions& options, std::size_t changed)
{
    if (options.asJson)
        std::cout << ordered_json{{"file", options.output.empty() ? options.file : options.output},
                         {"changed", changed}}
                         .dump()
                  << '\n';
}

// Opens the file, changes it, and saves it: in its place, with all who write to it kept out meanwhile, or to another.
void Edit(const ProfileOptions& options, const std::function<std::size_t(HPROFJOB, HPROFLIST)>& change)
{
    const auto edit = [&](const ProfileFile& profile)
    {
        const std::size_t changed = change(profile.Job(), profile.List(options.list));
        profile.Save(options.output);
        Report(options, changed);
    };
    if (options.create)
        edit(ProfileFile::OpenOrMake(options.file));
    else
        edit(ProfileFile(options.file, options.output.empty() ? Sharing::NobodyWhoWrites : Sharing::Readers));
}

// Before a file is opened or made. The invalid job takes any value, and does nothing with it.
void CheckValue(const ProfileOptions& options)
{
    if (options.type.empty())
        return;
    const ValueType& type = *FindValueType(options.type);
    if (!type.set(nullptr, nullptr, WideText(options.path), options.value))
        throw Failure(kWrongUsage, "'" + Shown(options.value) + "' is not of the type " + type.name + ": " + type.form);
}

void Set(const ProfileOptions& options)
{
    CheckValue(options);
    Edit(options,
        [&](HPROFJOB job, HPROFLIST list)
        {
            if (options.type.empty())
                ProfSetStringW(job, list, WideText(options.path), WideText(options.value));
            else
                FindValueType(options.type)->set(job, list, WideText(options.path), options.value);
            return std::size_t{1};
        });
}

void Append(const ProfileOptions& options)
{
    if (!options.isList)
        CheckValue(options);
    Edit(options,
        [&](HPROFJOB job, HPROFLIST list)
        {
            if (options.isList)
                ProfAppendListW(job, list, WideText(options.path));
            else if (!options.type.empty())
                FindValueType(options.type)->append(job, list, WideText(options.path), options.value);
            else
                ProfAppendStringW(job, list, WideText(options.path), WideText(options.value));
            return std::size_t{1};
        });
}

void Delete(const ProfileOptions& options)
{
    Edit(options,
        [&](HPROFJOB job, HPROFLIST list)
        {
            const std::size_t before = CountEntries(job);
            (options.isList ? ProfDeleteListW : ProfDeleteItemW)(job, list, WideText(options.path));
            const std::size_t removed = before - CountEntries(job);
            if (removed == 0)
                throw Failure(kNotFound, options.file + ": there is no " + (options.isList ? "list" : "value") + " '" +
                                             Shown(options.path) + "'");
            return removed;
        });
}

void Copy(const ProfileOptions& options)
{
    const ProfileFile source(options.file, Sharing::Readers);
    const HPROFLIST from = source.List(options.list);
    const ProfileFile target = ProfileFile::OpenOrMake(options.target);
    HPROFLIST to = nullptr;
    if (!options.targetList.empty())
    {
        const WideText path(options.targetList);
        to = ProfGetListW(target.Job(), nullptr, path);
        if (to == nullptr)
            to = ProfCreateListW(target.Job(), nullptr, path);
    }
    const std::size_t before = CountEntries(target.Job());
    if (ProfCopyList(target.Job(), to, source.Job(), from) != PROF_OK)
        throw Failure(kCannotWrite, options.target + ": there is not enough memory for the copy");
    target.Save("");
    ProfileOptions report = options;
    report.file = options.target;
    Report(report, CountEntries(target.Job()) - before);
}

class CommandMaker
{
public:
    CommandMaker(CLI::App& parent, const char* name, const char* description, void (*run)(const ProfileOptions&))
        : _options(std::make_shared<ProfileOptions>()),
          _command(*parent.add_subcommand(name, description))
    {
        _command.add_option("FILE", _options->file, "the profile or INI file")->required();
        _command.add_option("--list", _options->list, "the list to begin at, by its path; the root if it isn't given");
        _command.add_flag("--json", _options->asJson, "answer in JSON");
        _command.callback([options = _options, run] { run(*options); });
    }

    CommandMaker& Path(const char* description)
    {
        _command.add_option("--path", _options->path, description)->required();
        return *this;
    }
    CommandMaker& Value(bool isRequired)
    {
        _command.add_option("VALUE", _options->value, "the text of the value (behind -- if it begins with -)")
            ->required(isRequired);
        return *this;
    }
    CommandMaker& Type()
    {
        _command.add_option("--type", _options->type, "the type of the value; a text if it isn't given")
            ->check(CLI::IsMember(ValueTypeNames()));
        _command.footer(ValueTypeHelp());
        return *this;
    }
    CommandMaker& Default()
    {
        _command.add_option("--default", _options->defaultValue, "what to print if there is no such value")
            ->each([options = _options](const std::string&) { options->hasDefault = true; });
        return *this;
    }
    CommandMaker& Output()
    {
        _command.add_option("--output", _options->output, "save to this file and leave FILE as it is");
        return *this;
    }
    CommandMaker& Create()
    {
        _command.add_flag("--create", _options->create, "make the file if it is missing");
        return *this;
    }
    CommandMaker& IsList(const char* name, const char* description)
    {
        _command.add_flag(name, _options->isList, description);
        return *this;
    }
    CommandMaker& Target()
    {
        _command.add_option("TARGET", _options->target, "the profile to copy to; it is made if it is missing")
            ->required();
        _command.add_option(
            "--to", _options->targetList, "the list to copy to, by its path; it is made if it is missing");
        return *this;
    }

private:
    std::shared_ptr<ProfileOptions> _options;
    CLI::App& _command;
};

} // namespace

void AddProfileCommands(CLI::App& program)
{
    CLI::App& profile = *program.add_subcommand("profile", "read and change profiles and INI files");
    profile.require_subcommand(1);
    profile.footer(
        "A path is names of lists separated by /, and the name of the value behind them. Case counts.\n"
        "Saving keeps the form of the file, and whether it is packed, but turns an INI file into the text form of a\n"
        "profile; --output leaves the file as it is, and convert writes the other forms. XFDF holds values alone:\n"
        "its lists come back as names with dots.");

    CommandMaker(profile, "show", "print a profile, or one list of it, as a tree", Show);
    CommandMaker(profile, "get", "print one value", Get).Path("the path of the value").Type().Default();
    CommandMaker(profile, "set", "change a value, or add it where there is none", Set)
        .Path("the path of the value; missing lists are made")
        .Type()
        .Value(true)
        .Output()
        .Create();
    CommandMaker(profile, "append", "add a value, or a list, behind what is there", Append)
        .Path("the path of the value or list")
        .Type()
        .Value(false)
        .IsList("--new-list", "add a list for each name of the path, and no value")
        .Output()
        .Create();
    CommandMaker(profile, "delete", "remove all values, or all lists, of a path", Delete)
        .Path("the path of the values or lists")
        .IsList("--lists", "remove lists, and not values")
        .Output();
    CommandMaker(profile, "copy", "copy all entries of a profile, or of one list of it, behind those of another", Copy)
        .Target();
    AddConvertCommands(profile);
}

} // namespace qxut
