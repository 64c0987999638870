#include "prof/embedded_files.h"

#include "core/debug_line.h"
#include "files/file.h"
#include "files/file_finder.h"
#include "files/folder.h"
#include "files/name_check.h"
#include "files/new_file.h"
#include "files/packed_text.h"
#include "files/path_separator.h"
#include "files/target_folder.h"
#include "prof/path.h"

#include <windows.h>

#include <objbase.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace qx
{

namespace
{

constexpr wchar_t kEntry[] = L"File.Entry";
constexpr wchar_t kName[] = L"Name";
constexpr wchar_t kContents[] = L"Contents";

constexpr std::int64_t kLargestSource = 0xFFFFFFFF;

IStream* NewMemoryStream()
{
    clsAutoRelease<IStream*> stream;
    CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive());
    return stream.Detach();
}

bool IsReadable(clsFile& source, std::int64_t position)
{
    char first;
    const bool isRead = source.Read(&first, 1) == 1;
    source.Seek(position);
    return isRead;
}

// Unpacks into memory first, because unpacking doesn't check the target's writes and would report success even on a
// full disk.
bool Unpack(std::wstring_view text, const String& key, clsFile& target)
{
    clsFileRWTempStream unpacked(NewMemoryStream());
    if (!target.IsOpen() || !unpacked.IsOpen() || !UnpackFromString(unpacked, text, key))
        return false;
    target.Seek(0);
    const bool isWhole = target.CopyFrom(unpacked);
    target.Seek(0);
    return isWhole;
}

// Returns true for a plain file name that isn't a device name.
bool IsPlainName(const String& name)
{
    return name.View().find_first_of(L"/\\:") == std::wstring_view::npos && name != L"." && name != L".." &&
           !IsDeviceName(name) && IsFileNameAllowed(name);
}

struct scExtraction
{
    const String& prefix; // the path of the folder with a separator, for messages
    const String& key;
    Unpacking unpacking;
    const ReportEntry& report;

    bool Fail(const String& name, EntryProblem problem, const wchar_t* description) const
    {
        if (report)
            report(name, problem, description);
        return false;
    }
};

EntryProblem ProblemOf(UnpackFault fault)
{
    return fault == UnpackFault::WrongKey || fault == UnpackFault::NotEncrypted ? EntryProblem::WrongKey
                                                                                : EntryProblem::Damaged;
}

bool WriteWhole(clsFile& target, const ByteBlock& data)
{
    return target.Write(data.data(), data.size()) == static_cast<std::int64_t>(data.size());
}

bool ExtractEntry(clsItemList& entry, const clsFolder& folder, const scExtraction& extraction)
{
    const clsItem* const nameLeaf = entry.FindLeaf(kName);
    if (nameLeaf == nullptr || nameLeaf->Value().empty())
    {
        DebugLine(L"ProfExtractFiles:\"Filename=\" not found");
        return extraction.Fail(String(), EntryProblem::NoName, L"has no name");
    }
    const String name(nameLeaf->Value());
    if (!IsPlainName(name) || folder.IsLink(name))
    {
        DebugLine(L"ProfExtractFiles: '%s' is refused, it leads out of the directory", name.Text());
        return extraction.Fail(name, EntryProblem::NameRefused, L"the name is not allowed, or leads out of the folder");
    }

    const String path = extraction.prefix + name;
    const clsItem* const contents = entry.FindLeaf(kContents);
    // An existing file is replaced only by contents that could be unpacked.
    Unpacked unpacked;
    if (extraction.unpacking == Unpacking::Strict)
    {
        if (contents == nullptr || contents->Value().empty())
            return extraction.Fail(name, EntryProblem::NoContents, L"has no contents");
        unpacked = UnpackStrictly(contents->Value(), extraction.key);
        if (unpacked.fault != UnpackFault::None)
        {
            DebugLine(L"ProfExtractFiles: '%s' could not be unpacked", path.Text());
            return extraction.Fail(name, ProblemOf(unpacked.fault), TextOfFault(unpacked.fault));
        }
    }

    clsNewFile file(folder, name);
    if (!file.IsOpen())
    {
        DebugLine(L"'%s' could not be created", path.Text());
        return extraction.Fail(name, EntryProblem::CannotWrite, L"cannot create the file");
    }
    const bool isWritten = extraction.unpacking == Unpacking::Strict
                               ? WriteWhole(file.File(), unpacked.data)
                               : contents != nullptr && Unpack(contents->Value(), extraction.key, file.File());
    if (isWritten && file.SetWhole())
        return true;
    DebugLine(L"ProfExtractFiles: '%s' could not be unpacked", path.Text());
    return extraction.Fail(name, EntryProblem::CannotWrite, L"cannot write the file");
}

} // namespace

String PackRest(clsFile& source, const String& key)
{
    const std::int64_t size = source.GetSize();
    const std::int64_t position = source.Tell();
    if (position < 0 || position >= size || !IsReadable(source, position))
        return String();
    if (size - position > kLargestSource)
    {
        DebugLine(L"ERR: %I64d bytes are more than packed text can hold", size - position);
        return String();
    }
    if (position == 0)
        return PackToString(source, true, key);
    clsFileRWTempStream rest(NewMemoryStream());
    return rest.IsOpen() && rest.CopyFrom(source) ? PackToString(rest, true, key) : String();
}

ProfError UnpackLeafByPath(clsItemList& start, const wchar_t* path, const String& key, clsFile& target)
{
    const clsItem* const leaf = FindLeafByPath(start, path);
    if (leaf == nullptr)
        return kProfNoLeaf;
    return Unpack(leaf->Value(), key, target) ? kProfOk : kProfWriteFailed;
}

std::int32_t AppendFiles(clsItemList& list, const String& pattern, const String& key)
{
    std::int32_t count = 0;
    // Doesn't use GetPathDirectory, because the folder's path may be longer than MAX_PATH.
    const std::wstring_view directory = pattern.View().substr(0, pattern.View().find_last_of(L"/\\:") + 1);
    const String folder(directory);
    for (FileFinder finder(pattern, false); finder.Next();)
    {
        ++count;
        const String path = folder + finder.Name();
        clsFileRO file(path, FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData);
        if (!file.IsOpen())
            DebugLine(L"ProfAppendFiles: '%s' could not be opened", path.Text());
        const String text = PackRest(file, key);
        if (text.IsEmpty())
            continue;
        clsItemList& entry = AppendListByPath(list, kEntry);
        AppendLeafByPath(entry, kName, finder.Name());
        AppendLeafByPath(entry, kContents, text.View());
    }
    return count;
}

std::int32_t ExtractFiles(
    const clsItemList& list, const String& folder, const String& key, Unpacking unpacking, const ReportEntry& report)
{
    std::vector<clsItemList*> entries;
    for (const clsItem* item : list)
    {
        if (item->List() != nullptr && item->Name().View() == kEntry)
            entries.push_back(item->List());
    }

    String prefix = folder;
    if (!EndsInPathSeparator(folder.View()))
        prefix += PATH_SEPARATOR;
    if (entries.empty())
        return 0;
    const scExtraction extraction{prefix, key, unpacking, report};
    clsTargetFolder target(folder);
    std::int32_t count = 0;
    for (clsItemList* entry : entries)
    {
        if (target.IsOpen())
            target.Restore();
        if (!target.IsOpen())
        {
            DebugLine(L"problem creating directory '%s'", folder.Text());
            return kProfWriteFailed;
        }
        count += ExtractEntry(*entry, target.Folder(), extraction);
    }
    return count;
}

} // namespace qx
