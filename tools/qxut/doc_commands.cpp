#include "doc_commands.h"

#include "document.h"
#include "document_inputs.h"
#include "document_writer.h"
#include "failure.h"
#include "progress_bar.h"
#include "text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <atomic>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace qxut
{

namespace
{

struct DocOptions
{
    std::vector<std::string> names;
    std::string fields;
    std::string filesFrom;
    unsigned jobs = 0;
    bool asJson = false;
    bool asCsv = false;
    bool explains = false;
};

// Parses a list of fields that are separated by commas.
std::vector<DocField> FieldsOf(const std::string& list)
{
    std::vector<DocField> fields;
    for (std::size_t begin = 0; begin < list.size();)
    {
        const std::size_t end = std::min(list.find(',', begin), list.size());
        const std::string name = list.substr(begin, end - begin);
        const auto found = std::find(kDocFieldNames.begin(), kDocFieldNames.end(), name);
        if (found == kDocFieldNames.end())
            throw Failure(kWrongUsage, "unknown field '" + Shown(name) + "'");
        fields.push_back(static_cast<DocField>(found - kDocFieldNames.begin()));
        begin = end + 1;
    }
    return fields;
}

// Reads files on several threads and passes the documents to a receiver in the order of the files. The thread that has
// read the next document passes it on, together with later ones that are ready, so that no thread waits for another.
class OrderedReading
{
public:
    // Receives one document at a time.
    using Receive = std::function<void(std::size_t index, const Document& document)>;

    OrderedReading(const DocumentList& list, const std::vector<std::string>& files, Receive receive)
        : _list(list),
          _files(files),
          _receive(std::move(receive)),
          _results(files.size())
    {
    }

    // Reads all files. Rethrows an exception of reading or receiving a document; later documents are not passed then.
    void Run(unsigned jobs)
    {
        {
            std::vector<std::jthread> others;
            try
            {
                for (unsigned i = 1; i < jobs; ++i)
                    others.emplace_back([this] { Work(); });
            }
            catch (const std::system_error&)
            {
                // This thread and the threads that have started do the work.
            }
            Work();
        }
        if (_failure)
            std::rethrow_exception(_failure);
    }

private:
    struct Result
    {
        Document document;
        std::exception_ptr failure;
    };

    void Work()
    {
        for (std::size_t index = _next++; index < _files.size(); index = _next++)
        {
            Result result;
            try
            {
                result.document = _list.Read(_files[index]);
            }
            catch (...)
            {
                result.failure = std::current_exception();
            }
            HandOut(index, std::move(result));
        }
    }

    void HandOut(std::size_t index, Result result)
    {
        std::unique_lock lock(_mutex);
        _results[index] = std::move(result);
        if (_isHandingOut)
            return;
        _isHandingOut = true;
        for (; _first < _results.size() && _results[_first] && !_failure; ++_first)
        {
            const Result ready = std::move(*_results[_first]);
            _results[_first].reset();
            lock.unlock();
            const std::exception_ptr failure = GiveTo(_receive, _first, ready);
            lock.lock();
            if (failure)
                Stop(failure);
        }
        _isHandingOut = false;
    }

    static std::exception_ptr GiveTo(const Receive& receive, std::size_t index, const Result& result)
    try
    {
        if (result.failure)
            return result.failure;
        receive(index, result.document);
        return nullptr;
    }
    catch (...)
    {
        return std::current_exception();
    }

    void Stop(const std::exception_ptr& failure)
    {
        _failure = failure;
        _next = _files.size();
    }

    const DocumentList& _list;
    const std::vector<std::string>& _files;
    const Receive _receive;
    std::atomic<std::size_t> _next = 0; // the next file to read
    std::mutex _mutex;
    std::vector<std::optional<Result>> _results;
    std::size_t _first = 0; // the next document to pass to the receiver
    bool _isHandingOut = false;
    std::exception_ptr _failure;
};

void ReadNamed(const DocOptions& options, const DocumentList& list, DocumentWriter& writer)
{
    std::vector<std::string> files;
    ForEachFile(options.names, [&](const std::string& file) { files.push_back(file); });
    constexpr std::size_t kMostJobs = 64;
    const unsigned jobs = options.jobs != 0 ? options.jobs : std::max(std::thread::hardware_concurrency(), 1u);
    ProgressBar progress(files.size());
    OrderedReading reading(list, files,
        [&](std::size_t index, const Document& document)
        {
            writer.Write(document);
            progress.Set(index + 1, files[index]);
        });
    reading.Run(static_cast<unsigned>(std::min<std::size_t>({jobs, files.size(), kMostJobs})));
}

// Writes the document for each path immediately, because another program may wait for it before it sends the next path.
void ReadFrom(std::istream& paths, const DocumentList& list, DocumentWriter& writer)
{
    for (std::string line; std::getline(paths, line);)
    {
        if (line.ends_with('\r'))
            line.pop_back();
        if (line.empty())
            continue;
        writer.Write(list.Read(line));
        std::cout.flush();
    }
}

void ShowDocuments(const DocOptions& options)
{
    if (options.names.empty() == options.filesFrom.empty())
        throw Failure(kWrongUsage, "name files or use --files-from, one of both");
    const DocFormat format = options.asJson ? DocFormat::Json : options.asCsv ? DocFormat::Csv : DocFormat::Table;
    DocumentWriter writer(format, FieldsOf(options.fields), options.explains);
    const DocumentList list(options.explains);
    if (options.filesFrom == "-")
        ReadFrom(std::cin, list, writer);
    else if (!options.filesFrom.empty())
    {
        std::ifstream paths(std::filesystem::u8path(options.filesFrom));
        if (!paths)
            throw Failure(kCannotRead, "cannot read '" + Shown(options.filesFrom) + "'");
        ReadFrom(paths, list, writer);
    }
    else
        ReadNamed(options, list, writer);
    if (writer.Unreadable() != 0)
        throw Failure(kCannotRead, std::to_string(writer.Unreadable()) + " of the files cannot be read");
}

} // namespace

void AddDocCommands(CLI::App& program)
{
    const auto options = std::make_shared<DocOptions>();
    CLI::App* const doc =
        program.add_subcommand("doc", "print title, author, dates and other information of documents");
    doc->add_option("file", options->names, "files and folders; folders with all that is below them");
    doc->add_option("--files-from", options->filesFrom,
        "read the paths from a file, or from standard input with -, one per line; each is answered at once");
    doc->add_option("--fields", options->fields,
        "the fields to print, with commas: file, title, subject, author, last-author, keywords, comments, created, "
        "saved, "
        "path, reader, remark; dates are local");
    doc->add_option("--jobs", options->jobs,
        "the number of files to read at the same time, at most 64; one per processor by default");
    doc->add_flag("--why", options->explains, "print which reader took the file, and why it refused it");
    CLI::Option* const json = doc->add_flag("--json", options->asJson, "print JSON, one line for each file");
    doc->add_flag("--csv", options->asCsv, "print CSV with a head line")->excludes(json);
    doc->callback([options] { ShowDocuments(*options); });
}

} // namespace qxut
