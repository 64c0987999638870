// The examples of docs/profile-store.md, which works through them in this order: the body of each function is a block
// of that page. Works in the current folder, and writes what the page shows. Streams are the system's, whose headers
// come with the library where the system has none; all else is in the public headers.
#include <qxut23/profile.h>
#include <qxut23/profile_values.h>

#include <objbase.h>
#include <oleauto.h>

#include <cstdint>
#include <cstdio>
#include <fstream>

namespace
{

void FirstProfile()
{
    HPROFJOB job = ProfJobOpenA("report.profile");
    std::printf("opened: %d\n", ProfGetError(job)); // it doesn't exist yet, but the job does

    ProfSetStringA(job, nullptr, "Title", "Sales by region");
    ProfSetStringA(job, nullptr, "Page/Size", "(210,297)"); // the list "Page" is made on the way
    ProfSetStringA(job, nullptr, "Page/Note", "first line\r\n\tsecond line");
    ProfSaveA(job, nullptr, PROF_FORM_TEXT);
    ProfJobClose(job);

    char size[64];
    job = ProfJobOpenA("report.profile");
    ProfGetStringA(job, nullptr, "Page/Size", size, sizeof size, "(100,100)");
    std::printf("opened: %d, size %s\n", ProfGetError(job), size);
    ProfJobClose(job);
}

void PathsAndLists()
{
    const HPROFJOB job = ProfJobOpenA("report.profile");
    const HPROFLIST page = ProfGetListA(job, nullptr, "Page");
    ProfSetStringA(job, page, "Margins/Left", "20");  // from the list on
    ProfSetStringA(job, page, "/Author", "E. Weber"); // from the root, whatever the list

    // Append never looks for what is there: these are two lists of one name, with a leaf each.
    for (const char* const column : {"Region", "Total"})
        ProfAppendStringA(job, ProfAppendListA(job, nullptr, "Column"), "Caption", column);

    // The first match is the one that a path means.
    char caption[64];
    ProfGetStringA(job, nullptr, "Column/Caption", caption, sizeof caption, "");
    std::printf("Column/Caption is %s\n", caption);

    const ProfEnumCallbackA print = [](HPROFJOB, const char* name, const char* value, HPROFLIST child,
                                        void*) -> std::int32_t
    {
        if (child != nullptr)
            std::printf("[%s]\n", name);
        else
            std::printf("%s=%s\n", name, value);
        return 1; // go on
    };
    ProfEnumA(job, nullptr, print, nullptr);

    ProfDeleteItemA(job, nullptr, "Page/Margins/Left");
    ProfDeleteListA(job, nullptr, "Page/Margins");
    ProfSaveA(job, "columns.profile", PROF_FORM_TEXT);
    ProfJobClose(job);
}

void TypedValues()
{
    const HPROFJOB job = ProfJobOpenA("typed.profile");
    const ProfPoint size{210, 297};
    const ProfRect window{100, 50, 900, 650};
    VARIANT printed;
    VariantInit(&printed);
    printed.vt = VT_DATE;
    printed.date = 45000.5;

    ProfSetBoolA(job, nullptr, "Duplex", 1);
    ProfSetIntA(job, nullptr, "Copies", 3);
    ProfSetIntHexA(job, nullptr, "Flags", 0x2A);
    ProfSetInt64A(job, nullptr, "Rows", 5'000'000'000);
    ProfSetDoubleA(job, nullptr, "Zoom", 1.25);
    ProfSetPointA(job, nullptr, "Size", &size);
    ProfSetRectA(job, nullptr, "Window", &window);
    ProfSetRectLTWHA(job, nullptr, "Frame", &window);
    ProfSetColorrefA(job, nullptr, "Ink", 0x00FF8000); // red in the low byte
    ProfSetVariant(job, nullptr, L"Printed", &printed);
    ProfSaveA(job, nullptr, PROF_FORM_TEXT);

    std::int32_t copies = 0;
    ProfPoint read{};
    ProfGetIntA(job, nullptr, "Copies", &copies, 1);
    ProfGetPointA(job, nullptr, "Size", &read, &size);
    std::printf("%d copies of %d x %d\n", copies, read.x, read.y);
    ProfJobClose(job);
}

void Errors()
{
    const HPROFJOB job = ProfJobOpenA("typed.profile");
    ProfSetStringA(job, nullptr, "Note", "twelve");

    std::int32_t value = 0;
    std::int32_t result = ProfGetIntA(job, nullptr, "Copies", &value, 1);
    std::printf("Copies: %d, value %d\n", result, value);
    result = ProfGetIntA(job, nullptr, "Pages", &value, 1); // there is none: the default
    std::printf("Pages: %d, value %d\n", result, value);
    result = ProfGetIntA(job, nullptr, "Note", &value, 5); // no number: the value stays
    std::printf("Note: %d, value %d\n", result, value);

    // The result is the whole length, so a short buffer can be told.
    char note[4];
    result = ProfGetStringA(job, nullptr, "Note", note, sizeof note, "");
    std::printf("Note: length %d, got %s\n", result, note);
    ProfJobClose(job);

    const HPROFJOB other = ProfJobOpenA(nullptr); // an empty job without a file
    ProfSetStringA(other, nullptr, "Title", "Draft");
    std::printf("without a file: %d\n", ProfSaveA(other, nullptr, PROF_FORM_TEXT));
    ProfJobClose(other);

    std::ofstream("damaged.xml") << R"(<?xml version="1.0" encoding="UTF-16" standalone="yes"?>
        <profile>
        <item name="Title">Draft</item>
        <list name="Page">
        <item name="Size">(297,420)</item>
        </profile>)";
    const HPROFJOB damaged = ProfJobOpenA("damaged.xml");
    const std::int32_t title = ProfGetStringLengthA(damaged, nullptr, "Title");
    const std::int32_t size = ProfGetStringLengthA(damaged, nullptr, "Page/Size"); // its list never ended
    std::printf("damaged: %d, Title %d, Page/Size %d\n", ProfGetError(damaged), title, size);
    ProfJobClose(damaged);
}

void Forms()
{
    const HPROFJOB job = ProfJobOpenA("report.profile");
    ProfSaveA(job, "report.xml", PROF_FORM_XML);
    ProfSaveA(job, "report.xfdf", PROF_FORM_XFDF);
    ProfSaveA(job, "report.packed", PROF_FORM_TEXT | PROF_SAVE_PACKED);
    ProfJobClose(job);

    // The form of a file is told by its content. XFDF comes back as leaves with dotted names.
    char size[64];
    for (const char* const name : {"report.xml", "report.packed", "report.xfdf"})
    {
        const HPROFJOB form = ProfJobOpenA(name);
        ProfGetStringA(form, nullptr, "Page/Size", size, sizeof size, "no Page/Size");
        std::printf("%s: %s\n", name, size);
        ProfJobClose(form);
    }
    const HPROFJOB fields = ProfJobOpenA("report.xfdf");
    ProfGetStringA(fields, nullptr, "Page.Size", size, sizeof size, "no Page.Size");
    std::printf("Page.Size: %s\n", size);
    ProfJobClose(fields);
}

void Sharing()
{
    const HPROFJOB writer = ProfJobOpenExclusiveA("shared.profile"); // made if it is missing
    ProfSetIntA(writer, nullptr, "Counter", 1);
    ProfSaveA(writer, nullptr, PROF_FORM_TEXT); // in place

    const HPROFJOB reader = ProfJobOpenA("shared.profile");
    const HPROFJOB second = ProfJobOpenExclusiveA("shared.profile"); // waits for 10 seconds
    std::printf("reader: %d, second writer: %d\n", ProfGetError(reader), ProfGetError(second));

    ProfJobClose(second);
    ProfJobClose(reader);
    ProfJobClose(writer);
}

void Streams()
{
    IStream* stream = nullptr;
    CreateStreamOnHGlobal(nullptr, TRUE, &stream);

    const HPROFJOB job = ProfJobOpenA("report.profile");
    ProfSaveToStream(job, stream, PROF_FORM_XML | PROF_SAVE_PACKED);
    ProfJobClose(job);

    char title[64];
    const HPROFJOB copy = ProfJobOpenStream(stream); // holds the stream until it is closed
    ProfGetStringA(copy, nullptr, "Title", title, sizeof title, "");
    std::printf("from the stream: %s\n", title);

    ProfSetStringA(copy, nullptr, "Title", "Sales by month");
    ProfSaveToStream(copy, nullptr, PROF_SAVE_PACKED_AS_LOADED); // to its own stream
    ProfJobClose(copy);
    stream->Release();
}

void Clipboard()
{
    const HPROFJOB job = ProfJobOpenA("report.profile");
    ProfSaveToClipboard(job, nullptr, PROF_FORM_TEXT);
    ProfJobClose(job);

    if (ProfIsClipboardDataAvailable())
    {
        char title[64];
        const HPROFJOB pasted = ProfJobOpenClipboard(nullptr);
        ProfGetStringA(pasted, nullptr, "Title", title, sizeof title, "");
        std::printf("pasted: %s\n", title);
        ProfJobClose(pasted);
    }
}

void EmbeddedFiles()
{
    const HPROFJOB job = ProfJobOpenA("bundle.profile");
    std::int32_t count = ProfAppendFilesA(job, nullptr, "report.x*", "pass phrase");
    std::printf("embedded: %d files\n", count);
    ProfSaveA(job, nullptr, PROF_FORM_TEXT);

    count = ProfExtractFilesA(job, nullptr, "out", "pass phrase");
    std::printf("extracted: %d files\n", count);
    ProfJobClose(job);
}

struct Scene
{
    const char* name;
    void (*play)();
};

constexpr Scene kScenes[] = {
    {"FirstProfile", FirstProfile},
    {"PathsAndLists", PathsAndLists},
    {"TypedValues", TypedValues},
    {"Errors", Errors},
    {"Forms", Forms},
    {"Sharing", Sharing},
    {"Streams", Streams},
    {"Clipboard", Clipboard},
    {"EmbeddedFiles", EmbeddedFiles},
};

} // namespace

int main()
{
    for (const Scene& scene : kScenes)
    {
        std::printf("== %s\n", scene.name);
        scene.play();
    }
}
