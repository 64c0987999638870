// One document and what the library says about it.
#pragma once

#include <qxut23/docinfo.h>

#include <array>
#include <memory>
#include <string>
#include <string_view>

namespace qxut
{

// The fields of a document, in the order in which they are printed.
enum class DocField
{
    File,
    Title,
    Subject,
    Author,
    LastAuthor,
    Keywords,
    Comments,
    Created,
    Saved,
    Path,
    Reader,
    Remark
};
constexpr std::array<std::string_view, 12> kDocFieldNames = {"file", "title", "subject", "author", "last-author",
    "keywords", "comments", "created", "saved", "path", "reader", "remark"};

struct Document
{
    std::string& operator[](DocField field) { return values[static_cast<std::size_t>(field)]; }
    const std::string& operator[](DocField field) const { return values[static_cast<std::size_t>(field)]; }

    bool isReadable = false;
    std::array<std::string, kDocFieldNames.size()> values; // empty: the document doesn't have it; dates in local time
};

// A document list of the library. Any thread may read documents through it.
class DocumentList
{
public:
    // With `explains`, documents include the reader that read them and its remark.
    explicit DocumentList(bool explains);

    Document Read(const std::string& file) const;

private:
    struct Close
    {
        void operator()(HUTDOCINFO list) const { UtilDocInfoClose(list); }
    };

    std::unique_ptr<QxUtDocumentList, Close> _list;
    bool _explains;
};

} // namespace qxut
