#include "zip_commands.h"

#include "failure.h"
#include "progress_bar.h"
#include "text.h"
#include "zip_directory.h"

#include <qxut23/zip.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <future>
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

// What the command line says. Each command uses some of it.
struct ZipOptions
{
    std::string archive;
    std::vector<std::string> paths;
    std::string folder;
    std::string comment;
    bool asJson = false;
};

std::string Utf8Path(const fs::path& path)
{
    const auto text = path.generic_u8string();
    return {text.begin(), text.end()};
}

std::string Count(std::size_t count, const char* one, const char* many)
{
    return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

// ---- create

struct Source
{
    fs::path path;
    std::string name; // in the archive
    std::uint64_t size = 0;
};

// A relative path that stays below the current folder is its own name; of any other the last part is.
fs::path NameOf(const fs::path& path)
{
    const fs::path normal = path.lexically_normal();
    if (!normal.has_root_path() && *normal.begin() != "..")
        return normal.has_filename() ? normal : normal.parent_path();
    return normal.has_filename() ? normal.filename() : normal.parent_path().filename();
}

void AddSource(std::vector<Source>& sources, const fs::path& path, const fs::path& name)
{
    sources.push_back({path, Utf8Path(name), fs::file_size(path)});
}

// An archive isn't packed into itself, and of two entries with one name a reader would see only one.
void CheckSources(const std::vector<Source>& sources, const fs::path& archive)
{
    std::set<std::string> names;
    for (const Source& source : sources)
    {
        std::error_code error;
        if (fs::equivalent(source.path, archive, error))
            throw Failure(kCannotRead, Utf8Path(source.path) + ": it is the archive itself");
        if (!names.insert(source.name).second)
            throw Failure(kCannotRead, Utf8Path(source.path) + ": the name " + source.name + " is given twice");
    }
}

// The files of a folder in the order of their names, so that the same folder makes the same archive.
void AddFolder(std::vector<Source>& sources, const fs::path& folder)
{
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    const fs::path name = NameOf(folder);
    for (const fs::path& file : files)
        AddSource(sources, file, (name / file.lexically_relative(folder)).lexically_normal());
}

std::vector<Source> Sources(const std::vector<std::string>& paths)
{
    std::vector<Source> sources;
    for (const std::string& text : paths)
    {
        const fs::path path = fs::u8path(text);
        std::error_code error;
        if (fs::is_directory(path, error))
            AddFolder(sources, path);
        else if (fs::is_regular_file(path, error))
            AddSource(sources, path, NameOf(path));
        else
            throw Failure(
                kCannotRead, text + (fs::exists(path, error) ? ": it is no file" : ": there is no such file"));
    }
    return sources;
}

// Written under a name beside the archive's, which it takes when all of it is there: until then a former archive of
// that name stays what it was.
class NewArchive
{
public:
    NewArchive(const std::string& path, const std::string& comment)
        : _path(path),
          _partPath(path + ".part"),
          _zip(IsFree(_partPath) ? UtilZIPCreate(WideText(_partPath), WideText(comment)) : nullptr)
    {
        if (_zip == nullptr)
            throw Failure(kCannotWrite, path + ": the archive can't be made");
    }
    ~NewArchive()
    {
        if (_isWhole)
            return;
        UtilZIPClose(_zip);
        std::error_code ignored;
        fs::remove(fs::u8path(_partPath), ignored);
    }
    NewArchive(const NewArchive&) = delete;
    NewArchive& operator=(const NewArchive&) = delete;

    void Append(const Source& source)
    {
        const std::string path = Utf8Path(source.path);
        const std::int32_t result = UtilZIPAppend(_zip, WideText(path), nullptr, WideText(source.name));
        if (result == QXUT_ZIP_CANNOT_OPEN)
            throw Failure(kCannotRead, path + ": it can't be opened");
        if (result != QXUT_ZIP_OK)
            throw Failure(kCannotRead, path + ": it can't be stored");
    }

    void Close()
    {
        const std::int32_t result = UtilZIPClose(std::exchange(_zip, nullptr));
        std::error_code error;
        if (result == QXUT_ZIP_OK)
            fs::rename(fs::u8path(_partPath), fs::u8path(_path), error);
        _isWhole = result == QXUT_ZIP_OK && !error;
        if (!_isWhole)
            throw Failure(kCannotWrite, _path + ": the archive can't be written, or has too much in it");
    }

private:
    static bool IsFree(const std::string& path)
    {
        std::error_code error;
        if (!fs::exists(fs::symlink_status(fs::u8path(path), error)))
            return true;
        throw Failure(kCannotWrite, path + ": the archive is written under this name first, but there is such a file");
    }

    std::string _path;
    std::string _partPath;
    HZIPFILE _zip;
    bool _isWhole = false;
};

void Create(const ZipOptions& options)
{
    const std::vector<Source> sources = Sources(options.paths);
    CheckSources(sources, fs::u8path(options.archive));
    std::uint64_t total = 0;
    for (const Source& source : sources)
        total += source.size;
    NewArchive archive(options.archive, options.comment);
    {
        ProgressBar bar(total);
        std::uint64_t done = 0;
        for (const Source& source : sources)
        {
            bar.Set(done, source.name);
            archive.Append(source);
            done += source.size;
        }
        bar.Set(total, options.archive);
        archive.Close();
    }
    const auto size = static_cast<std::uint64_t>(fs::file_size(fs::u8path(options.archive)));
    if (options.asJson)
        std::cout << ordered_json{{"archive", options.archive}, {"files", sources.size()}, {"bytes", total},
                         {"size", size}}
                         .dump()
                  << '\n';
    else
        std::cout << options.archive << ": " << Count(sources.size(), "file", "files") << ", " << total
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
    std::cout << list.dump() << '\n';
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

// How far the library has come, told by the files that are there: it extracts them in the archive's order.
class ExtractionProgress
{
public:
    ExtractionProgress(const std::vector<ZipEntry>& entries, const std::string& folder)
        : _entries(entries),
          _folder(fs::u8path(folder))
    {
    }

    std::uint64_t Total() const
    {
        std::uint64_t total = 0;
        for (const ZipEntry& entry : _entries)
            total += entry.size;
        return total;
    }

    void Show(ProgressBar& bar)
    {
        while (_present + 1 < _entries.size() && IsThere(_entries[_present + 1]))
            _done += _entries[_present++].size;
        if (_present < _entries.size())
            bar.Set(_done + SizeOf(_entries[_present]), _entries[_present].name);
    }

private:
    fs::path PathOf(const ZipEntry& entry) const { return _folder / fs::u8path(entry.name); }
    bool IsThere(const ZipEntry& entry) const
    {
        std::error_code error;
        return fs::exists(PathOf(entry), error);
    }
    std::uint64_t SizeOf(const ZipEntry& entry) const
    {
        std::error_code error;
        const auto size = fs::file_size(PathOf(entry), error);
        return error ? 0 : size;
    }

    const std::vector<ZipEntry>& _entries;
    fs::path _folder;
    std::size_t _present = 0;
    std::uint64_t _done = 0; // before the present one
};

void ExtractAll(const ZipOptions& options, const std::vector<ZipEntry>& entries)
{
    const auto extract = [&]
    {
        UtilExtractZip(WideText(options.archive), WideText(options.folder));
    };
    ExtractionProgress progress(entries, options.folder);
    ProgressBar bar(progress.Total());
    if (!bar.IsShown())
    {
        extract();
        return;
    }
    auto work = std::async(std::launch::async, extract);
    while (work.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready)
        progress.Show(bar);
    bar.Set(progress.Total(), options.archive);
    work.get();
}

void Extract(const ZipOptions& options)
{
    const std::vector<ZipEntry> entries = ReadZipDirectory(options.archive);
    try
    {
        ExtractAll(options, entries);
    }
    catch (const Failure&)
    {
        throw;
    }
    catch (const std::exception& exception)
    {
        throw Failure(kMalformed, options.archive + ": " + Shown(exception.what()));
    }
    std::uint64_t total = 0;
    std::size_t files = 0;
    for (const ZipEntry& entry : entries)
    {
        total += entry.size;
        files += !entry.isFolder;
    }
    if (options.asJson)
        std::cout << ordered_json{{"archive", options.archive}, {"folder", options.folder}, {"files", files},
                         {"bytes", total}}
                         .dump()
                  << '\n';
    else
        std::cout << options.folder << ": " << Count(files, "file", "files") << ", " << total << " bytes\n";
}

CLI::App& AddCommand(CLI::App& parent, const char* name, const char* description,
    const std::shared_ptr<ZipOptions>& options, void (*run)(const ZipOptions&))
{
    CLI::App& command = *parent.add_subcommand(name, description);
    command.add_option("ARCHIVE", options->archive, "the zip archive")->required();
    command.add_flag("--json", options->asJson, "answer in JSON");
    command.callback([options, run] { run(*options); });
    return command;
}

} // namespace

void AddZipCommands(CLI::App& program)
{
    CLI::App& zip = *program.add_subcommand("zip", "write, list and extract zip archives");
    zip.require_subcommand(1);
    zip.footer("A progress bar is shown on the standard error stream if that is a terminal.");
    const auto options = std::make_shared<ZipOptions>();

    CLI::App& create =
        AddCommand(zip, "create", "pack files, and all files of folders, into a new archive", options, Create);
    create.add_option("PATH", options->paths, "the files and folders; empty folders are left out")->required();
    create.add_option("--comment", options->comment, "the comment of the archive");

    AddCommand(zip, "list", "tell what an archive holds", options, List);

    CLI::App& extract = AddCommand(zip, "extract", "extract all of an archive below a folder", options, Extract);
    extract.add_option("FOLDER", options->folder, "the folder; it is made if it is missing, files are replaced")
        ->required();
    extract.footer(
        "Entries whose names lead out of the folder, links, and damaged or encrypted entries end the extraction.\n"
        "What was extracted before stays.");
}

} // namespace qxut
