#include "docinfo/xml_values.h"

#include "docinfo/document_record.h"
#include "locale/machine_date.h"

namespace qx
{

void StoreText(clsVariant& field, std::optional<std::wstring_view> value)
{
    if (value)
        clsDocu::SetText(field, String(*value));
}

void StoreDate(SYSTEMTIME& field, std::optional<std::wstring_view> value)
{
    SYSTEMTIME date;
    if (value && ReadISO8601Date(*value, date) && date.wYear != 0)
        field = date;
}

} // namespace qx
