// Extraction of arbitrary bytes must end, possibly with an exception, and must not write outside its folder.
#include "zip/extraction.h"

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

using namespace qx;
namespace fs = std::filesystem;

namespace
{

// A private folder that contains only the archive and the target folder.
class Place
{
public:
    Place() : _root(fs::temp_directory_path() / ("qxut-fuzz-zip-" + std::to_string(std::random_device()())))
    {
        fs::remove_all(_root);
        fs::create_directories(_root / "a/b");
    }
    ~Place() { fs::remove_all(_root); }

    void WriteArchive(const std::uint8_t* data, std::size_t size) const
    {
        std::ofstream file(_root / "x.zip", std::ios::binary);
        file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }

    String Archive() const { return Wide(_root / "x.zip"); }
    String Folder() const { return Wide(_root / "a/b/out"); }

    void ExpectNothingOutside() const
    {
        for (const auto& entry : fs::directory_iterator(_root))
            if (entry.path().filename() != "x.zip" && entry.path().filename() != "a")
                std::abort();
        for (const auto& entry : fs::directory_iterator(_root / "a"))
            if (entry.path().filename() != "b")
                std::abort();
        for (const auto& entry : fs::directory_iterator(_root / "a/b"))
            if (entry.path().filename() != "out")
                std::abort();
    }

    void Clear() const { fs::remove_all(_root / "a/b/out"); }

private:
    // Assumes that the path of the temp folder is ASCII.
    static String Wide(const fs::path& path)
    {
        String text;
        text.Assign(path.string().c_str());
        return text;
    }

    fs::path _root;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Place place;
    place.WriteArchive(data, size);
    try
    {
        ExtractZip(place.Archive(), place.Folder());
    }
    catch (const std::exception& exception)
    {
        if (*exception.what() == 0)
            std::abort();
    }
    place.ExpectNothingOutside();
    place.Clear();
    return 0;
}
