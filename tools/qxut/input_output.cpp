#include "input_output.h"

#include "failure.h"
#include "terminal.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace qxut
{

namespace
{

namespace fs = std::filesystem;

std::string ReadAll(std::istream& stream, const std::string& name)
{
    std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    if (stream.bad())
        throw Failure(kCannotRead, name + ": cannot read the file");
    return bytes;
}

} // namespace

std::string ReadInput(const std::string& path)
{
    if (path == "-")
    {
        MakeStandardStreamsBinary();
        return ReadAll(std::cin, "standard input");
    }
    const fs::path file = fs::u8path(path);
    std::error_code ignored;
    if (fs::is_directory(file, ignored))
        throw Failure(kCannotRead, path + ": is a folder");
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw Failure(kCannotRead, path + ": " + (fs::exists(file, ignored) ? "cannot open the file" : "no such file"));
    return ReadAll(stream, path);
}

void WriteOutput(const std::string& path, std::string_view bytes)
{
    if (path == "-")
    {
        MakeStandardStreamsBinary();
        std::cout.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return; // main() checks the stream at the end
    }
    std::ofstream stream(fs::u8path(path), std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream)
        throw Failure(kCannotWrite, path + ": cannot write the file");
}

} // namespace qxut
