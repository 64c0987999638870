// Packed text of 64 MB, beside zlib and OpenSSL's Base64 doing the same work: 8-bit text, the size in front.
#include <qxut23/convert.h>

#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <zlib.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace
{

constexpr std::size_t dataSize = 64u << 20;

// Words of a small vocabulary and some noise: compresses like the text of a report.
const std::vector<unsigned char>& Data()
{
    static const std::vector<unsigned char> data = []
    {
        std::mt19937 random(7);
        std::vector<std::string> words(2000);
        for (std::string& word : words)
            for (auto length = 2 + random() % 9; length != 0; --length)
                word += static_cast<char>('a' + random() % 26);
        std::vector<unsigned char> bytes;
        bytes.reserve(dataSize + 32);
        while (bytes.size() < dataSize)
        {
            const std::string& word = words[std::min(random() % 2000, random() % 2000)];
            bytes.insert(bytes.end(), word.begin(), word.end());
            bytes.push_back(random() % 12 ? ' ' : static_cast<unsigned char>(random()));
        }
        bytes.resize(dataSize);
        return bytes;
    }();
    return data;
}

std::vector<wchar_t> PackOurs(bool compress)
{
    const auto& data = Data();
    const auto size = static_cast<std::uint32_t>(data.size());
    std::vector<wchar_t> text(data.size() / 3 * 4 + 64);
    if (UtilConvertBLOBToString(data.data(), size, text.data(), static_cast<std::uint32_t>(text.size()), compress) != 0)
        std::abort();
    return text;
}

std::vector<unsigned char> PackPeer(bool compress)
{
    const auto& data = Data();
    std::vector<unsigned char> image;
    if (compress)
    {
        image.resize(compressBound(static_cast<uLong>(data.size())));
        z_stream stream{};
        deflateInit2(&stream, 9, Z_DEFLATED, 15, 9, Z_FILTERED);
        stream.next_in = const_cast<Bytef*>(data.data());
        stream.avail_in = static_cast<uInt>(data.size());
        stream.next_out = image.data();
        stream.avail_out = static_cast<uInt>(image.size());
        deflate(&stream, Z_FINISH);
        image.resize(stream.total_out);
        deflateEnd(&stream);
    }
    const auto& bytes = compress ? image : data;
    std::vector<unsigned char> text(bytes.size() / 3 * 4 + 8);
    EVP_EncodeBlock(text.data(), bytes.data(), static_cast<int>(bytes.size()));
    return text;
}

void Pack_Ours(benchmark::State& state, bool compress)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(PackOurs(compress));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(dataSize));
}

void Pack_Peer(benchmark::State& state, bool compress)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(PackPeer(compress));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(dataSize));
}

void Unpack_Ours(benchmark::State& state, bool compress)
{
    const std::vector<wchar_t> text = PackOurs(compress);
    std::vector<unsigned char> data(dataSize);
    for (auto _ : state)
        if (UtilConvertStringToBLOB(text.data(), data.data(), dataSize) != static_cast<int>(dataSize))
            std::abort();
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(dataSize));
}

void Unpack_Peer(benchmark::State& state, bool compress)
{
    const std::vector<unsigned char> text = PackPeer(compress);
    const int length = static_cast<int>(std::char_traits<char>::length(reinterpret_cast<const char*>(text.data())));
    for (auto _ : state)
    {
        std::vector<unsigned char> image(static_cast<std::size_t>(length) / 4 * 3 + 3);
        const int size = EVP_DecodeBlock(image.data(), text.data(), length);
        std::vector<unsigned char> data(dataSize);
        uLongf dataLength = dataSize;
        if (compress)
            uncompress(data.data(), &dataLength, image.data(), static_cast<uLong>(size));
        benchmark::DoNotOptimize(image);
        benchmark::DoNotOptimize(data);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(dataSize));
}

} // namespace

BENCHMARK_CAPTURE(Pack_Ours, compressed, true)->Name("pack/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Pack_Peer, compressed, true)->Name("pack/zlib+OpenSSL")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Unpack_Ours, compressed, true)->Name("unpack/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Unpack_Peer, compressed, true)->Name("unpack/zlib+OpenSSL")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Pack_Ours, plain, false)->Name("encode/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Pack_Peer, plain, false)->Name("encode/OpenSSL")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Unpack_Ours, plain, false)->Name("decode/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Unpack_Peer, plain, false)->Name("decode/OpenSSL")->Unit(benchmark::kMillisecond);
