// 100,000 leaves in 5,000 lists: load, look up 100,000 paths, set 10,000 values and save. The peers are GLib's
// GKeyFile, which is flat and 8-bit, and pugixml and Boost.PropertyTree with the same tree as XML. The library's XML
// form is compared with pugixml and Boost.PropertyTree, and the packed form with peers plus zlib at the same level. A
// flat list of a million leaves shows that no cost grows faster than the input.
#include "profile_input.h"

#include <qxut23/profile.h>

#include <benchmark/benchmark.h>
#include <boost/property_tree/ptree.hpp>
#include <boost/property_tree/xml_parser.hpp>
#include <glib.h>
#include <pugixml.hpp>
#include <zlib.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using bench::LeafPath;
using bench::MadeSettings;
using boost::property_tree::ptree;

using WideText = std::vector<wchar_t>;

WideText Wide(std::string_view text)
{
    WideText wide(text.begin(), text.end());
    wide.push_back(0);
    return wide;
}

void Check(bool isRight, const char* what)
{
    if (!isRight)
    {
        std::fprintf(stderr, "%s failed\n", what);
        std::abort();
    }
}

// The input files, in a folder that is deleted at the end.
class Files
{
public:
    Files()
    {
        std::filesystem::create_directories(_folder);
        Write("profile", bench::ProfileText(MadeSettings()));
        Write("xml", bench::XmlText(MadeSettings()));
        Write("xml8", bench::XmlTextUtf8(MadeSettings()));
        Write("ini", bench::IniText(MadeSettings()));
    }
    ~Files() { std::filesystem::remove_all(_folder); }

    std::string Path(const std::string& name) const { return (_folder / name).string(); }

    void Write(const std::string& name, const std::string& bytes)
    {
        std::ofstream(Path(name), std::ios::binary) << bytes;
    }

    std::string Read(const std::string& name) const
    {
        std::ifstream file(Path(name), std::ios::binary);
        std::string bytes(std::filesystem::file_size(Path(name)), '\0');
        file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return bytes;
    }

private:
    std::filesystem::path _folder =
        std::filesystem::temp_directory_path() / ("profile-bench-" + std::to_string(std::random_device()()));
};

Files& TheFiles()
{
    static Files files;
    return files;
}

// ---- The library

class OurJob
{
public:
    explicit OurJob(const std::string& file) : _job(ProfJobOpenW(Wide(TheFiles().Path(file)).data()))
    {
        Check(ProfGetError(_job) == PROF_OK, "opening the profile");
    }
    ~OurJob() { ProfJobClose(_job); }
    OurJob(const OurJob&) = delete;
    OurJob& operator=(const OurJob&) = delete;

    operator HPROFJOB() const { return _job; }

private:
    HPROFJOB _job;
};

const std::vector<WideText>& OurPaths()
{
    static const std::vector<WideText> paths = []
    {
        std::vector<WideText> made;
        for (const LeafPath& path : MadeSettings().paths)
            made.push_back(Wide(path.group + "/" + path.section + "/" + path.name));
        return made;
    }();
    return paths;
}

void LoadOurs(benchmark::State& state, const char* file)
{
    TheFiles();
    for (auto _ : state)
        OurJob job(file);
}

std::size_t LookUpAll(HPROFJOB job, const std::vector<WideText>& paths)
{
    wchar_t buffer[256];
    std::size_t found = 0;
    for (const WideText& path : paths)
        found += ProfGetStringW(job, nullptr, path.data(), buffer, 256, L"") > 0;
    return found;
}

// The library's lists build their indexes during the first look-ups, and the peer's while loading. "load, look up"
// includes this cost for both.
void LookUpOurs(benchmark::State& state, const char* file, const std::vector<WideText>& paths)
{
    const OurJob job(file);
    LookUpAll(job, paths);
    for (auto _ : state)
        Check(LookUpAll(job, paths) == paths.size(), "looking up");
}

void SetOurs(benchmark::State& state)
{
    const OurJob job("profile");
    for (auto _ : state)
    {
        for (std::size_t i = 0; i < OurPaths().size(); i += 10)
            ProfSetStringW(job, nullptr, OurPaths()[i].data(), L"new value");
    }
}

void SaveOurs(benchmark::State& state, const char* file, int form = PROF_FORM_TEXT)
{
    const OurJob job(file);
    const WideText target = Wide(TheFiles().Path("saved"));
    for (auto _ : state)
        Check(ProfSaveW(job, target.data(), form) == PROF_OK, "saving");
}

// ---- GKeyFile

class KeyFile
{
public:
    explicit KeyFile(const std::string& file) : _file(g_key_file_new())
    {
        Check(g_key_file_load_from_file(_file, TheFiles().Path(file).c_str(), G_KEY_FILE_NONE, nullptr),
            "loading the key file");
    }
    ~KeyFile() { g_key_file_unref(_file); }
    KeyFile(const KeyFile&) = delete;
    KeyFile& operator=(const KeyFile&) = delete;

    operator GKeyFile*() const { return _file; }

private:
    GKeyFile* _file;
};

void LoadKeyFile(benchmark::State& state, const char* file)
{
    TheFiles();
    for (auto _ : state)
        KeyFile loaded(file);
}

std::size_t LookUpAll(GKeyFile* file, const std::vector<LeafPath>& paths)
{
    std::size_t found = 0;
    for (const LeafPath& path : paths)
    {
        char* value = g_key_file_get_value(file, (path.group + "/" + path.section).c_str(), path.name.c_str(), nullptr);
        found += value != nullptr;
        g_free(value);
    }
    return found;
}

void LookUpKeyFile(benchmark::State& state)
{
    const KeyFile file("ini");
    for (auto _ : state)
        Check(LookUpAll(file, MadeSettings().paths) == MadeSettings().paths.size(), "looking up");
}

void SetKeyFile(benchmark::State& state)
{
    const KeyFile file("ini");
    const std::vector<LeafPath>& paths = MadeSettings().paths;
    for (auto _ : state)
    {
        for (std::size_t i = 0; i < paths.size(); i += 10)
            g_key_file_set_value(
                file, (paths[i].group + "/" + paths[i].section).c_str(), paths[i].name.c_str(), "new value");
    }
}

void SaveKeyFile(benchmark::State& state, const char* name)
{
    const KeyFile file(name);
    const std::string target = TheFiles().Path("saved");
    for (auto _ : state)
        Check(g_key_file_save_to_file(file, target.c_str(), nullptr), "saving");
}

// ---- pugixml

class Document : public pugi::xml_document
{
public:
    Document() { Check(load_file(TheFiles().Path("xml").c_str()), "loading the document"); }

    pugi::xml_node Find(const LeafPath& path) const
    {
        return child("profile")
            .find_child_by_attribute("list", "name", path.group.c_str())
            .find_child_by_attribute("list", "name", path.section.c_str())
            .find_child_by_attribute("item", "name", path.name.c_str());
    }
};

void LoadDocument(benchmark::State& state)
{
    TheFiles();
    for (auto _ : state)
        Document document;
}

void LookUpDocument(benchmark::State& state)
{
    const Document document;
    for (auto _ : state)
    {
        std::size_t found = 0;
        for (const LeafPath& path : MadeSettings().paths)
            found += *document.Find(path).text().get() != 0;
        Check(found == MadeSettings().paths.size(), "looking up");
    }
}

void SetDocument(benchmark::State& state)
{
    const Document document;
    const std::vector<LeafPath>& paths = MadeSettings().paths;
    for (auto _ : state)
    {
        for (std::size_t i = 0; i < paths.size(); i += 10)
            document.Find(paths[i]).text().set("new value");
    }
}

void SaveDocument(benchmark::State& state)
{
    const Document document;
    const std::string target = TheFiles().Path("saved");
    for (auto _ : state)
        Check(document.save_file(target.c_str(), " ", pugi::format_default, pugi::encoding_utf16_le), "saving");
}

// ---- Boost.PropertyTree, in UTF-8; look-ups use a tree of its own, whose paths are joined with dots

void LoadPropertyTree(benchmark::State& state)
{
    const std::string path = TheFiles().Path("xml8");
    for (auto _ : state)
    {
        ptree tree;
        read_xml(path, tree);
    }
}

void SavePropertyTree(benchmark::State& state)
{
    ptree tree;
    read_xml(TheFiles().Path("xml8"), tree);
    const std::string target = TheFiles().Path("saved");
    for (auto _ : state)
        write_xml(target, tree);
}

const std::vector<std::string>& DottedPaths()
{
    static const std::vector<std::string> paths = []
    {
        std::vector<std::string> made;
        for (const LeafPath& path : MadeSettings().paths)
            made.push_back(path.group + "." + path.section + "." + path.name);
        return made;
    }();
    return paths;
}

ptree MadeTree()
{
    ptree tree;
    for (const bench::Group& group : MadeSettings().groups)
        for (const bench::Section& section : group.sections)
            for (const bench::Leaf& leaf : section.leaves)
                tree.add(group.name + "." + section.name + "." + leaf.name, leaf.value);
    return tree;
}

void LookUpPropertyTree(benchmark::State& state)
{
    const ptree tree = MadeTree();
    DottedPaths();
    for (auto _ : state)
    {
        std::size_t found = 0;
        for (const std::string& path : DottedPaths())
            found += !tree.get<std::string>(path).empty();
        Check(found == DottedPaths().size(), "looking up");
    }
}

void SetPropertyTree(benchmark::State& state)
{
    ptree tree = MadeTree();
    DottedPaths();
    for (auto _ : state)
    {
        for (std::size_t i = 0; i < DottedPaths().size(); i += 10)
            tree.put(DottedPaths()[i], "new value");
    }
}

// ---- Packed: the peers plus zlib at its best level

std::string Deflated(const std::string& bytes)
{
    uLongf size = compressBound(static_cast<uLong>(bytes.size()));
    std::string packed(size, '\0');
    Check(compress2(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
              static_cast<uLong>(bytes.size()), Z_BEST_COMPRESSION) == Z_OK,
        "deflating");
    packed.resize(size);
    return packed;
}

std::string Inflated(const std::string& packed)
{
    z_stream stream{};
    Check(inflateInit(&stream) == Z_OK, "inflating");
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    std::string bytes;
    int result = Z_OK;
    while (result == Z_OK)
    {
        bytes.resize(bytes.size() + (1 << 20));
        stream.next_out = reinterpret_cast<Bytef*>(bytes.data() + stream.total_out);
        stream.avail_out = static_cast<uInt>(bytes.size() - stream.total_out);
        result = inflate(&stream, Z_NO_FLUSH);
    }
    Check(result == Z_STREAM_END, "inflating");
    bytes.resize(stream.total_out);
    inflateEnd(&stream);
    return bytes;
}

// Returns the name of a deflated input file.
const std::string& MadePacked(const char* file)
{
    static std::string name;
    name = std::string("packed ") + file;
    TheFiles().Write(name, Deflated(TheFiles().Read(file)));
    return name;
}

void LoadPackedOurs(benchmark::State& state)
{
    Check(ProfSaveW(OurJob("profile"), Wide(TheFiles().Path("packed")).data(), PROF_SAVE_PACKED) == PROF_OK, "saving");
    LoadOurs(state, "packed");
}

void LoadPackedKeyFile(benchmark::State& state)
{
    const std::string& name = MadePacked("ini");
    for (auto _ : state)
    {
        const std::string bytes = Inflated(TheFiles().Read(name));
        GKeyFile* const file = g_key_file_new();
        Check(g_key_file_load_from_data(file, bytes.data(), bytes.size(), G_KEY_FILE_NONE, nullptr), "loading");
        g_key_file_unref(file);
    }
}

void LoadPackedDocument(benchmark::State& state)
{
    const std::string& name = MadePacked("xml");
    for (auto _ : state)
    {
        const std::string bytes = Inflated(TheFiles().Read(name));
        pugi::xml_document document;
        Check(document.load_buffer(bytes.data(), bytes.size()), "loading");
    }
}

void SavePackedOurs(benchmark::State& state)
{
    SaveOurs(state, "profile", PROF_SAVE_PACKED);
}

void SavePackedKeyFile(benchmark::State& state)
{
    const KeyFile file("ini");
    for (auto _ : state)
    {
        std::size_t size = 0;
        char* const bytes = g_key_file_to_data(file, &size, nullptr);
        TheFiles().Write("saved", Deflated(std::string(bytes, size)));
        g_free(bytes);
    }
}

// The packed form contains UTF-16, so this is the amount of data the peer would have to compress for the same result.
void SavePackedWideKeyFile(benchmark::State& state)
{
    const KeyFile file("ini");
    for (auto _ : state)
    {
        std::size_t size = 0;
        long units = 0;
        char* const bytes = g_key_file_to_data(file, &size, nullptr);
        gunichar2* const wide = g_utf8_to_utf16(bytes, static_cast<long>(size), nullptr, &units, nullptr);
        Check(wide != nullptr, "converting");
        TheFiles().Write("saved", Deflated(std::string(reinterpret_cast<const char*>(wide),
                                      static_cast<std::size_t>(units) * sizeof(*wide))));
        g_free(wide);
        g_free(bytes);
    }
}

void SavePackedDocument(benchmark::State& state)
{
    const Document document;
    for (auto _ : state)
    {
        std::ostringstream bytes;
        document.save(bytes, " ", pugi::format_default, pugi::encoding_utf16_le);
        TheFiles().Write("saved", Deflated(bytes.str()));
    }
}

// ---- One list of a million leaves

constexpr int kFlatLeaves = 1000000;

std::string FlatName(int i)
{
    return "name" + std::to_string(i * 7919 % kFlatLeaves);
}

void MakeFlatFiles()
{
    static const bool isMade = []
    {
        std::string text = "[/]\r\n {\r\n", ini = "[flat]\n";
        for (int i = 0; i < kFlatLeaves; ++i)
        {
            const std::string line = FlatName(i) + "=value of " + std::to_string(i);
            text += " " + line + "\r\n";
            ini += line + "\n";
        }
        text += " }\r\n";
        std::string wide = "\xFF\xFE";
        for (const char c : text)
        {
            wide += c;
            wide += '\0';
        }
        TheFiles().Write("flat", wide);
        TheFiles().Write("flat ini", ini);
        return true;
    }();
    benchmark::DoNotOptimize(isMade);
}

constexpr int kFlatLookUps = 100000;

const std::vector<WideText>& FlatNamesWide()
{
    static const std::vector<WideText> names = []
    {
        std::vector<WideText> made;
        for (int i = 0; i < kFlatLookUps; ++i)
            made.push_back(Wide(FlatName(i * 10)));
        return made;
    }();
    return names;
}

const std::vector<std::string>& FlatNames()
{
    static const std::vector<std::string> names = []
    {
        std::vector<std::string> made;
        for (int i = 0; i < kFlatLookUps; ++i)
            made.push_back(FlatName(i * 10));
        return made;
    }();
    return names;
}

void LookUpFlat(GKeyFile* file)
{
    for (const std::string& name : FlatNames())
    {
        char* value = g_key_file_get_value(file, "flat", name.c_str(), nullptr);
        Check(value != nullptr, "looking up");
        g_free(value);
    }
}

void LookUpFlatOurs(benchmark::State& state)
{
    MakeFlatFiles();
    LookUpOurs(state, "flat", FlatNamesWide());
}

void LookUpFlatKeyFile(benchmark::State& state)
{
    MakeFlatFiles();
    const KeyFile file("flat ini");
    FlatNames();
    for (auto _ : state)
        LookUpFlat(file);
}

void LoadAndLookUpFlatOurs(benchmark::State& state)
{
    MakeFlatFiles();
    FlatNamesWide();
    for (auto _ : state)
        Check(LookUpAll(OurJob("flat"), FlatNamesWide()) == FlatNamesWide().size(), "looking up");
}

void LoadAndLookUpFlatKeyFile(benchmark::State& state)
{
    MakeFlatFiles();
    FlatNames();
    for (auto _ : state)
        LookUpFlat(KeyFile("flat ini"));
}

void LoadFlatOurs(benchmark::State& state)
{
    MakeFlatFiles();
    LoadOurs(state, "flat");
}

void LoadFlatKeyFile(benchmark::State& state)
{
    MakeFlatFiles();
    LoadKeyFile(state, "flat ini");
}

void SaveFlatOurs(benchmark::State& state)
{
    MakeFlatFiles();
    SaveOurs(state, "flat");
}

void SaveFlatKeyFile(benchmark::State& state)
{
    MakeFlatFiles();
    SaveKeyFile(state, "flat ini");
}

struct Operation
{
    const char* name;
    void (*run)(benchmark::State& state);
};

constexpr Operation kOperations[] = {
    {"load/ours",
        [](benchmark::State& state)
        {
            LoadOurs(state, "profile");
        }},
    {"load/GKeyFile",
        [](benchmark::State& state)
        {
            LoadKeyFile(state, "ini");
        }},
    {"load/pugixml", LoadDocument},
    {"load/PropertyTree", LoadPropertyTree},
    {"look up 100000/ours",
        [](benchmark::State& state)
        {
            LookUpOurs(state, "profile", OurPaths());
        }},
    {"look up 100000/GKeyFile", LookUpKeyFile},
    {"look up 100000/pugixml", LookUpDocument},
    {"look up 100000/PropertyTree", LookUpPropertyTree},
    {"set 10000/ours", SetOurs},
    {"set 10000/GKeyFile", SetKeyFile},
    {"set 10000/pugixml", SetDocument},
    {"set 10000/PropertyTree", SetPropertyTree},
    {"save/ours",
        [](benchmark::State& state)
        {
            SaveOurs(state, "profile");
        }},
    {"save/GKeyFile",
        [](benchmark::State& state)
        {
            SaveKeyFile(state, "ini");
        }},
    {"save/pugixml", SaveDocument},
    {"save/PropertyTree", SavePropertyTree},
    {"XML: load/ours",
        [](benchmark::State& state)
        {
            LoadOurs(state, "xml");
        }},
    {"XML: load/pugixml", LoadDocument},
    {"XML: load/PropertyTree", LoadPropertyTree},
    {"XML: save/ours",
        [](benchmark::State& state)
        {
            SaveOurs(state, "xml", PROF_FORM_XML);
        }},
    {"XML: save/pugixml", SaveDocument},
    {"XML: save/PropertyTree", SavePropertyTree},
    {"packed: load/ours", LoadPackedOurs},
    {"packed: load/GKeyFile, zlib", LoadPackedKeyFile},
    {"packed: load/pugixml, zlib", LoadPackedDocument},
    {"packed: save/ours", SavePackedOurs},
    {"packed: save/GKeyFile, zlib", SavePackedKeyFile},
    {"packed: save/GKeyFile in UTF-16, zlib", SavePackedWideKeyFile},
    {"packed: save/pugixml, zlib", SavePackedDocument},
    {"flat: load/ours", LoadFlatOurs},
    {"flat: load/GKeyFile", LoadFlatKeyFile},
    {"flat: look up 100000/ours", LookUpFlatOurs},
    {"flat: look up 100000/GKeyFile", LookUpFlatKeyFile},
    {"flat: load, look up 100000/ours", LoadAndLookUpFlatOurs},
    {"flat: load, look up 100000/GKeyFile", LoadAndLookUpFlatKeyFile},
    {"flat: save/ours", SaveFlatOurs},
    {"flat: save/GKeyFile", SaveFlatKeyFile},
};

const bool areRegistered = []
{
    for (const Operation& operation : kOperations)
        benchmark::RegisterBenchmark(operation.name, operation.run)->Unit(benchmark::kMillisecond)->UseRealTime();
    return true;
}();

} // namespace
