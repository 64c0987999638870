#include "docinfo/message.h"

#include "core/text/text_buffer.h"
#include "core/words.h"
#include "docinfo/document_file.h"
#include "docinfo/file_text.h"
#include "docinfo/storage.h"
#include "locale/time_arithmetic.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace qx
{
namespace
{

// The names follow the documentation of the format.
enum MessageProperty : std::uint16_t
{
    kSubjectText = 0x0037,
    kSentRepresentingName = 0x0042,
    kSentRepresentingAddress = 0x0065,
    kSenderName = 0x0C1A,
    kSenderAddress = 0x0C1F,
    kDisplayName = 0x3001,
    kMailAddress = 0x3003
};

constexpr std::uint32_t kClientSubmitTime = 0x00390040;
constexpr std::uint32_t kDeliveryTime = 0x0E060040;
constexpr std::uint64_t kPropertiesBegin = 32;
constexpr std::size_t kPropertyRecordSize = 24;

constexpr std::uint16_t kNarrowType = 0x001E;
constexpr std::uint16_t kWideType = 0x001F;
// Limits the time for a damaged file, in which finding a recipient takes one step per preceding recipient.
constexpr unsigned kMostRecipients = 10'000;
constexpr std::uint64_t kTooLong = 0x7FFFFFFF; // for a text, in bytes

struct MessageTimes
{
    SYSTEMTIME submit = kNoTime;
    SYSTEMTIME delivery = kNoTime;
};

class MessageReader
{
public:
    MessageReader(clsDocu& record, IStorage& root) : _record(record), _root(root) {}

    void Read()
    {
        clsDocu::SetText(_record.Title, Text(_root, kSubjectText));
        const String name = FirstText(_root, kSentRepresentingName, kSenderName);
        const String address = FirstText(_root, kSentRepresentingAddress, kSenderAddress);
        clsDocu::SetText(_record.Author, name.IsEmpty() ? address : name);
        ReadRecipients();
        TakeTimes(ReadTimes());
    }

private:
    void ReadRecipients()
    {
        TextBuffer all;
        bool hasRecipients = false;
        for (unsigned i = 0; i < kMostRecipients; ++i)
        {
            const String name(String::kFormatted, L"__recip_version1.0_#%08x", i);
            const clsAutoRelease<IStorage*> recipient = OpenSubStorage(_root, name.Text());
            if (!recipient)
                break;
            if (!all.empty())
                all += L"; ";
            all += FirstText(*recipient, kDisplayName, kMailAddress).View();
            hasRecipients = true;
        }
        if (hasRecipients)
            clsDocu::SetText(_record.LastAuthor, String(std::wstring_view(all)));
    }

    MessageTimes ReadTimes() const
    {
        MessageTimes times;
        const clsAutoRelease<IStream*> stream = OpenStream(_root, L"__properties_version1.0");
        if (!stream)
            return times;
        clsDocFile file(stream.Get());
        FileWindow window(file);
        for (std::uint64_t at = kPropertiesBegin; at < window.Size(); at += kPropertyRecordSize)
        {
            const std::uint8_t* const property = window.At(at, kPropertyRecordSize);
            if (property == nullptr)
                break;
            const FILETIME time = {LittleEndian32(property + 8), LittleEndian32(property + 12)};
            if (const std::uint32_t tag = LittleEndian32(property); tag == kClientSubmitTime)
                FileTimeToSystemTime(&time, &times.submit);
            else if (tag == kDeliveryTime)
                FileTimeToSystemTime(&time, &times.delivery);
        }
        return times;
    }

    void TakeTimes(const MessageTimes& times)
    {
        if (times.submit.wYear != 0)
        {
            _record.Created = times.submit;
            if (times.delivery.wYear != 0)
                _record.LastSaved = times.delivery;
        }
        else if (times.delivery.wYear != 0)
            _record.Created = times.delivery;
    }

    String FirstText(IStorage& storage, MessageProperty first, MessageProperty second)
    {
        const String text = Text(storage, first);
        return text.IsEmpty() ? Text(storage, second) : text;
    }

    // Returns the empty text if there is no such property.
    String Text(IStorage& storage, MessageProperty property)
    {
        for (const std::uint16_t type : {kNarrowType, kWideType})
        {
            const String name(String::kFormatted, L"__substg1.0_%08x", unsigned{property} << 16 | type);
            const clsAutoRelease<IStream*> stream = OpenStream(storage, name.Text());
            if (!stream)
                continue;
            const std::string bytes = Bytes(*stream, type == kWideType ? sizeof(wchar_t) : 1);
            return type == kWideType ? WideTextOfBytes(bytes)
                                     : TextOfBytes(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        }
        return String();
    }

    std::string Bytes(IStream& stream, std::size_t unit)
    {
        clsDocFile file(&stream);
        FileWindow window(file);
        if (window.Size() >= kTooLong)
            return {};
        std::string bytes = ReadToZero(window, 0, std::min(_bytesLeft, static_cast<std::size_t>(window.Size())), unit);
        _bytesLeft -= bytes.size();
        return bytes;
    }

    clsDocu& _record;
    IStorage& _root;
    std::size_t _bytesLeft = 64 * 1024 * 1024; // streams of a damaged file may share their contents
};

} // namespace

int ReadMessage(clsDocu& record, const String& path)
{
    DocumentStorage storage(record);
    if (const HRESULT result = storage.Open(path); FAILED(result))
        return result;
    MessageReader(record, storage.Root()).Read();
    return 0;
}

} // namespace qx
