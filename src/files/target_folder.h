// The folder into which files are extracted.
#pragma once

#include "core/text/string.h"
#include "files/folder.h"

#include <utility>

namespace qx
{

// Follows its path only once, in the constructor. Later operations start from the handles opened there, so another
// process that swaps the folder or one of its parents for a link can't redirect them.
class clsTargetFolder
{
public:
    // Opens the folder, creating it if necessary, but not its parents. A link in its place is followed. On failure the
    // last error is set.
    explicit clsTargetFolder(const String& path);

    // Creates the folder again if another process has deleted it. A link that has taken its place isn't followed. The
    // folder is closed on failure.
    void Restore();

    bool IsOpen() const { return _folder.IsOpen(); }
    const clsFolder& Folder() const { return _folder; }
    clsFolder TakeFolder() && { return std::move(_folder); }

private:
    clsFolder _parent; // closed for roots, which can't be deleted
    String _name;
    clsFolder _folder;
};

} // namespace qx
