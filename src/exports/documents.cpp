// Document information.
#include <qxut23/docinfo.h>
#include <qxut23/docinfo_explain.h>

#include "accounts/path_forms.h"
#include "docinfo/document_dates.h"
#include "docinfo/document_list.h"
#include "docinfo/share_guard.h"
#include "exports/guard.h"

#include <cstddef>
#include <cstdint>
#include <memory>

using namespace qx;

// A handle points directly to the list.
struct QxUtDocumentList
{
    explicit QxUtDocumentList(std::uint32_t cacheSeconds) : list(cacheSeconds) {}

    clsDocuList list;
};

static_assert(sizeof(QxUtDocumentInfo) == 80 && offsetof(QxUtDocumentInfo, created) == 8 &&
              offsetof(QxUtDocumentInfo, comments) == 64 && offsetof(QxUtDocumentInfo, resolvedPath) == 72);

namespace
{

// Keeps a record from being refreshed while its fields are copied.
class RefreshPause
{
public:
    explicit RefreshPause(clsDocu& record) : _record(record) { _record.refreshable = false; }
    RefreshPause(const RefreshPause&) = delete;
    RefreshPause& operator=(const RefreshPause&) = delete;
    ~RefreshPause() { _record.refreshable = true; }

private:
    clsDocu& _record;
};

// Returns 0 if an argument is null. Otherwise calls work(record) with the refreshed record, whose section it holds, and
// returns its result.
template <class Work>
std::int32_t WithDocument(HUTDOCINFO list, const QXWCHAR* path, std::uint32_t waitSeconds, Work work)
{
    if (list == nullptr || path == nullptr)
        return 0;
    return Guarded(0,
        [&]
        {
            const auto record = list->list.Get(path, waitSeconds);
            const clsCriticalSectionLock lock(record->Section());
            return work(*record);
        });
}

void Give(const clsVariant& value, VARIANT* target)
{
    if (target != nullptr)
        value.CopyTo(*target);
}

void GiveInfo(const clsDocu& record, const QxUtDocumentInfo& info)
{
    if (info.size < offsetof(QxUtDocumentInfo, resolvedPath))
        return;
    Give(ToLocalDate(record.Created), info.created);
    Give(ToLocalDate(record.LastSaved), info.lastSaved);
    Give(record.Title, info.title);
    Give(record.Subject, info.subject);
    Give(record.Author, info.author);
    Give(record.LastAuthor, info.lastAuthor);
    Give(record.Keywords, info.keywords);
    Give(record.Comments, info.comments);
    if (info.size >= sizeof info)
        Give(clsVariant(record.resolvedPath), info.resolvedPath);
}

void GiveText(const wchar_t* text, QXWCHAR** target)
{
    if (target != nullptr)
        String(text).ToBSTR(target);
}

} // namespace

HUTDOCINFO UtilDocInfoOpen(std::uint32_t cacheSeconds)
{
    return Guarded(
        static_cast<HUTDOCINFO>(nullptr), [=] { return std::make_unique<QxUtDocumentList>(cacheSeconds).release(); });
}

void UtilDocInfoClose(HUTDOCINFO list)
{
    Guarded([=] { delete list; });
}

std::int32_t UtilDocInfoGet(
    HUTDOCINFO list, const QXWCHAR* path, const QxUtDocumentInfo* info, std::uint32_t waitSeconds)
{
    return WithDocument(list, path, waitSeconds,
        [=](clsDocu& record)
        {
            if (!record.accessible)
                return 0;
            const RefreshPause pause(record);
            if (info != nullptr)
                GiveInfo(record, *info);
            return 1;
        });
}

std::int32_t UtilDocInfoShareAccessibility(const QXWCHAR* path)
{
    if (path == nullptr)
        return -1;
    return Guarded(-1,
        [=]
        {
            String unc;
            const IString share = EnsureUNCPath(path, unc) ? ShareOfPath(unc) : IString();
            if (share.IsEmpty())
                return -1;
            return IsShareUnreachable(share, false) ? 0 : 1;
        });
}

std::int32_t QxDocInfoExplain(
    HUTDOCINFO list, const QXWCHAR* path, std::uint32_t waitSeconds, QXWCHAR** reader, QXWCHAR** remark)
{
    return WithDocument(list, path, waitSeconds,
        [=](const clsDocu& record)
        {
            GiveText(record.reader, reader);
            GiveText(record.remark, remark);
            return record.accessible ? 1 : 0;
        });
}
