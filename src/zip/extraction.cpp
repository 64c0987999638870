#include "zip/extraction.h"

#include "containers/slist.h"
#include "core/errors/failure_text.h"
#include "files/folder.h"
#include "files/new_file.h"
#include "files/path_separator.h"
#include "files/target_folder.h"
#include "zip/exception.h"
#include "zip/link_target.h"
#include "zip/member_name.h"
#include "zip/names.h"
#include "zip/unzipper.h"

#include <algorithm>
#include <string>
#include <vector>

namespace qx
{
namespace
{

constexpr std::size_t kLongestTarget = 4095;  // of a link, in bytes
constexpr std::uint32_t kFolderAccess = 0700; // permissions that extraction itself needs

using Parts = std::vector<String>;

// Ends the whole extraction, whereas any other clsZIPException ends only the extraction of one member.
class clsCannotWrite : public clsZIPException
{
public:
    using clsZIPException::clsZIPException;
};

class clsStopped
{
};

bool IsFolder(const String& path)
{
    const DWORD attributes = GetFileAttributesW(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Creates the folder and its parents. Returns true if the folder exists afterwards.
bool MakeFolder(const String& path)
{
    if (path.IsEmpty() || IsFolder(path))
        return true;
    for (std::size_t i = 1; i < path.Length(); ++i)
        if (IsPathSeparator(path.CharAt(i)) && !IsPathSeparator(path.CharAt(i - 1)))
            CreateDirectoryW(path.Left(i), nullptr); // only the last result counts
    CreateDirectoryW(path, nullptr);
    return IsFolder(path);
}

// Opens the folders of members. The folder of the previous member stays open, because the next member is usually in the
// same folder.
class MemberFolders
{
public:
    explicit MemberFolders(const String& path) : _path(path) {}

    // Opens the folder of the first `count` parts, creating it if necessary. If the last folder is new, it gets the
    // permissions `mode`.
    const clsFolder& Open(
        const String& member, const Parts& parts, std::size_t count, std::optional<std::uint32_t> mode = {})
    {
        OpenRoot();
        const bool isBelow = _open.size() <= count && std::equal(_open.begin(), _open.end(), parts.begin());
        if (!isBelow)
            Forget();
        while (_open.size() < count)
        {
            const String& name = parts[_open.size()];
            clsFolder next;
            next.OpenSubfolder(_open.empty() ? _root : _folder, name,
                _open.size() + 1 == count ? mode : std::optional<std::uint32_t>());
            if (!next.IsOpen())
            {
                const DWORD error = GetLastError();
                Forget();
                throw clsZIPException(error == kErrorIsLink ? L"The zip entry '%s' leads through a link"
                                                            : L"The folder of the zip entry '%s' can't be made",
                    member);
            }
            _folder = std::move(next);
            _open.push_back(name);
        }
        return _open.empty() ? _root : _folder;
    }

private:
    void OpenRoot()
    {
        if (_root.IsOpen())
            return;
        if (_path.IsEmpty())
            _root = clsFolder(_path);
        else if (MakeFolder(_path))
            _root = clsTargetFolder(_path).TakeFolder();
        if (!_root.IsOpen())
            throw clsCannotWrite(L"The folder '%s' can't be made", _path);
    }
    void Forget()
    {
        _open.clear();
        _folder = clsFolder();
    }

    String _path;
    clsFolder _root;
    Parts _open; // the names that lead to `_folder`
    clsFolder _folder;
};

// A link whose creation waits until all files exist, so that no member can be extracted through it.
struct scPendingLink
{
    String member;
    Parts parts;
    std::string target;
};

class Extraction
{
public:
    Extraction(Unzipper& unzipper, const String& folder, bool withLinks, const ExtractProblem& report,
        const ExtractProgress& progress)
        : _unzipper(unzipper),
          _folders(folder),
          _withLinks(withLinks),
          _report(report),
          _progress(progress)
    {
    }

    // Links are made even if the extraction of files ends early, because their members have been read completely.
    ExtractResult Run()
    {
        const ExtractResult files = ExtractFiles();
        if (files == ExtractResult::Stopped)
            return files;
        const ExtractResult links = MakeLinks();
        return files != ExtractResult::Done   ? files
               : links != ExtractResult::Done ? links
               : _hasProblem                  ? ExtractResult::Incomplete
                                              : ExtractResult::Done;
    }

private:
    ExtractResult ExtractFiles()
    {
        try
        {
            for (bool more = _unzipper.First(); more; more = _unzipper.Next())
                Attempt(_unzipper.Member().name, [this] { ExtractMember(); });
        }
        catch (const clsStopped&)
        {
            return ExtractResult::Stopped;
        }
        catch (const clsCannotWrite& exception)
        {
            Report(_unzipper.Member().name, exception);
            return ExtractResult::CannotWrite;
        }
        catch (const clsZIPException& exception)
        {
            Report(String(), exception);
            return ExtractResult::NotArchive;
        }
        return ExtractResult::Done;
    }

    ExtractResult MakeLinks()
    {
        for (const scPendingLink& link : _links)
            try
            {
                Attempt(link.member, [&] { MakeMemberLink(link); });
            }
            catch (const clsCannotWrite& exception)
            {
                Report(link.member, exception);
                return ExtractResult::CannotWrite;
            }
        return ExtractResult::Done;
    }

    template <class Work>
    void Attempt(const String& member, const Work& work)
    {
        try
        {
            work();
        }
        catch (const clsCannotWrite&)
        {
            throw;
        }
        catch (const clsZIPException& exception)
        {
            Report(member, exception);
        }
    }

    void ShowProgress(std::size_t count)
    {
        _done += count;
        if (_progress && !_progress(_unzipper.Member().name, _done))
            throw clsStopped();
    }

    void Report(const String& member, const clsZIPException& exception)
    {
        _hasProblem = true;
        String reason;
        reason.SetCodePage(kZipUtf8CodePage);
        reason.Assign(exception.what());
        _report(member, reason);
    }

    void ExtractMember()
    {
        ShowProgress(0);
        const scZIPMember& member = _unzipper.Member();
        WCValSList<String> names;
        switch (SplitMemberName(member.name, member.isFromPosix, names))
        {
        case MemberPathError::LeadsOut:
            throw clsZIPException(L"The zip entry '%s' leads out of the folder", member.name);
        case MemberPathError::NotAllowed:
            throw clsZIPException(L"The zip entry '%s' has a name that no file may have", member.name);
        case MemberPathError::None:
            break;
        }
        Parts parts(names.begin(), names.end());
        if (member.isLink)
        {
            ReadLink(std::move(parts));
            return;
        }
        if (member.isFolder)
        {
            _folders.Open(member.name, parts, parts.size(),
                member.mode ? std::optional(*member.mode | kFolderAccess) : member.mode);
            return;
        }
        _unzipper.CheckMember();
        if (parts.empty())
            throw clsZIPException(L"The zip entry '%s' has no name", member.name);
        ExtractFile(_folders.Open(member.name, parts, parts.size() - 1), parts.back());
    }

    void ExtractFile(const clsFolder& folder, const String& name)
    {
        const scZIPMember& member = _unzipper.Member();
        clsNewFile file(folder, name, member.mode);
        if (!file.IsOpen())
        {
            const DWORD error = GetLastError();
            if (error == kErrorIsLink)
                throw clsZIPException(L"The zip entry '%s' leads through a link", member.name);
            throw clsZIPException(String(String::kFormatted, L"The file of the zip entry '%s' can't be made: %s",
                member.name.Text(), String::SystemErrorText(error).Text()));
        }
        const bool isTaken = _unzipper.CopyData(
            [&](const unsigned char* bytes, std::size_t count)
            {
                ShowProgress(count);
                return file.File().Write(bytes, count) == static_cast<std::int64_t>(count);
            });
        if (!isTaken)
            throw clsCannotWrite(L"The file of the zip entry '%s' can't be written", member.name);
        if (member.hasTime)
            SetFileTime(file.File().GetHandle(), nullptr, nullptr, &member.time);
        if (!file.SetWhole())
            throw clsCannotWrite(L"The file of the zip entry '%s' can't be written", member.name);
    }

    void ReadLink(Parts parts)
    {
        const scZIPMember& member = _unzipper.Member();
        if (!kHasPosixFiles)
            throw clsZIPException(L"The zip entry '%s' is a link, which may lead out of the folder", member.name);
        if (!_withLinks)
            return;
        _unzipper.CheckMember();
        std::string target;
        const bool isTaken = _unzipper.CopyData(
            [&](const unsigned char* bytes, std::size_t count)
            {
                target.append(reinterpret_cast<const char*>(bytes), count);
                return target.size() <= kLongestTarget;
            });
        if (!isTaken || parts.empty() || !StaysInside(target, parts.size() - 1))
            throw clsZIPException(L"The zip entry '%s' is a link, which may lead out of the folder", member.name);
        _links.push_back({member.name, std::move(parts), std::move(target)});
    }

    void MakeMemberLink(const scPendingLink& link)
    {
        const clsFolder& folder = _folders.Open(link.member, link.parts, link.parts.size() - 1);
        if (!CreateLink(folder, link.parts.back(), link.target))
            throw clsZIPException(String(String::kFormatted, L"The link of the zip entry '%s' can't be made: %s",
                link.member.Text(), String::SystemErrorText(GetLastError()).Text()));
    }

    Unzipper& _unzipper;
    MemberFolders _folders;
    const bool _withLinks;
    const ExtractProblem& _report;
    const ExtractProgress& _progress;
    std::uint64_t _done = 0;
    std::vector<scPendingLink> _links;
    bool _hasProblem = false;
};

} // namespace

ExtractResult ExtractArchive(const String& archive, const String& folder, bool withLinks, const ExtractProblem& report,
    const ExtractProgress& progress)
{
    Unzipper unzipper(archive);
    if (unzipper.IsOpen() && unzipper.HasMembers())
        return Extraction(unzipper, folder, withLinks, report, progress).Run();
    if (unzipper.IsEmptyArchive())
        return ExtractResult::Done;
    report(String(), L"Error loading zip file!");
    return unzipper.IsFileOpen() ? ExtractResult::NotArchive : ExtractResult::CannotOpen;
}

void ExtractZip(const String& archive, const String& folder)
{
    String first;
    std::size_t count = 0;
    const ExtractResult result = ExtractArchive(archive, folder, true,
        [&](const String&, const String& reason)
        {
            if (count++ == 0)
                first = reason;
        });
    if (result == ExtractResult::Done)
        return;
    if (count > 1)
        first += String(String::kFormatted, L" (and %u more)", static_cast<unsigned>(count - 1));
    SetFailureText(first);
    throw clsZIPException(first);
}

} // namespace qx
