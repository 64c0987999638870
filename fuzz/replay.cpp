// Replays a seed corpus through a fuzz target: every file of the folder, complete and truncated at many positions. The
// target signals a fault by aborting the process.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace
{

// Copies the bytes to a block of exactly their size, so that a sanitizer detects reads past the end.
void Feed(const std::vector<char>& bytes, std::size_t size)
{
    const std::vector<std::uint8_t> block(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
    LLVMFuzzerTestOneInput(block.data(), block.size());
}

void Replay(const std::filesystem::path& file)
{
    constexpr std::size_t kCuts = 32;
    std::ifstream stream(file, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
    Feed(bytes, bytes.size());
    for (std::size_t i = 0; i < kCuts && i < bytes.size(); ++i)
        Feed(bytes, i * bytes.size() / kCuts);
}

} // namespace

int main(int argc, char** argv)
{
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i)
        for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
            if (entry.is_regular_file())
            {
                Replay(entry.path());
                ++count;
            }
    std::printf("%zu inputs replayed\n", count);
    return count > 0 ? 0 : 1;
}
