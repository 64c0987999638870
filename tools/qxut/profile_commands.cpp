#include "profile_commands.h"

#include "failure.h"
#include "profile_convert.h"
#include "profile_file.h"
#include "profile_show.h"
#include "profile_types.h"
#include "terminal.h"
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

// The options of the command line. Each command uses some of them.
struct ProfileOptions
{
    std::string file;
    std::string list;
    std::string path;
    std::string value;
    std::string type; // empty for text
    std::string defaultValue;
    std::string output;
    std::string target;
    std::string targetList;
    bool hasDefault = false;
    bool isList = false;
    bool create = false;
    bool force = false;
    bool asJson = false;
    MaxSize maxSize;
};

std::string ValueOf(HPROFJOB job, HPROFLIST list, const std::string& path, std::int32_t length)
{
    std::vector<QXWCHAR> buffer(static_cast<std::size_t>(length) + 1);
    ProfGetStringW(job, list, WideText(path), buffer.data(), length + 1, nullptr);
    return Utf8(buffer.data());
}

void Show(const ProfileOptions& options)
{
    const ProfileFile profile(options.file, Sharing::Readers, options.maxSize);
    const HPROFLIST list = profile.List(options.list);
    if (options.asJson)
        ShowAsJson(std::cout, profile.Job(), list);
    else
        ShowAsText(std::cout, profile.Job(), list);

    std::error_code ignored;
    if (CountEntries(profile.Job()) == 0 &&
        std::filesystem::file_size(std::filesystem::u8path(options.file), ignored) > 0)
        std::cerr
            << "qxut: note: " << Shown(options.file)
            << " has no entries; the first line of a profile must be [/], a section in brackets, or the first line "
               "of the XML form or of XFDF\n";
}

// Returns the value, or nothing if it doesn't exist.
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
    const ProfileFile profile(options.file, Sharing::Readers, options.maxSize);
    const HPROFLIST list = profile.List(options.list);
    const std::optional<ordered_json> value =
        (options.type.empty() ? ReadText : ReadTyped)(profile.Job(), list, options);
    if (!value && !options.hasDefault)
        throw Failure(kNotFound, options.file + ": no value '" + Shown(options.path) + "'");
    const ordered_json shown = value.value_or(options.defaultValue);
    if (options.asJson)
        std::cout << JsonText({{"path", options.path}, {"value", shown}, {"found", value.has_value()}}) << '\n';
    else // programs get the value unchanged
        std::cout << (OutputGoesToTerminal() ? Shown(ValueText(shown)) : ValueText(shown)) << '\n';
}

// Prints the result of a change if the user requested JSON.
void Report(const ProfileOptions& options, std::size_t changed)
{
    if (options.asJson)
        std::cout << JsonText({{"file", options.output.empty() ? options.file : options.output}, {"changed", changed}})
                  << '\n';
}

// Opens the file, changes it and saves it. Without --output, or if that is the same file, the file is saved in place:
// other processes can't write it in the meantime. Without --force, a file is refused if saving it would lose data.
void Edit(const ProfileOptions& options, const std::function<std::size_t(HPROFJOB, HPROFLIST)>& change)
{
    const bool isInPlace = options.output.empty() || IsSameFile(options.file, options.output);
    if (!isInPlace && !options.force)
        ExpectReplaceable(options.output, options.maxSize);
    const auto edit = [&](const ProfileFile& profile)
    {
        if (isInPlace && !options.force)
            profile.ExpectNoLoss("write the result to another file with --output, or change it with --force");
        const std::size_t changed = change(profile.Job(), profile.List(options.list));
        profile.Save(isInPlace ? "" : options.output);
        Report(options, changed);
    };
    if (options.create)
        edit(ProfileFile::OpenOrMake(options.file, options.maxSize));
    else
        edit(ProfileFile(options.file, isInPlace ? Sharing::NobodyWhoWrites : Sharing::Readers, options.maxSize));
}

// Checks the value before any file is opened or created. A setter that is called for an invalid job only checks the
// value.
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
                throw Failure(kNotFound,
                    options.file + ": no " + (options.isList ? "list" : "value") + " '" + Shown(options.path) + "'");
            return removed;
        });
}

void Copy(const ProfileOptions& options)
{
    const ProfileFile source(options.file, Sharing::Readers, options.maxSize);
    const HPROFLIST from = source.List(options.list);
    const ProfileFile target = ProfileFile::OpenOrMake(options.target, options.maxSize);
    if (!options.force)
        target.ExpectNoLoss("change it with --force");
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
        throw Failure(kCannotWrite, options.target + ": not enough memory for the copy");
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
        _command.add_option("--list", _options->list, "the path of the list to start from; the root if omitted");
        _command.add_flag("--json", _options->asJson, "print JSON");
        AddMaxSize(_command, _options->maxSize);
        _command.callback([options = _options, run] { run(*options); });
    }

    CommandMaker& Path(const char* description)
    {
        _command.add_option("--path", _options->path, description)->required();
        return *this;
    }
    CommandMaker& Value(bool isRequired)
    {
        _command.add_option("VALUE", _options->value, "the text of the value (after -- if it begins with -)")
            ->required(isRequired);
        return *this;
    }
    CommandMaker& Type()
    {
        _command.add_option("--type", _options->type, "the type of the value; text if omitted")
            ->check(CLI::IsMember(ValueTypeNames()));
        _command.footer(ValueTypeHelp());
        return *this;
    }
    CommandMaker& Default()
    {
        _command.add_option("--default", _options->defaultValue, "printed if the value doesn't exist")
            ->each([options = _options](const std::string&) { options->hasDefault = true; });
        return *this;
    }
    CommandMaker& Output()
    {
        _command.add_option("--output", _options->output, "save to this file and leave FILE unchanged");
        return *this;
    }
    CommandMaker& Force()
    {
        _command.add_flag("--force", _options->force,
            "change the file even if comments or other text in it are lost by that, or replace one that is no profile");
        return *this;
    }
    CommandMaker& Create()
    {
        _command.add_flag("--create", _options->create, "create the file if it doesn't exist");
        return *this;
    }
    CommandMaker& IsList(const char* name, const char* description)
    {
        _command.add_flag(name, _options->isList, description);
        return *this;
    }
    CommandMaker& Target()
    {
        _command.add_option("TARGET", _options->target, "the profile to copy to, created if necessary")->required();
        _command.add_option("--to", _options->targetList, "the path of the list to copy to, created if necessary");
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
        "A path consists of list names and the name of the value, separated by /. Names are case-sensitive.\n"
        "Saving preserves the form of the file, including packing. A file is changed in place only if nothing in it\n"
        "is lost by that: an INI file becomes a profile in the text form, and comments aren't kept. --output writes\n"
        "the result to another file, --force changes the file nevertheless; convert writes the other forms. XFDF\n"
        "contains only values: its lists are read back as dotted names.");

    CommandMaker(profile, "show", "print a profile, or one list of it, as a tree", Show);
    CommandMaker(profile, "get", "print one value", Get).Path("the path of the value").Type().Default();
    CommandMaker(profile, "set", "change a value, or add it if it doesn't exist", Set)
        .Path("the path of the value; missing lists are created")
        .Type()
        .Value(true)
        .Output()
        .Force()
        .Create();
    CommandMaker(profile, "append", "add a value or a list after the existing entries", Append)
        .Path("the path of the value or list")
        .Type()
        .Value(false)
        .IsList("--new-list", "add a list for each name of the path instead of a value")
        .Output()
        .Force()
        .Create();
    CommandMaker(profile, "delete", "remove all values or lists with a path", Delete)
        .Path("the path of the values or lists")
        .IsList("--lists", "remove lists instead of values")
        .Output()
        .Force();
    CommandMaker(profile, "copy", "append all entries of a profile, or of one of its lists, to another profile", Copy)
        .Target()
        .Force();
    AddConvertCommands(profile);
}

} // namespace qxut
