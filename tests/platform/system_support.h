// Helpers shared by the tests of files, processes and modules.
#pragma once

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace qxtest
{

// A wide text for tests. (std::wstring doesn't support 16-bit characters.)
class Text
{
public:
    Text() = default;
    Text(const wchar_t* text) : _units(reinterpret_cast<const char16_t*>(text)) {}

    operator const wchar_t*() const { return reinterpret_cast<const wchar_t*>(_units.c_str()); }
    wchar_t* data() { return reinterpret_cast<wchar_t*>(_units.data()); }
    std::size_t size() const { return _units.size(); }

    friend Text operator+(Text left, const Text& right)
    {
        left._units += right._units;
        return left;
    }
    friend bool operator==(const Text& left, const Text& right) { return left._units == right._units; }

    // ASCII texts only.
    std::string Narrow() const { return std::string(_units.begin(), _units.end()); }
    static Text Widen(std::string_view text)
    {
        Text result;
        result._units.assign(text.begin(), text.end());
        return result;
    }

    friend void PrintTo(const Text& text, std::ostream* out) { *out << text.Narrow(); }

private:
    std::u16string _units;
};

// Returns the last error after a call that must fail.
template <class Call>
DWORD ErrorOf(Call&& call)
{
    SetLastError(0xBEEF);
    EXPECT_FALSE(call());
    return GetLastError();
}

// Expects the call to fail with the error.
#define EXPECT_ERROR(error, ...) EXPECT_EQ(qxtest::ErrorOf([&] { return __VA_ARGS__; }), DWORD{error})

class Handle
{
public:
    Handle(HANDLE handle = INVALID_HANDLE_VALUE) : _handle(handle) {}
    Handle(Handle&& other) noexcept : _handle(other._handle) { other._handle = INVALID_HANDLE_VALUE; }
    Handle& operator=(Handle&& other) noexcept
    {
        std::swap(_handle, other._handle);
        return *this;
    }
    ~Handle() { Close(); }

    void Close()
    {
        if (*this)
            CloseHandle(_handle);
        _handle = INVALID_HANDLE_VALUE;
    }
    operator HANDLE() const { return _handle; }
    explicit operator bool() const { return _handle != INVALID_HANDLE_VALUE && _handle != nullptr; }

private:
    HANDLE _handle;
};

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

inline constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;

inline Handle Open(const Text& path, DWORD access, DWORD share, DWORD disposition = OPEN_EXISTING, DWORD flags = 0)
{
    return Handle(CreateFileW(path, access, share, nullptr, disposition, flags, nullptr));
}

// Returns the error of opening a file, or 0 if it can be opened.
inline DWORD OpenError(
    const Text& path, DWORD access, DWORD share = kShareAll, DWORD disposition = OPEN_EXISTING, DWORD flags = 0)
{
    return Open(path, access, share, disposition, flags) ? DWORD{ERROR_SUCCESS} : GetLastError();
}

inline Text FullPath(const Text& path)
{
    WCHAR buffer[1000] = {};
    GetFullPathNameW(path, 1000, buffer, nullptr);
    return buffer;
}

inline bool WriteBytes(HANDLE file, std::string_view bytes)
{
    DWORD written = 0;
    return WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
           written == bytes.size();
}

inline std::string ReadBytes(HANDLE file, DWORD count = 1000)
{
    std::string bytes(count, '\0');
    DWORD read = 0;
    if (!ReadFile(file, bytes.data(), count, &read, nullptr))
        return "error " + std::to_string(GetLastError());
    bytes.resize(read);
    return bytes;
}

inline std::string BytesOf(const Text& path)
{
    return ReadBytes(Open(path, GENERIC_READ, kShareAll));
}

inline void MakeFile(const Text& path, std::string_view bytes = "data")
{
    EXPECT_TRUE(WriteBytes(Open(path, GENERIC_WRITE, 0, CREATE_ALWAYS), bytes));
}

inline bool Exists(const Text& path)
{
    return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
}

// A private folder of a test that is deleted with its contents.
class Folder
{
public:
    Folder()
    {
        static std::atomic<int> count = 0;
        WCHAR temp[MAX_PATH + 1];
        GetTempPathW(MAX_PATH + 1, temp);
        _path = Text(temp) +
                Text::Widen("qxplatform-test-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count));
        EXPECT_TRUE(CreateDirectoryW(_path, nullptr));
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(_path.Narrow(), ignored);
    }

    const Text& path() const { return _path; }
    Text operator/(const Text& name) const { return _path + L"/" + name; }

private:
    Text _path;
};

// True if the layer is tested, false if the system itself (or Wine) is.
#if defined(_WIN32)
constexpr bool kIsLayer = false;
#else
constexpr bool kIsLayer = true;
#endif

} // namespace qxtest
