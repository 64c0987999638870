#include "docinfo/share_guard.h"

#include "containers/skip_list.h"
#include "core/critical_section.h"
#include "core/forever.h"
#include "core/pattern/regex.h"
#include "files/paths.h"

namespace qx
{
namespace
{

// Shares are never removed, so that callers wait only once for a dead server.
class UnreachableShares
{
public:
    static UnreachableShares& Get()
    {
        static UnreachableShares& shares = MakeForever<UnreachableShares>();
        return shares;
    }

    bool Contains(const IString& share)
    {
        const clsCriticalSectionLock lock(_section);
        return _shares.Contains(share);
    }

    void Add(const IString& share)
    {
        const clsCriticalSectionLock lock(_section);
        _shares.Insert(share);
    }

private:
    clsCriticalSection _section;
    WCValSkipListSet<IString> _shares;
};

bool Answers(const IString& share)
{
    return ClassifyPath(share + L"\\.") == PathClass::Folder;
}

} // namespace

IString ShareOfPath(const String& path)
{
    // Compiled only for paths on shares, and for each call: a shared pattern would serialise its callers.
    if (!path.View().starts_with(LR"(\\)"))
        return IString();
    clsRegEx pattern(LR"(^(\\\\(?:.+?)\\(?:.+?))(\\.*|)$)", 0);
    clsRegExMatchList groups;
    return pattern.Match(path, &groups) ? IString(groups[1].text) : IString();
}

bool IsShareUnreachable(const IString& share, bool onlyLook)
{
    UnreachableShares& shares = UnreachableShares::Get();
    if (shares.Contains(share))
        return true;
    if (onlyLook || Answers(share))
        return false;
    shares.Add(share);
    return true;
}

} // namespace qx
