#include "zip_commands.h"

#include "failure.h"
#include "interruption.h"
#include "new_archive.h"
#include "processes.h"
#include "progress_bar.h"
#include "text.h"
#include "zip_directory.h"

#include <qxut23/archives.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace qxut
{

namespace
{

namespace fs = std::filesystem;
using nlohmann::ordered_json;

// The options of the command line. Each command uses some of them.
struct ZipOptions
{
    std::string archive;
    std::vector<std::string> paths;
    std::string folder;
    std::string comment;
    bool noLinks = false;
    bool asJson = false;
};

std::string Count(std::size_t count, const char* one, const char* many)
{
    return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

// ---- create

enum class SourceKind
{
    File,
    Link,
    Folder // without contents
};

struct Source
{
    fs::path path;
    std::string name; // in the archive
    std::uint64_t size = 0;
    SourceKind kind = SourceKind::File;
    bool staysInside = false; // a link whose target is inside the folder on the command line
};

// The files to store, and the files that can't be stored, each with the reason.
struct Sources
{
    std::vector<Source> files;
    std::vector<std::string> leftOut;
};

// Returns the name in the archive: a relative path below the current folder unchanged, otherwise the last component of
// the path.
fs::path NameOf(const fs::path& path)
{
    const fs::path normal = path.lexically_normal();
    if (!normal.has_root_path() && *normal.begin() != "..")
        return normal.has_filename() ? normal : normal.parent_path();
    return normal.has_filename() ? normal.filename() : normal.parent_path().filename();
}

// Names in archives are Unicode. A file whose name is not UTF-8 is left out.
void Add(Sources& sources, Source source)
{
    const std::string path = Utf8Path(source.path);
    if (IsUtf8(path))
        sources.files.push_back(std::move(source));
    else
        sources.leftOut.push_back(path + ": its name is not UTF-8, and it is not in the archive");
}

void AddSource(Sources& sources, const fs::path& path, const fs::path& name)
{
    Add(sources, {path, Utf8Path(name), fs::file_size(path)});
}

// `relative` is the path of the link in the folder.
void AddLink(Sources& sources, const fs::path& path, const fs::path& relative, const fs::path& name)
{
    std::error_code error;
    const fs::path target = fs::read_symlink(path, error);
    const fs::path end = (relative.parent_path() / target).lexically_normal();
    const bool staysInside = !error && target.is_relative() && !end.empty() && *end.begin() != "..";
    Add(sources, {path, Utf8Path(name), 0, SourceKind::Link, staysInside});
}

// Rejects the archive itself as a source, and duplicate names: readers would see only one of the entries.
void CheckSources(const std::vector<Source>& sources, const fs::path& archive)
{
    std::set<std::string> names;
    for (const Source& source : sources)
    {
        std::error_code error;
        if (fs::equivalent(source.path, archive, error))
            throw Failure(kCannotRead, Utf8Path(source.path) + ": is the archive itself");
        if (!names.insert(source.name).second)
            throw Failure(kCannotRead,
                Utf8Path(source.path) + ": another file has the same name " + source.name + " in the archive");
    }
}

// Folders have entries only if nothing is stored below them: other programs create the folders of files anyway.
void AddEmptyFolders(Sources& sources, std::vector<fs::path> folders, const fs::path& top, std::size_t firstSource)
{
    std::set<fs::path> parents;
    for (std::size_t i = firstSource; i < sources.files.size(); ++i)
        parents.insert(sources.files[i].path.parent_path());
    std::sort(folders.rbegin(), folders.rend()); // subfolders before their parents
    for (const fs::path& folder : folders)
    {
        const fs::path name = (NameOf(top) / folder.lexically_relative(top)).lexically_normal();
        const fs::path stored = name.has_filename() ? name : name.parent_path();
        if (!parents.contains(folder) && stored != ".")
            Add(sources, {folder, Utf8Path(stored), 0, SourceKind::Folder});
        parents.insert(folder.parent_path());
    }
}

// Adds the contents of a folder sorted by path, so that the same folder produces the same archive.
void AddFolder(Sources& sources, const fs::path& path, const ZipOptions& options)
{
    const fs::path folder = path.has_filename() ? path : path.parent_path(); // without a trailing separator
    const std::size_t firstSource = sources.files.size();
    const fs::path name = NameOf(folder);
    std::vector<fs::path> folders{folder};
    for (const auto& entry : fs::recursive_directory_iterator(folder))
    {
        const fs::path& file = entry.path();
        const fs::path relative = file.lexically_relative(folder);
        const fs::path stored = (name / relative).lexically_normal();
        if (entry.is_symlink())
        {
            if (!options.noLinks)
                AddLink(sources, file, relative, stored);
        }
        else if (entry.is_directory())
            folders.push_back(file);
        else if (!entry.is_regular_file())
            sources.leftOut.push_back(Utf8Path(file) + ": is a pipe or a device, and is not in the archive");
        else if (!IsPartOf(file, options.archive))
            AddSource(sources, file, stored);
    }
    AddEmptyFolders(sources, std::move(folders), folder, firstSource);
    std::sort(sources.files.begin() + static_cast<std::ptrdiff_t>(firstSource), sources.files.end(),
        [](const Source& a, const Source& b) { return a.path < b.path; });
}

Sources FindSources(const ZipOptions& options)
{
    Sources sources;
    for (const std::string& text : options.paths)
    {
        const fs::path path = fs::u8path(text);
        std::error_code error;
        if (fs::is_directory(path, error))
            AddFolder(sources, path, options);
        else if (fs::is_regular_file(path, error))
            AddSource(sources, path, NameOf(path));
        else
            throw Failure(kCannotRead, text + (fs::exists(path, error) ? ": is not a file" : ": no such file"));
    }
    return sources;
}

// Throws a Failure with all the messages, if there are any.
void FailIfAny(int code, const std::vector<std::string>& messages)
{
    if (!messages.empty())
        throw Failure(code, messages);
}

// Stores a file or link. A link that leads to a folder outside the archive, or nowhere, can't be stored and is added to
// `leftOut`. Throws for a file that can't be read.
void Append(NewArchive& archive, const Source& source, std::vector<std::string>& leftOut)
{
    std::error_code error;
    const bool isFile = fs::is_regular_file(source.path, error);
    try
    {
        archive.Append(Utf8Path(source.path), source.name,
            QXUT_ZIP_MODES | (source.staysInside ? QXUT_ZIP_LINKS : 0) |
                (source.kind == SourceKind::Folder ? QXUT_ZIP_FOLDER : 0));
    }
    catch (const Failure&)
    {
        if (source.kind != SourceKind::Link || isFile)
            throw;
        leftOut.push_back(
            Utf8Path(source.path) + ": is a link that leads to no file in the archive, and is not in the archive");
    }
}

// Writes the archive. If that fails, the unfinished archive is removed before the signals are restored.
void Write(NewArchive& archive, const ZipOptions& options, const Sources& sources, std::uint64_t total,
    std::vector<std::string>& leftOut)
{
    const Interruption interruption([&] { archive.Abandon(); });
    try
    {
        ProgressBar bar(total);
        std::uint64_t done = 0;
        archive.Create(options.comment);
        for (const Source& source : sources.files)
        {
            bar.Set(done, source.name);
            Append(archive, source, leftOut);
            done += source.size;
        }
        bar.Set(total, options.archive);
        archive.Close();
    }
    catch (...)
    {
        archive.Discard();
        throw;
    }
}

void Create(const ZipOptions& options)
{
    const Sources sources = FindSources(options);
    CheckSources(sources.files, fs::u8path(options.archive));
    std::vector<std::string> leftOut = sources.leftOut;
    std::uint64_t total = 0;
    std::size_t count = 0;
    for (const Source& source : sources.files)
    {
        total += source.size;
        count += source.kind != SourceKind::Folder;
    }
    NewArchive archive(options.archive);
    Write(archive, options, sources, total, leftOut);
    FailIfAny(kCannotRead, leftOut);
    const auto size = static_cast<std::uint64_t>(fs::file_size(fs::u8path(options.archive)));
    if (options.asJson)
        std::cout << JsonText({{"archive", options.archive}, {"files", count}, {"bytes", total}, {"size", size}})
                  << '\n';
    else
        std::cout << Shown(options.archive) << ": " << Count(count, "file", "files") << ", " << total
                  << " bytes packed into " << size << '\n';
}

// ---- list

const char* MethodName(unsigned method)
{
    switch (method)
    {
    case 0:
        return "stored";
    case 8:
        return "deflate";
    case 9:
        return "deflate64";
    case 12:
        return "bzip2";
    case 14:
        return "lzma";
    case 93:
        return "zstd";
    case 95:
        return "xz";
    case 99:
        return "aes";
    default:
        return "other";
    }
}

void ListAsJson(const std::vector<ZipEntry>& entries)
{
    ordered_json list = ordered_json::array();
    for (const ZipEntry& entry : entries)
        list.push_back({{"name", Utf8(WideText(entry.name))}, {"size", entry.size}, {"packed", entry.packed},
            {"method", MethodName(entry.method)}, {"modified", entry.modified}, {"folder", entry.isFolder},
            {"encrypted", entry.isEncrypted}});
    std::cout << JsonText(list) << '\n';
}

void ListAsText(const std::vector<ZipEntry>& entries)
{
    std::uint64_t total = 0;
    std::size_t files = 0;
    for (const ZipEntry& entry : entries)
    {
        char columns[96];
        std::snprintf(columns, sizeof columns, "%12llu  %-9s  %s  ", static_cast<unsigned long long>(entry.size),
            entry.isFolder ? "folder" : MethodName(entry.method), entry.modified.c_str());
        std::cout << columns << Shown(entry.name) << (entry.isEncrypted ? "  (encrypted)" : "") << '\n';
        total += entry.size;
        files += !entry.isFolder;
    }
    std::cout << Count(files, "file", "files") << ", " << total << " bytes\n";
}

void List(const ZipOptions& options)
{
    const std::vector<ZipEntry> entries = ReadZipDirectory(options.archive);
    if (options.asJson)
        ListAsJson(entries);
    else
        ListAsText(entries);
}

// ---- extract

// The state shared by the library's callbacks during an extraction.
struct Work
{
    ProgressBar& bar;
    const Interruption& interruption;
    std::string archive;
    std::vector<std::string> problems;
};

void OnProblem(void* context, const QXWCHAR*, const QXWCHAR* reason)
{
    auto& work = *static_cast<Work*>(context);
    work.problems.push_back(work.archive + ": " + Utf8(reason));
}

std::int32_t OnProgress(void* context, const QXWCHAR* name, std::uint64_t done)
{
    const auto& work = *static_cast<Work*>(context);
    if (work.bar.IsShown())
        work.bar.Set(done, Utf8(name));
    return work.interruption.ExitCode() == 0 ? 1 : 0;
}

// Returns after the progress bar has been cleared and the signals have been restored.
void ExtractAll(const ZipOptions& options, std::uint64_t total)
{
    const Interruption interruption;
    ProgressBar bar(total);
    Work work{bar, interruption, options.archive, {}};
    const std::int32_t result =
        QxExtractZip(WideText(LibraryPath(options.archive)), WideText(LibraryPath(options.folder)),
            options.noLinks ? QXUT_EXTRACT_NO_LINKS : 0, OnProblem, OnProgress, &work);
    if (const int code = interruption.ExitCode(); code != 0)
        throw Failure(code, options.archive + ": interrupted");
    if (result == QXUT_EXTRACT_OK)
        return;
    FailIfAny(result == QXUT_EXTRACT_CANNOT_OPEN    ? kCannotRead
              : result == QXUT_EXTRACT_CANNOT_WRITE ? kCannotWrite
                                                    : kMalformed,
        work.problems);
    throw Failure(kCannotRead, options.archive + ": " + LibraryErrorText("cannot extract the archive"));
}

void Extract(const ZipOptions& options)
{
    const std::vector<ZipEntry> entries = ReadZipDirectory(options.archive);
    std::uint64_t total = 0;
    std::size_t files = 0;
    for (const ZipEntry& entry : entries)
    {
        total += entry.size;
        files += !entry.isFolder;
    }
    ExtractAll(options, total);
    if (options.asJson)
        std::cout << JsonText(
                         {{"archive", options.archive}, {"folder", options.folder}, {"files", files}, {"bytes", total}})
                  << '\n';
    else
        std::cout << Shown(options.folder) << ": " << Count(files, "file", "files") << ", " << total << " bytes\n";
}

CLI::App& AddCommand(CLI::App& parent, const char* name, const char* description,
    const std::shared_ptr<ZipOptions>& options, void (*run)(const ZipOptions&))
{
    CLI::App& command = *parent.add_subcommand(name, description);
    command.add_option("ARCHIVE", options->archive, "the ZIP archive")->required();
    command.add_flag("--json", options->asJson, "print JSON");
    command.callback([options, run] { run(*options); });
    return command;
}

} // namespace

void AddZipCommands(CLI::App& program)
{
    CLI::App& zip = *program.add_subcommand("zip", "create, list and extract ZIP archives");
    zip.require_subcommand(1);
    zip.footer("If the standard error stream is a terminal, it shows a progress bar.");
    const auto options = std::make_shared<ZipOptions>();

    CLI::App& create =
        AddCommand(zip, "create", "create an archive from files and folders with all their files", options, Create);
    create.add_option("PATH", options->paths, "the files and folders")->required();
    create.add_option("--comment", options->comment, "the comment of the archive");
    create.add_flag("--no-links", options->noLinks, "leave links out");
    create.footer(
        "On linux permissions are stored, and so are links that stay inside the archive; other links are stored\n"
        "as the files they lead to. If something can't be stored, it is named and the exit code is 3.");

    AddCommand(zip, "list", "list the entries of an archive", options, List);

    CLI::App& extract = AddCommand(zip, "extract", "extract all entries of an archive into a folder", options, Extract);
    extract
        .add_option("FOLDER", options->folder, "the target folder, created if necessary; existing files are replaced")
        ->required();
    extract.add_flag("--no-links", options->noLinks, "leave links out");
    extract.footer(
        "Entries that can't be extracted are named, and the exit code is 4: encrypted or damaged ones, names that\n"
        "lead out of the folder or pass through a link, and links that lead out. All others are extracted.");
}

} // namespace qxut
