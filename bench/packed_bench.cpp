// Packed text of 64 MB, compared with zlib and OpenSSL's Base64, which do the same work but produce 8-bit text; and
// Base64 alone, compared with a plain copy that reads and writes the same number of bytes. Results go to a reused
// buffer of the caller. Temporary memory is part of the measured work.
#include <qxut23/convert.h>

#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <zlib.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{

constexpr std::size_t dataSize = 64u << 20;

// Words of a small vocabulary plus noise: compresses like the text of a report.
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

constexpr std::size_t textRoom = dataSize / 3 * 4 + 64;

void PackOurs(bool compress, std::vector<wchar_t>& text)
{
    const auto& data = Data();
    text.resize(textRoom);
    if (UtilConvertBLOBToString(data.data(), static_cast<std::uint32_t>(data.size()), text.data(),
            static_cast<std::uint32_t>(text.size()), compress) != 0)
        std::abort();
}

// Returns the length of the text.
int PackPeer(bool compress, std::vector<unsigned char>& text)
{
    const auto& data = Data();
    text.resize(textRoom);
    if (!compress)
        return EVP_EncodeBlock(text.data(), data.data(), static_cast<int>(data.size()));
    const std::size_t room = compressBound(static_cast<uLong>(data.size()));
    const auto image = std::make_unique_for_overwrite<unsigned char[]>(room);
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, 15, 9, Z_FILTERED);
    stream.next_in = const_cast<Bytef*>(data.data());
    stream.avail_in = static_cast<uInt>(data.size());
    stream.next_out = image.get();
    stream.avail_out = static_cast<uInt>(room);
    deflate(&stream, Z_FINISH);
    const int size = static_cast<int>(stream.total_out);
    deflateEnd(&stream);
    return EVP_EncodeBlock(text.data(), image.get(), size);
}

void Pack_Ours(benchmark::State& state, bool compress)
{
    std::vector<wchar_t> text(textRoom);
    for (auto _ : state)
        PackOurs(compress, text);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(dataSize));
}

void Pack_Peer(benchmark::State& state, bool compress)
{
    std::vector<unsigned char> text(textRoom);
    for (auto _ : state)
        PackPeer(compress, text);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(dataSize));
}

void Unpack_Ours(benchmark::State& state, bool compress)
{
    std::vector<wchar_t> text;
    PackOurs(compress, text);
    std::vector<unsigned char> data(dataSize);
    for (auto _ : state)
        if (UtilConvertStringToBLOB(text.data(), data.data(), dataSize) != static_cast<int>(dataSize))
            std::abort();
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(dataSize));
}

void Unpack_Peer(benchmark::State& state, bool compress)
{
    std::vector<unsigned char> text;
    const int length = PackPeer(compress, text);
    std::vector<unsigned char> data(dataSize + 3);
    for (auto _ : state)
    {
        if (!compress)
        {
            EVP_DecodeBlock(data.data(), text.data(), length);
            continue;
        }
        const auto image = std::make_unique_for_overwrite<unsigned char[]>(static_cast<std::size_t>(length) / 4 * 3);
        const int size = EVP_DecodeBlock(image.get(), text.data(), length);
        uLongf dataLength = dataSize;
        if (uncompress(data.data(), &dataLength, image.get(), static_cast<uLong>(size)) != Z_OK)
            std::abort();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(dataSize));
}

void Copy(benchmark::State& state)
{
    const std::size_t size = (dataSize + textRoom * sizeof(wchar_t)) / 2;
    const std::vector<unsigned char> source(size, 1);
    std::vector<unsigned char> target(size);
    for (auto _ : state)
    {
        std::memcpy(target.data(), source.data(), size);
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
}

} // namespace

BENCHMARK_CAPTURE(Pack_Ours, compressed, true)->Name("pack/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Pack_Peer, compressed, true)->Name("pack/zlib+OpenSSL")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Unpack_Ours, compressed, true)->Name("unpack/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Unpack_Peer, compressed, true)->Name("unpack/zlib+OpenSSL")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Pack_Ours, plain, false)->Name("encode/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Pack_Peer, plain, false)->Name("encode/OpenSSL")->Unit(benchmark::kMillisecond);
BENCHMARK(Copy)->Name("encode/memcpy")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Unpack_Ours, plain, false)->Name("decode/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Unpack_Peer, plain, false)->Name("decode/OpenSSL")->Unit(benchmark::kMillisecond);
BENCHMARK(Copy)->Name("decode/memcpy")->Unit(benchmark::kMillisecond);
