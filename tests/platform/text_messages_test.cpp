// FormatMessageW: escapes, inserts, buffers, system error messages.
#include "platform/system_support.h"

#include <cstdarg>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace
{

using namespace std::string_view_literals;

// Returns the result as ASCII with its line breaks, or "error N".
std::string Result(DWORD length, const wchar_t* buffer)
{
    if (length == 0)
        return "error " + std::to_string(GetLastError());
    EXPECT_EQ(buffer[length], 0);
    std::string text;
    for (DWORD i = 0; i < length; ++i)
        text += buffer[i] < 0x80 ? static_cast<char>(buffer[i]) : '?';
    return text;
}

std::string Format(DWORD flags, const wchar_t* message, ...)
{
    va_list arguments;
    va_start(arguments, message);
    wchar_t buffer[500];
    SetLastError(ERROR_SUCCESS);
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_STRING | flags, message, 0, 0, buffer, 500, &arguments);
    va_end(arguments);
    return Result(length, buffer);
}

TEST(Messages, Escapes)
{
    constexpr std::tuple<const wchar_t*, const char*, const char*> kCases[] = {
        {L"%%|%.|%!|% |", "%|.|!| |", "%%|%.|%!|% |"}, {L"a%nb%tc%rd", "a\r\nb\tc\rd", "a\r\nb\tc\rd"},
        {L"%q", "q", "%q"}, {L"a%0b", "a", "a"}, {L"a\nb\r\nc\rd", "a\r\nb\r\nc\r\nd", "a\r\nb\r\nc\r\nd"},
        {L"", "error 235", "error 235"}, {L"a%", "error 87", "error 87"}};
    for (const auto& [message, result, withoutInserts] : kCases)
    {
        EXPECT_EQ(Format(0, message), result);
        EXPECT_EQ(Format(FORMAT_MESSAGE_IGNORE_INSERTS, message), withoutInserts);
    }
#ifndef _WIN32 // %b is a blank, according to the documentation of message files; Wine doesn't implement it
    EXPECT_EQ(Format(0, L"a%bc"), "a c");
#endif
}

TEST(Messages, Inserts)
{
    EXPECT_EQ(Format(0, L"%2-%1-%2", L"a", L"b"), "b-a-b");
    EXPECT_EQ(Format(0, L"%1!s!%2!ws!%3!ls!%4!hs!%5!S!", L"a", L"b", L"c", "d", "e"), "abcde");
    EXPECT_EQ(Format(0, L"%1!d! %1!5d!|%1!-5d!|%1!05u! %1!#X!", 42), "42    42|42   |00042 0X2A");
    EXPECT_EQ(Format(0, L"%1!I64d! %2!c!", 0x123456789abLL, 'z'), "1250999896491 z");
    EXPECT_EQ(Format(0, L"%1!.2s!|%1!6.3s!", L"abcdef"), "ab|   abc");
    // The example in the documentation: a va_list and an array number their arguments differently.
    EXPECT_EQ(Format(0, L"%1!*.*s! %3 %4!*s!", 4, 2, L"Bill", L"Bob", 6, L"Bill"), "  Bi Bob   Bill");
    EXPECT_EQ(Format(0, L"%2!d! %1!*d! %3!d!", 6, 10, 20, 30), "10     20 30");
    EXPECT_EQ(
        Format(0, L"%10x%11", L"1", L"2", L"3", L"4", L"5", L"6", L"7", L"8", L"9", L"ten", L"eleven"), "tenxeleven");
    EXPECT_EQ(Format(0, L"%1", nullptr), "(null)");
    EXPECT_EQ(Format(0, L"%1", L"%2 %n"), "%2 %n");
    EXPECT_EQ(Format(0, L"%1!", L"x"), "error 87");
    EXPECT_EQ(Format(0, L"%1!d", 7), "error 87");
    const std::vector<wchar_t> longText(400, L'x');
    EXPECT_EQ(Format(0, L"%1!.400s!", longText.data()), std::string(400, 'x'));
#ifndef _WIN32
    // Formats that would make the formatter write to memory, or read something other than the argument, are plain text.
    // Wine passes them to its formatter.
    EXPECT_EQ(Format(0, L"%1!n!|%1!f!|%1!s%s!|%1!%!", L"x"), "n|f|s%s|%");
    EXPECT_EQ(Format(0, L"%1!**d!", 7), "**d");
    EXPECT_EQ(Format(0, L"%1!99999999d!", 7), "error 87");
#endif
}

TEST(Messages, Buffers)
{
    wchar_t buffer[] = L"#######";
    const DWORD fromString = FORMAT_MESSAGE_FROM_STRING;
    EXPECT_EQ(FormatMessageW(fromString, L"abc", 0, 0, buffer, 4, nullptr), 3u);
    EXPECT_EQ(buffer, L"abc"sv);
    EXPECT_ERROR(ERROR_INSUFFICIENT_BUFFER, FormatMessageW(fromString, L"abc", 0, 0, buffer, 3, nullptr));
    EXPECT_EQ(buffer[4], L'#');

    const DWORD allocate = FORMAT_MESSAGE_ALLOCATE_BUFFER | fromString;
    for (const DWORD flags : {fromString, allocate, DWORD{0}})
        EXPECT_ERROR(
            ERROR_INVALID_PARAMETER, FormatMessageW(flags, L"abc", 0, 0, flags == 0 ? buffer : nullptr, 0, nullptr));
}

std::string SystemText(DWORD code, DWORD language = LANG_USER_DEFAULT, DWORD flags = FORMAT_MESSAGE_IGNORE_INSERTS)
{
    wchar_t buffer[500];
    SetLastError(ERROR_SUCCESS);
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | flags, nullptr, code, language, buffer, 500, nullptr);
    return Result(length, buffer);
}

TEST(SystemMessages, TextsUnknownCodesAndMissingArguments)
{
    EXPECT_EQ(SystemText(0xdeadbeef), "error 317");
    EXPECT_EQ(SystemText(0xc0000005), "error 317");
    EXPECT_EQ(SystemText(ERROR_BAD_EXE_FORMAT, LANG_USER_DEFAULT, 0), "error 87");
    EXPECT_EQ(SystemText(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)), SystemText(ERROR_FILE_NOT_FOUND));
    EXPECT_NE(SystemText(ERROR_FILE_NOT_FOUND), SystemText(ERROR_PATH_NOT_FOUND));
#ifndef _WIN32 // Wine has its own wordings and languages
    const std::pair<DWORD, const char*> cases[] = {{ERROR_SUCCESS, "The operation completed successfully.\r\n"},
        {ERROR_SHARING_VIOLATION,
            "The process cannot access the file because it is being used by another process.\r\n"},
        {ERROR_BAD_EXE_FORMAT, "%1 is not a valid Win32 application.\r\n"},
        {10061, "No connection could be made because the target machine actively refused it.\r\n"},
        {static_cast<DWORD>(E_NOTIMPL), "Not implemented\r\n"},
        {static_cast<DWORD>(E_ACCESSDENIED), "Access is denied.\r\n"},
        {static_cast<DWORD>(STG_E_READFAULT), "A disk error occurred during a read operation.\r\n"}};
    for (const auto& [code, text] : cases)
        EXPECT_EQ(SystemText(code), text) << code;
    EXPECT_EQ(SystemText(ERROR_FILE_NOT_FOUND, 0), SystemText(ERROR_FILE_NOT_FOUND, 0x409));
    EXPECT_EQ(SystemText(ERROR_FILE_NOT_FOUND, 0x407), "error 1815");
#endif
}

} // namespace
