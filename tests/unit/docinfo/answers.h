// Comparisons with other programs. Each folder of documents has a file answers.tsv, which explains the differences.
#pragma once

#include "core/charset/charset_conversion.h"
#include "unit/docinfo/document_in_memory.h"

#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace qxtest
{

// Compares records, which `read` fills, with the rows of answers.tsv: document, field, the other program's answer, and
// the reader's answer or "=".
template <class Read>
void ExpectAnswers(const std::string& folder, int expectedRows, Read read)
{
    std::ifstream answers(folder + "/answers.tsv");
    int rows = 0;
    for (std::string line; std::getline(answers, line); ++rows)
    {
        std::istringstream row(line);
        std::string name, field, expected, own;
        std::getline(std::getline(std::getline(std::getline(row, name, '\t'), field, '\t'), expected, '\t'), own, '\t');
        const qx::clsAutoRelease<qx::clsDocu*> record = EmptyRecord();
        for (std::size_t at = own.find("\\t"); at != std::string::npos; at = own.find("\\t", at))
            own.replace(at, 2, "\t");
        read(*record, Wide(std::string(folder).append("/").append(name)));
        const std::map<std::string, std::string> found = {{"Title", TextOf(record->Title)},
            {"Subject", TextOf(record->Subject)}, {"Author", TextOf(record->Author)},
            {"LastAuthor", TextOf(record->LastAuthor)}, {"Keywords", TextOf(record->Keywords)},
            {"Comments", TextOf(record->Comments)}, {"Created", DateOf(record->Created)},
            {"LastSaved", DateOf(record->LastSaved)}};
        qx::clsCharsetConversionStringCP wide(65001, (own == "=" ? expected : own).c_str());
        EXPECT_EQ(found.at(field), ReadableText(wide.GetWide())) << line.substr(0, 200);
    }
    EXPECT_EQ(rows, expectedRows);
}

inline void ReadFile(Reader reader, qx::clsDocu& record, const qx::String& path)
{
    qx::clsDocFile file(path);
    qx::FileWindow window(file);
    reader(record, window);
}

} // namespace qxtest
