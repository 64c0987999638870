// The pull reader must return at most one node for each byte of input, never two texts in succession and no element
// nested too deeply. After an error it must keep returning the error.
#include <windows.h>

#include <objbase.h>
#include <xmllite.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>

namespace
{

void Check(bool isTrue)
{
    if (!isTrue)
        std::abort();
}

void CheckTexts(IXmlReader& reader)
{
    for (const auto get : {&IXmlReader::GetPrefix, &IXmlReader::GetLocalName, &IXmlReader::GetValue})
    {
        LPCWSTR text = nullptr;
        UINT length = 0;
        Check((reader.*get)(&text, &length) == S_OK && text[length] == 0);
    }
}

void ReadAll(IXmlReader& reader, std::size_t size)
{
    int depth = 0;
    XmlNodeType type = XmlNodeType_None, before = XmlNodeType_None;
    HRESULT result = S_OK;
    for (std::size_t count = 0; (result = reader.Read(&type)) == S_OK; ++count, before = type)
    {
        Check(count < size);
        CheckTexts(reader);
        const auto isText = [](XmlNodeType other)
        {
            return other == XmlNodeType_Text || other == XmlNodeType_Whitespace;
        };
        Check(!isText(type) || !isText(before));
        if (type == XmlNodeType_Element && !reader.IsEmptyElement())
            Check(++depth <= 256);
        if (type == XmlNodeType_EndElement)
            Check(--depth >= 0);
    }
    Check(reader.Read(&type) == result && reader.IsEOF() == (result == S_FALSE));
    Check(result != S_FALSE || depth == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    IStream* stream = nullptr;
    Check(CreateStreamOnHGlobal(nullptr, TRUE, &stream) == S_OK);
    const LARGE_INTEGER begin = {};
    stream->Write(data, static_cast<ULONG>(size), nullptr);
    stream->Seek(begin, STREAM_SEEK_SET, nullptr);
    void* object = nullptr;
    Check(CreateXmlReader(IID_IXmlReader, &object, nullptr) == S_OK);
    auto* const reader = static_cast<IXmlReader*>(object);
    Check(reader->SetInput(stream) == S_OK);
    ReadAll(*reader, size);
    reader->Release();
    Check(stream->Release() == 0);
    return 0;
}
