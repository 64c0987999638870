// Packed text with checks.
#include <qxut23/packed_text.h>

#include "core/errors/failure_text.h"
#include "core/packing/pass_phrase.h"
#include "exports/guard.h"
#include "files/packed_text.h"

#include <cstdint>
#include <string_view>

using namespace qx;

static_assert(QXUT_UNPACK_OK == -static_cast<int>(UnpackFault::None) &&
              QXUT_UNPACK_NOT_PACKED == -static_cast<int>(UnpackFault::NotPackedText) &&
              QXUT_UNPACK_WRONG_KEY == -static_cast<int>(UnpackFault::WrongKey) &&
              QXUT_UNPACK_NOT_ENCRYPTED == -static_cast<int>(UnpackFault::NotEncrypted) &&
              QXUT_UNPACK_DAMAGED == -static_cast<int>(UnpackFault::Damaged));

std::int32_t QxUnpackText(const QXWCHAR* text, const QXWCHAR* key, QxUnpackedData receive, void* context)
{
    return Guarded(std::int32_t{QXUT_UNPACK_NO_MEMORY},
        [=]
        {
            const std::wstring_view view = text != nullptr ? std::wstring_view(text) : std::wstring_view();
            const Unpacked unpacked = UnpackStrictly(view, clsPassPhrase(key).Text());
            if (unpacked.fault != UnpackFault::None)
            {
                SetFailureText(TextOfFault(unpacked.fault));
                return -static_cast<std::int32_t>(unpacked.fault);
            }
            const auto size = static_cast<std::uint32_t>(unpacked.data.size());
            if (receive == nullptr || receive(context, unpacked.data.data(), size) != 0)
                return std::int32_t{QXUT_UNPACK_OK};
            SetFailureText(L"the data could not be stored");
            return std::int32_t{QXUT_UNPACK_STOPPED};
        });
}

std::int32_t QxIsPassPhraseExact(const QXWCHAR* key)
{
    return Guarded(0,
        [=]
        {
            String text(key);
            const bool isExact = IsExactPassPhrase(text);
            text.Wipe();
            return isExact ? 1 : 0;
        });
}
