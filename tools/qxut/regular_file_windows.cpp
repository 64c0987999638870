#include "regular_file.h"

namespace qxut
{

RegularFile OpenRegularFile(const std::filesystem::path& path)
{
    return RegularFile(_wfopen(path.c_str(), L"rb"));
}

} // namespace qxut
