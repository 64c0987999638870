#include "time/pictures.h"

#include <map>
#include <memory>
#include <mutex>

#include "base/forever.h"
#include "text/date_pictures.h"
#include "text/locale_data.h"

namespace qxplatform
{

namespace
{

Pictures MakePictures(const Locale& locale)
{
    return {DatePicture(locale, DateStyle::Numbers), DatePicture(locale, DateStyle::Short),
        DatePicture(locale, DateStyle::Long), TimePicture(locale), DayHalfName(locale, false),
        DayHalfName(locale, true)};
}

struct KnownPictures
{
    Mutex mutex;
    std::map<const Locale*, std::unique_ptr<const Pictures>> pictures;
};

} // namespace

const Pictures& PicturesOf(const Locale& locale)
{
    static constinit Forever<KnownPictures> theKnown;
    KnownPictures& known = theKnown.Get();
    {
        const std::lock_guard lock(known.mutex);
        if (const auto found = known.pictures.find(&locale); found != known.pictures.end())
            return *found->second;
    }
    const ForkHold hold; // no fork while ICU holds its own locks
    auto made = std::make_unique<const Pictures>(MakePictures(locale));
    const std::lock_guard lock(known.mutex);
    return *known.pictures.try_emplace(&locale, std::move(made)).first->second;
}

} // namespace qxplatform
