#include "document.h"

#include "text.h"
#include "variant.h"

#include <qxut23/bstr.h>
#include <qxut23/docinfo_explain.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>

namespace qxut
{

namespace
{

constexpr std::uint32_t kSecondsForShares = 30;
constexpr std::uint32_t kSecondsInCache = 60; // keeps a record between the two requests for its document

// Returns "2012-03-04 05:06:07" for a date of the library, which counts days from 30 December 1899.
std::string DateText(double date)
{
    using namespace std::chrono;
    constexpr sys_days kBegin = year(1899) / 12 / 30;
    constexpr int kSecondsPerDay = 24 * 60 * 60;
    double days = std::trunc(date);
    // The time of day is the absolute value of the fraction, also before 30 December 1899.
    auto second = static_cast<int>(std::lround(std::fabs(date - days) * kSecondsPerDay));
    if (second == kSecondsPerDay)
    {
        second = 0;
        days += 1;
    }
    const year_month_day day = kBegin + std::chrono::days(static_cast<int>(days));
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(day.year()),
        static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()), second / 3600, second / 60 % 60,
        second % 60);
    return text;
}

std::string TakeText(QXWCHAR* text)
{
    std::string taken = text != nullptr ? Utf8(text) : std::string();
    SysFreeString(text);
    return taken;
}

// Returns false for pipes, devices and folders. Reading a pipe or a device might never end.
bool MayBeRead(const std::string& file)
{
    std::error_code error;
    const auto status = std::filesystem::status(std::filesystem::u8path(file), error);
    return status.type() == std::filesystem::file_type::regular ||
           status.type() == std::filesystem::file_type::not_found ||
           status.type() == std::filesystem::file_type::unknown;
}

} // namespace

DocumentList::DocumentList(bool explains) : _list(UtilDocInfoOpen(explains ? kSecondsInCache : 0)), _explains(explains)
{
}

Document DocumentList::Read(const std::string& file) const
{
    Document document;
    document[DocField::File] = file;
    if (!MayBeRead(file))
        return document;
    const WideText path(file);
    // Both requests must refer to the same reading, so they use a list with a cache. Each document gets a new list,
    // because a cache compares paths without regard to case.
    std::unique_ptr<QxUtDocumentList, Close> own;
    if (_explains)
        own.reset(UtilDocInfoOpen(kSecondsInCache));
    const HUTDOCINFO list = _explains ? own.get() : _list.get();
    if (_explains)
    {
        QXWCHAR* reader = nullptr;
        QXWCHAR* remark = nullptr;
        QxDocInfoExplain(list, path, kSecondsForShares, &reader, &remark);
        document[DocField::Reader] = TakeText(reader);
        document[DocField::Remark] = TakeText(remark);
    }
    Variant created, saved, title, subject, author, lastAuthor, keywords, comments, resolved;
    QxUtDocumentInfo info = {};
    info.size = sizeof info;
    info.created = created.Address();
    info.lastSaved = saved.Address();
    info.title = title.Address();
    info.subject = subject.Address();
    info.author = author.Address();
    info.lastAuthor = lastAuthor.Address();
    info.keywords = keywords.Address();
    info.comments = comments.Address();
    info.resolvedPath = resolved.Address();
    document.isReadable = UtilDocInfoGet(list, path, &info, kSecondsForShares) != 0;
    const std::pair<DocField, const Variant&> texts[] = {{DocField::Title, title}, {DocField::Subject, subject},
        {DocField::Author, author}, {DocField::LastAuthor, lastAuthor}, {DocField::Keywords, keywords},
        {DocField::Comments, comments}, {DocField::Path, resolved}};
    for (const auto& [field, value] : texts)
        document[field] = value.Text();
    const std::pair<DocField, const Variant&> dates[] = {{DocField::Created, created}, {DocField::Saved, saved}};
    for (const auto& [field, value] : dates)
        if (value.IsDate())
            document[field] = DateText(value.Date());
    return document;
}

} // namespace qxut
