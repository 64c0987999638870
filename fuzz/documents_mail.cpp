// Reading the header of an arbitrary mail succeeds and sets only the fields that mails have. No text has more than two
// units for a byte of the file, because a letter of a Punycode label may encode a character above U+FFFF.
#include "docinfo/mail.h"
#include "document_fuzz.h"

#include <cstring>

using namespace qx;

namespace
{

void CheckText(const clsVariant& field, std::size_t most)
{
    if (ToString(field).Length() > most)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto record = qxfuzz::ReadDocument(ReadMail, data, size);
    for (const clsVariant* const text : {&record->Title, &record->Author, &record->LastAuthor})
        CheckText(*text, 2 * size);
    for (const clsVariant* const text : {&record->Subject, &record->Keywords, &record->Comments})
        CheckText(*text, 0);
    FILETIME time;
    const bool isUnset = std::memcmp(&record->Created, &kNoTime, sizeof kNoTime) == 0;
    if (!isUnset && !SystemTimeToFileTime(&record->Created, &time))
        std::abort();
    if (std::memcmp(&record->LastSaved, &kNoTime, sizeof kNoTime) != 0)
        std::abort();
    return 0;
}
