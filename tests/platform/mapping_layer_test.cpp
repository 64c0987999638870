// The files of named mappings, and what other programs may put in their place.
#include "mappings.h"

#include <filesystem>
#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

using namespace qxtest;

namespace
{

// What is found in the place of a mapping, or of the whole folder.
class MappingsOfTheLayer : public Mappings
{
protected:
    ~MappingsOfTheLayer() override { std::filesystem::remove_all(file); }

    // Finds out the file's name from a mapping, because it depends on the environment.
    static std::filesystem::path FileOf(const Text& plain)
    {
        for (const auto& entry :
            std::filesystem::directory_iterator("/dev/shm/qxplatform-" + std::to_string(geteuid())))
            if (entry.path().filename().string().ends_with("-" + plain.Narrow()))
                return entry.path();
        return {};
    }

    Handle live = Create();
    const std::filesystem::path file = FileOf(plain);
};

TEST_F(MappingsOfTheLayer, FilesArePrivateAndGoWithTheLastHandle)
{
    ASSERT_FALSE(file.empty());
    struct stat info
    {
    };
    ASSERT_EQ(stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600u);
    ASSERT_EQ(stat(file.parent_path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0700u);
    Handle second = OpenExisting();
    live.Close();
    EXPECT_TRUE(exists(file));
    second.Close();
    EXPECT_FALSE(exists(file));
    EXPECT_ERROR(ERROR_FILENAME_EXCED_RANGE,
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 1, Text::Widen(std::string(4000, 'n'))));
}

TEST_F(MappingsOfTheLayer, ForeignObjectsAreRefused)
{
    ASSERT_FALSE(file.empty());
    live.Close();
    const std::filesystem::path target = file.string() + ".target";
    std::ofstream(target) << "secret";
    chmod(target.c_str(), 0600);
    const auto expectRefusal = [&](const char* what)
    {
        SCOPED_TRACE(what);
        EXPECT_ERROR(ERROR_ACCESS_DENIED, Create());
        EXPECT_ERROR(ERROR_ACCESS_DENIED, OpenExisting(FILE_MAP_READ));
        EXPECT_TRUE(std::filesystem::exists(symlink_status(file)));
        std::filesystem::remove_all(file);
    };
    create_symlink(target, file);
    expectRefusal("link");
    std::filesystem::create_directory(file);
    expectRefusal("folder");
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    expectRefusal("FIFO");
    std::ofstream(file) << "open to others";
    chmod(file.c_str(), 0644);
    expectRefusal("mode");
    if (geteuid() == 0)
    {
        std::ofstream(file) << "another user's";
        chmod(file.c_str(), 0600);
        ASSERT_EQ(chown(file.c_str(), 12345, 12345), 0);
        expectRefusal("owner");
    }
    EXPECT_EQ(std::filesystem::file_size(target), 6u);
    std::filesystem::remove(target);

    // A file whose process died without removing it: opening it fails, and the next creator starts with zeros.
    std::ofstream(file) << "dead";
    chmod(file.c_str(), 0600);
    EXPECT_ERROR(ERROR_FILE_NOT_FOUND, OpenExisting());
    std::ofstream(file) << "dead";
    chmod(file.c_str(), 0600);
    live = Create();
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SUCCESS});
    const char* const view = static_cast<const char*>(MapViewOfFile(live, FILE_MAP_READ, 0, 0, 0));
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(*view, 0);
    EXPECT_TRUE(UnmapViewOfFile(view));
}

} // namespace
