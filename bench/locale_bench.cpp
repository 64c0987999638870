// Parsing of dates: locale forms, compared with ICU with a format created for each call (like a caller that caches
// nothing), and machine-readable forms, compared with GLib and GMime. 1,000 texts of each form, the same for all.
#include <qxut23/dates.h>

#include <windows.h>

#include <benchmark/benchmark.h>
#include <glib.h>
#include <gmime/gmime.h>
#include <unicode/datefmt.h>

#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{

constexpr std::size_t textCount = 1000;
constexpr LCID german = 0x0407, american = 0x0409;

struct Moment
{
    int year, month, day, hour, minute, second;
};

template <class Write>
std::vector<std::string> Texts(Write write)
{
    std::mt19937 random(9);
    const auto between = [&random](unsigned low, unsigned high)
    {
        return static_cast<int>(low + random() % (high - low + 1));
    };
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < textCount; ++i)
    {
        char text[64];
        write(text, sizeof text,
            Moment{
                between(1990, 2030), between(1, 12), between(1, 28), between(0, 23), between(0, 59), between(0, 59)});
        texts.push_back(text);
    }
    return texts;
}

const std::vector<std::string>& German()
{
    static const auto texts = Texts(
        [](char* text, std::size_t size, const Moment& at)
        {
            std::snprintf(
                text, size, "%02d.%02d.%04d %02d:%02d:%02d", at.day, at.month, at.year, at.hour, at.minute, at.second);
        });
    return texts;
}

const std::vector<std::string>& American()
{
    static const auto texts = Texts(
        [](char* text, std::size_t size, const Moment& at)
        {
            std::snprintf(text, size, "%d/%d/%04d %d:%02d:%02d %s", at.month, at.day, at.year, (at.hour + 11) % 12 + 1,
                at.minute, at.second, at.hour < 12 ? "AM" : "PM");
        });
    return texts;
}

const std::vector<std::string>& Compact()
{
    static const auto texts = Texts(
        [](char* text, std::size_t size, const Moment& at) {
            std::snprintf(
                text, size, "%04d%02d%02d%02d%02d%02d", at.year, at.month, at.day, at.hour, at.minute, at.second);
        });
    return texts;
}

const std::vector<std::string>& ISO8601()
{
    static const auto texts = Texts(
        [](char* text, std::size_t size, const Moment& at)
        {
            std::snprintf(text, size, "%04d-%02d-%02dT%02d:%02d:%02d+%02d:00", at.year, at.month, at.day, at.hour,
                at.minute, at.second, at.second % 12);
        });
    return texts;
}

// GLib has no compact date; this is the closest form.
const std::vector<std::string>& CompactISO8601()
{
    static const auto texts = Texts(
        [](char* text, std::size_t size, const Moment& at) {
            std::snprintf(
                text, size, "%04d%02d%02dT%02d%02d%02dZ", at.year, at.month, at.day, at.hour, at.minute, at.second);
        });
    return texts;
}

const std::vector<std::string>& RFC822()
{
    static const auto texts = Texts(
        [](char* text, std::size_t size, const Moment& at)
        {
            const char* const months = "JanFebMarAprMayJunJulAugSepOctNovDec";
            std::snprintf(text, size, "Tue, %d %.3s %04d %02d:%02d:%02d +%02d00", at.day, months + 3 * (at.month - 1),
                at.year, at.hour, at.minute, at.second, at.second % 12);
        });
    return texts;
}

std::vector<std::vector<wchar_t>> Wide(const std::vector<std::string>& texts)
{
    std::vector<std::vector<wchar_t>> wide;
    for (const std::string& text : texts)
    {
        wide.emplace_back(text.begin(), text.end());
        wide.back().push_back(0);
    }
    return wide;
}

// Fails if a text isn't parsed: rejecting texts would make a parser look fast.
template <class Texts, class Read>
void Run(benchmark::State& state, const Texts& texts, Read read)
{
    for (auto _ : state)
        for (const auto& text : texts)
            if (!read(text))
            {
                state.SkipWithError("a text wasn't read");
                return;
            }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(texts.size()));
}

void Locale_Ours(benchmark::State& state, const std::vector<std::string>& texts, LCID locale)
{
    Run(state, Wide(texts),
        [locale](const std::vector<wchar_t>& text)
        {
            SYSTEMTIME time;
            return UtilLocSystemTimeFromLocaleString(locale, text.data(), &time, 0) == 0 && time.wYear != 0;
        });
}

void Locale_ICU(benchmark::State& state, const std::vector<std::string>& texts, const char* locale)
{
    Run(state, texts,
        [locale](const std::string& text)
        {
            UErrorCode status = U_ZERO_ERROR;
            const std::unique_ptr<icu::DateFormat> format(icu::DateFormat::createDateTimeInstance(
                icu::DateFormat::kMedium, icu::DateFormat::kMedium, icu::Locale(locale)));
            format->setLenient(true);
            format->parse(icu::UnicodeString::fromUTF8(text), status);
            benchmark::DoNotOptimize(status); // the status is irrelevant here
            return true;
        });
}

void Machine_Ours(benchmark::State& state, const std::vector<std::string>& texts)
{
    Run(state, Wide(texts),
        [](const std::vector<wchar_t>& text)
        {
            SYSTEMTIME time;
            UtilLocDateTimeToSYSTEMTIME(text.data(), &time);
            return time.wYear != 0;
        });
}

void Machine_GLib(benchmark::State& state, const std::vector<std::string>& texts)
{
    Run(state, texts,
        [](const std::string& text)
        {
            GDateTime* const time = g_date_time_new_from_iso8601(text.c_str(), nullptr);
            const bool isRead = time != nullptr;
            if (isRead)
                g_date_time_unref(time);
            return isRead;
        });
}

void Machine_GMime(benchmark::State& state, const std::vector<std::string>& texts)
{
    g_mime_init();
    Run(state, texts,
        [](const std::string& text)
        {
            GDateTime* const time = g_mime_utils_header_decode_date(text.c_str());
            const bool isRead = time != nullptr;
            if (isRead)
                g_date_time_unref(time);
            return isRead;
        });
}

} // namespace

BENCHMARK_CAPTURE(Locale_Ours, german, German(), german)->Name("German date/ours");
BENCHMARK_CAPTURE(Locale_ICU, german, German(), "de_DE")->Name("German date/ICU");
BENCHMARK_CAPTURE(Locale_Ours, american, American(), american)->Name("American date/ours");
BENCHMARK_CAPTURE(Locale_ICU, american, American(), "en_US")->Name("American date/ICU");
BENCHMARK_CAPTURE(Machine_Ours, compact, Compact())->Name("compact date/ours");
BENCHMARK_CAPTURE(Machine_GLib, compact, CompactISO8601())->Name("compact date/GLib's ISO 8601");
BENCHMARK_CAPTURE(Machine_Ours, iso, ISO8601())->Name("ISO 8601 date/ours");
BENCHMARK_CAPTURE(Machine_GLib, iso, ISO8601())->Name("ISO 8601 date/GLib");
BENCHMARK_CAPTURE(Machine_Ours, rfc822, RFC822())->Name("RFC 822 date/ours");
BENCHMARK_CAPTURE(Machine_GMime, rfc822, RFC822())->Name("RFC 822 date/GMime");
