// Searches the whole memory of this process for pass phrases after the library has used them.
#include <qxut23/packed_text.h>
#include <qxut23/profile.h>
#include <qxut23/profile_files.h>

#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace
{

// The test stores the phrases only masked with this byte, so that the search doesn't find its own copies.
constexpr unsigned char kMask = 0xA5;
constexpr std::size_t kLength = 24;

// Returns a different phrase for each use, so that the remains of one use aren't attributed to another.
std::string MaskedPhrase(char number)
{
    std::string masked;
    for (std::size_t i = 0; i < kLength; ++i)
        masked += static_cast<char>(
            static_cast<unsigned char>('a' + (i * 7 + static_cast<std::size_t>(number)) % 26) ^ kMask);
    return masked;
}

// A phrase in clear text, in memory that is overwritten afterwards.
template <class Character>
class Phrase
{
public:
    explicit Phrase(const std::string& masked)
    {
        for (std::size_t i = 0; i < kLength; ++i)
            _text[i] = static_cast<Character>(static_cast<unsigned char>(masked[i]) ^ kMask);
    }
    ~Phrase()
    {
        for (volatile Character& c : _text)
            c = 0;
    }
    operator const Character*() const { return _text; }

private:
    Character _text[kLength + 1]{};
};

// Returns how often the phrase occurs in the writable memory, with characters of `width` bytes.
int CountInMemory(const std::string& masked, std::size_t width)
{
    static unsigned char window[1 << 16];
    const std::size_t size = kLength * width;
    const auto isHere = [&](const unsigned char* at)
    {
        for (std::size_t i = 0; i < size; ++i)
            if (at[i] != (i % width == 0 ? static_cast<unsigned char>(masked[i / width]) ^ kMask : 0))
                return false;
        return true;
    };
    const int memory = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    std::ifstream maps("/proc/self/maps");
    int count = 0;
    for (std::string line; std::getline(maps, line);)
    {
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
        char mode[5] = {};
        if (std::sscanf(line.c_str(), "%lx-%lx %4s", &begin, &end, mode) != 3 || mode[0] != 'r' || mode[1] != 'w')
            continue;
        for (std::uint64_t at = begin; at < end; at += sizeof window - size)
        {
            const ssize_t read =
                pread(memory, window, std::min<std::uint64_t>(sizeof window, end - at), static_cast<off_t>(at));
            for (ssize_t i = 0; i + static_cast<ssize_t>(size) <= read; ++i)
            {
                const std::uint64_t address = at + static_cast<std::uint64_t>(i);
                const auto own = reinterpret_cast<std::uint64_t>(window);
                const bool isWindow = address + size > own && address < own + sizeof window;
                count += !isWindow && isHere(window + i) ? 1 : 0;
            }
        }
    }
    close(memory);
    return count;
}

int CountInMemory(const std::string& masked)
{
    return CountInMemory(masked, 1) + CountInMemory(masked, sizeof(wchar_t));
}

} // namespace

TEST(Secrets, LeaveNothingInMemory)
{
    const qxtest::TempFolder folder;
    const qx::String file = folder.Make(L"file", "some content, some content");
    // The search must find a phrase that is in memory; otherwise it proves nothing.
    const std::string first = MaskedPhrase(1);
    {
        const Phrase<wchar_t> phrase(first);
        const Phrase<char> narrow(first);
        EXPECT_EQ(CountInMemory(first, sizeof(wchar_t)), 1);
        EXPECT_EQ(CountInMemory(first, 1), 1);
    }
    EXPECT_EQ(CountInMemory(first), 0);

    const HPROFJOB job = ProfJobOpenW(nullptr);
    EXPECT_EQ(ProfAppendFilesW(job, nullptr, file, Phrase<wchar_t>(first)), 1);
    EXPECT_EQ(CountInMemory(first), 0) << "after encryption";
    EXPECT_EQ(ProfExtractFilesW(job, nullptr, folder.Path(), Phrase<wchar_t>(first)), 1);
    EXPECT_EQ(QxProfExtractFiles(job, nullptr, folder.Path(), Phrase<wchar_t>(first), nullptr, nullptr), 1);
    EXPECT_EQ(CountInMemory(first), 0) << "after decryption";

    const std::string second = MaskedPhrase(2);
    EXPECT_EQ(ProfExtractFilesA(job, nullptr, qx::String(folder.Path()).NarrowText(), Phrase<char>(second)), 1);
    EXPECT_EQ(CountInMemory(second), 0) << "after the 8-bit form";

    const std::string third = MaskedPhrase(3);
    EXPECT_EQ(QxIsPassPhraseExact(Phrase<wchar_t>(third)), 1);
    EXPECT_EQ(QxUnpackText(L"@2@AAAA", Phrase<wchar_t>(third), nullptr, nullptr), QXUT_UNPACK_WRONG_KEY);
    EXPECT_EQ(CountInMemory(third), 0) << "after a wrong key";
    ProfJobClose(job);
}
