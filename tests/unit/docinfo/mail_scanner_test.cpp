// The scanners of the mail reader find what the patterns of the format find.
#include "core/pattern/regex.h"
#include "docinfo/mail.h"
#include "docinfo/mail_address.h"
#include "docinfo/mail_words.h"
#include "unit/docinfo/random_texts.h"

using namespace qx;
using namespace qxtest;

namespace
{

constexpr wchar_t kWord[] = LR"(=\?([-\w]+)(?:\*\w+)?\?([QB])\?(.*?)\?=)";

String WithPatterns(const String& value, clsRegEx& pattern)
{
    return pattern.GSub(value,
        [](const clsRegExMatchList& groups, String& text)
        {
            text = DecodeWord({groups[1].text.View(), groups[2].text.CharAt(0), groups[3].text.View(), 0});
            return true;
        });
}

// Decodes fields with the reader's functions, which have their own tests, but splits the file with patterns.
void ReadMailWithPatterns(clsDocu& record, const String& text)
{
    static clsRegEx block(L"^(.*)(?:\\r\\n\\r\\n|\\r{2}|\\n{2})", 0x40420); // DOTALL, MULTILINE, UNGREEDY
    static clsRegEx fold(L"\\r\\n\\s", 0), lineEnd(L"\\r\\n", 0), line(L"^(.+?): (.*)$", 0);
    clsRegExMatchList groups;
    if (!block.Match(text, &groups))
        return;
    const String header = fold.GSub(groups[1].text, L"");
    for (const String& piece : lineEnd.Split(header))
    {
        if (!line.Match(piece, &groups))
            continue;
        const TextBuffer value = DecodeMailField(groups[2].text.View(), groups[1].text.View());
        const IString name = groups[1].text;
        for (const auto& [own, field] :
            {std::pair(L"from", &record.Author), {L"to", &record.LastAuthor}, {L"subject", &record.Title}})
            if (name == own)
                clsDocu::SetText(*field, String(std::wstring_view(value)));
    }
}

constexpr std::string_view kHeaderPieces[] = {"Subject: ", "From: ", "TO: ", "subject:", ": ", ":", " ", "\t", "\r\n",
    "\r\n ", "\r\n\t", "\n", "\r", "\r\n\r\n", "a", "To", "b@c.de", "\x0B", "=?utf-8?Q?x?="};

constexpr std::string_view kWordPieces[] = {"=?", "=", "?", "utf-8", "*", "*en", "?Q?", "?B?", "?q?", "?=", "_", "-",
    "\n", "\r", " ", "x", "=41", "QUJD", "=?utf-8?Q?", "=?iso-8859-1*de?Q?", "\xC3\xA4"};

constexpr std::string_view kAddressPieces[] = {
    "\"", "\"", "@", ".", "a", "b.c", "x@", "\"a\"", "\"@.", ".\"", " ", "(", "\x01", "\x7F", ",", "\xC3\xA4", "xn--"};

} // namespace

TEST(MailScanners, Header)
{
    CompareReaders(ReadMail, ReadMailWithPatterns, kHeaderPieces, "%\r\n\r\nSubject: body");
    CompareReaders(ReadMail, ReadMailWithPatterns, kHeaderPieces, "Subject: s\r\nTo: t%");
}

TEST(MailScanners, EncodedWords)
{
    clsRegEx pattern(kWord, 0), anchored((String(L"^") + kWord).Text(), 0);
    RandomTexts texts(kWordPieces);
    int found = 0;
    for (int i = 0; i < kTexts; ++i)
    {
        const String text = Wide(texts.Next());
        ASSERT_EQ(DecodeWords(text.View()), WithPatterns(text, pattern).View()) << text.NarrowText();
        EncodedWords words(text.View());
        for (std::size_t at = 0; at < text.Length(); ++at)
        {
            clsRegExMatchList groups;
            const auto word = words.At(at);
            ASSERT_EQ(anchored.Match(text.Mid(at), &groups), word.has_value()) << text.NarrowText();
            found += word.has_value();
            ASSERT_TRUE(
                !word || (word->charset == groups[1].text.View() && word->encoding == groups[2].text.CharAt(0) &&
                             word->text == groups[3].text.View() && word->length == groups[0].text.Length()))
                << text.NarrowText();
        }
    }
    EXPECT_GT(found, kTexts / 10);
}

TEST(MailScanners, Addresses)
{
    constexpr wchar_t kAtom[] = LR"x((?:[^\x01-\x1f\x7f()<>@,;:\\\[\] ]+|"[^"]*"))x";
    constexpr wchar_t kDotless[] = LR"x((?:[^\x01-\x1f\x7f()<>@,;:\\\[\] \.]+|"[^"]*"))x";
    clsRegEx pattern(String(L"\\A") + kAtom + L"@" + kDotless + L"(?:\\." + kDotless + L")+\\z", 0);
    RandomTexts texts(kAddressPieces);
    int found = 0;
    constexpr std::string_view kBegins[] = {"", "a@", "a@b.", "\"a@b\"@c."};
    for (int i = 0; i < kTexts; ++i)
    {
        // The texts are short, because hardly any long one would be an address.
        const std::size_t length = static_cast<std::size_t>(i % 10);
        const String text = Wide(std::string(kBegins[i % 4]) + texts.Next().substr(0, length));
        const bool isAddress = pattern.Match(text, nullptr);
        ASSERT_EQ(IsMailAddress(text.View()), isAddress) << text.NarrowText();
        found += isAddress;
    }
    EXPECT_GT(found, kTexts / 20);
}
