#include "profile_convert.h"

#include "failure.h"
#include "pass_phrase.h"
#include "profile_file.h"
#include "text.h"

#include <qxut23/profile.h>
#include <qxut23/profile_files.h>

#include <nlohmann/json.hpp>

#include <cstdint>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qxut
{

namespace
{

struct ConvertOptions
{
    std::string file;
    std::string target;
    std::vector<std::string> patterns;
    std::string list;
    KeyOptions key;
    std::int32_t form = PROF_FORM_TEXT;
    bool create = false;
    bool pack = false;
    bool force = false;
    bool asJson = false;
    MaxSize maxSize;
};

const std::map<std::string, std::int32_t> kForms{
    {"text", PROF_FORM_TEXT}, {"xml", PROF_FORM_XML}, {"xfdf", PROF_FORM_XFDF}};

void Report(const ConvertOptions& options, const std::string& path, const char* what, std::size_t count)
{
    if (options.asJson)
        std::cout << JsonText({{"file", path}, {what, count}}) << '\n';
}

void Convert(const ConvertOptions& options)
{
    const ProfileFile profile(options.file, Sharing::Readers, options.maxSize);
    if (!options.force)
        profile.ExpectProfile("write an empty profile with --force");
    if (!options.force && IsSameFile(options.file, options.target))
        profile.ExpectNoLoss("write to another file, or change it with --force");
    else if (!options.force)
        ExpectReplaceable(options.target, options.maxSize);
    profile.Save(options.target, options.pack ? options.form | PROF_SAVE_PACKED : options.form);
    Report(options, options.target, "entries", CountEntries(profile.Job()));
}

std::size_t CountFiles(HPROFJOB job, HPROFLIST list)
{
    std::size_t count = 0;
    ProfEnumA(
        job, list,
        [](HPROFJOB, const char* name, const char*, HPROFLIST child, void* context) -> std::int32_t
        {
            *static_cast<std::size_t*>(context) += child != nullptr && std::string(name) == "File.Entry";
            return 1;
        },
        &count);
    return count;
}

// Returns the number of embedded files. The library's result also counts empty and unreadable files, which get no
// entry.
std::size_t EmbedPattern(HPROFJOB job, HPROFLIST list, const std::string& pattern, const PassPhrase& key)
{
    const std::size_t before = CountFiles(job, list);
    const std::int32_t found = ProfAppendFilesW(job, list, WideText(pattern), key);
    if (found < 0)
        throw Failure(kCannotRead, Shown(pattern) + ": not enough memory");
    if (found == 0)
        throw Failure(kNotFound, Shown(pattern) + ": no such file");
    const std::size_t embedded = CountFiles(job, list) - before;
    const std::size_t left = static_cast<std::size_t>(found) - embedded;
    if (left != 0)
        throw Failure(kCannotRead, Shown(pattern) + ": " + std::to_string(left) + " of " + std::to_string(found) +
                                       (found == 1 ? " file" : " files") +
                                       " cannot be embedded: empty, unreadable, 4 GB or more, or no ordinary file");
    return embedded;
}

void Embed(const ConvertOptions& options)
{
    const PassPhrase key(options.key, PassPhrase::Purpose::Encrypt);
    const auto embed = [&](const ProfileFile& profile)
    {
        if (profile.Form() == PROF_FORM_XFDF)
            throw Failure(kWrongUsage, options.file + ": XFDF cannot contain files; convert it to another form first");
        if (!options.force)
            profile.ExpectNoLoss("change it with --force");
        std::size_t count = 0;
        for (const std::string& pattern : options.patterns)
            count += EmbedPattern(profile.Job(), profile.List(options.list), pattern, key);
        profile.Save("");
        Report(options, options.file, "files", count);
    };
    if (options.create)
        embed(ProfileFile::OpenOrMake(options.file, options.maxSize));
    else
        embed(ProfileFile(options.file, Sharing::NobodyWhoWrites, options.maxSize));
}

// What prevented files from being extracted.
struct Problems
{
    std::string profile;
    std::vector<std::string> messages;
    bool isMalformed = false;
};

void OnProblem(void* context, const QXWCHAR* name, std::int32_t reason, const QXWCHAR* description)
{
    auto& problems = *static_cast<Problems*>(context);
    const std::string file = reason == QXUT_FILE_NO_NAME ? "an entry" : Utf8(name);
    const char* const separator = reason == QXUT_FILE_NO_NAME ? " " : ": ";
    problems.messages.push_back(problems.profile + ": " + file + separator + Utf8(description));
    problems.isMalformed |= reason != QXUT_FILE_CANNOT_WRITE;
}

void Extract(const ConvertOptions& options)
{
    const PassPhrase key(options.key, PassPhrase::Purpose::Decrypt);
    const ProfileFile profile(options.file, Sharing::Readers, options.maxSize);
    const HPROFLIST list = profile.List(options.list);
    const std::size_t files = CountFiles(profile.Job(), list);
    if (files == 0)
        throw Failure(kNotFound, options.file + ": contains no files");
    Problems problems{options.file, {}, false};
    const std::int32_t written =
        QxProfExtractFiles(profile.Job(), list, WideText(options.target), key, OnProblem, &problems);
    if (written == PROF_ERR_STOPPED)
        throw Failure(kCannotWrite, options.target + ": not enough memory");
    if (written < 0)
        throw Failure(kCannotWrite, options.target + ": cannot create the folder");
    if (!problems.messages.empty())
    {
        problems.messages.push_back(options.target + ": " + std::to_string(problems.messages.size()) + " of " +
                                    std::to_string(files) + " files were not extracted");
        throw Failure(problems.isMalformed ? kMalformed : kCannotWrite, problems.messages);
    }
    Report(options, options.target, "files", files);
}

CLI::App& AddCommand(CLI::App& parent, const char* name, const char* description, void (*run)(const ConvertOptions&),
    const std::shared_ptr<ConvertOptions>& options)
{
    CLI::App& command = *parent.add_subcommand(name, description);
    command.add_flag("--json", options->asJson, "print JSON");
    AddMaxSize(command, options->maxSize);
    command.callback([options, run] { run(*options); });
    return command;
}

void AddListAndKey(CLI::App& command, ConvertOptions& options)
{
    command.add_option("--list", options.list, "the path of the list with the files; the root if omitted");
    AddKeyOptions(command, options.key, "the pass phrase of the files; without one they are not encrypted");
}

} // namespace

void AddMaxSize(CLI::App& command, MaxSize& maxSize)
{
    command
        .add_option("--max-size", maxSize,
            "the memory into which a packed file may unpack, such as 500MB; 0 for any; 64 times its size, or 64 MB, if "
            "omitted")
        ->transform(CLI::AsSizeValue(false));
}

void AddConvertCommands(CLI::App& profile)
{
    auto options = std::make_shared<ConvertOptions>();
    CLI::App& convert = AddCommand(profile, "convert", "convert a profile to another form", Convert, options);
    convert.add_option("FROM", options->file, "the profile, in any form, or an INI file")->required();
    convert.add_option("TO", options->target, "the file to write")->required();
    convert.add_option("--form", options->form, "text, xml, or xfdf (only the values, as fields of a PDF form)")
        ->required()
        ->transform(CLI::CheckedTransformer(kForms).description(""))
        ->type_name("TEXT");
    convert.add_flag("--pack", options->pack, "compress the file");
    convert.add_flag("--force", options->force,
        "write TO even if FROM or TO is no profile, or if they are the same file and comments or other text in it are "
        "lost");

    options = std::make_shared<ConvertOptions>();
    CLI::App& embed = AddCommand(profile, "embed", "embed files in a profile", Embed, options);
    embed.add_option("FILE", options->file, "the profile")->required();
    embed.add_option("PATTERN", options->patterns, "the files to embed; names may contain * and ?")->required();
    AddListAndKey(embed, *options);
    embed.add_flag("--create", options->create, "create the profile if it doesn't exist");
    embed.add_flag(
        "--force", options->force, "change the profile even if comments or other text in it are lost by that");

    options = std::make_shared<ConvertOptions>();
    CLI::App& extract = AddCommand(profile, "extract", "extract the files of a profile to a folder", Extract, options);
    extract.add_option("FILE", options->file, "the profile")->required();
    extract.add_option("FOLDER", options->target, "the target folder, created if necessary")->required();
    AddListAndKey(extract, *options);
}

} // namespace qxut
