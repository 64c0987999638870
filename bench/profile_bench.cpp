// 100,000 leaves in 5,000 lists: load, look up 100,000 paths, set 10,000 values and save, beside GLib's GKeyFile, which
// is flat and 8-bit, and pugixml and Boost.PropertyTree with the same tree as XML; the XML form beside them. A flat
// list of a million leaves shows that nothing grows faster than its input.
#include "profile_input.h"

#include <qxut23/profile.h>

#include <benchmark/benchmark.h>
#include <boost/property_tree/ptree.hpp>
#include <boost/property_tree/xml_parser.hpp>
#include <glib.h>
#include <pugixml.hpp>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using bench::LeafPath;
using bench::MadeSettings;

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

// The input files, in a folder that goes at the end.
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

private:
    std::filesystem::path _folder =
        std::filesystem::temp_directory_path() / ("profile-bench-" + std::to_string(std::random_device()()));
};

Files& TheFiles()
{
    static Files files;
    return files;
}

// ---- Ours

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

void LookUpOurs(benchmark::State& state)
{
    const OurJob job("profile");
    OurPaths();
    wchar_t buffer[256];
    for (auto _ : state)
    {
        size_t found = 0;
        for (const WideText& path : OurPaths())
            found += ProfGetStringW(job, nullptr, path.data(), buffer, 256, L"") > 0;
        Check(found == OurPaths().size(), "looking up");
    }
}

void SetOurs(benchmark::State& state)
{
    const OurJob job("profile");
    for (auto _ : state)
    {
        for (size_t i = 0; i < OurPaths().size(); i += 10)
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

void LookUpKeyFile(benchmark::State& state)
{
    const KeyFile file("ini");
    for (auto _ : state)
    {
        size_t found = 0;
        for (const LeafPath& path : MadeSettings().paths)
        {
            char* value =
                g_key_file_get_value(file, (path.group + "/" + path.section).c_str(), path.name.c_str(), nullptr);
            found += value != nullptr;
            g_free(value);
        }
        Check(found == MadeSettings().paths.size(), "looking up");
    }
}

void SetKeyFile(benchmark::State& state)
{
    const KeyFile file("ini");
    const std::vector<LeafPath>& paths = MadeSettings().paths;
    for (auto _ : state)
    {
        for (size_t i = 0; i < paths.size(); i += 10)
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
        size_t found = 0;
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
        for (size_t i = 0; i < paths.size(); i += 10)
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

// ---- Boost.PropertyTree, in UTF-8

void LoadPropertyTree(benchmark::State& state)
{
    const std::string path = TheFiles().Path("xml8");
    for (auto _ : state)
    {
        boost::property_tree::ptree tree;
        boost::property_tree::read_xml(path, tree);
    }
}

void SavePropertyTree(benchmark::State& state)
{
    boost::property_tree::ptree tree;
    boost::property_tree::read_xml(TheFiles().Path("xml8"), tree);
    const std::string target = TheFiles().Path("saved");
    for (auto _ : state)
        boost::property_tree::write_xml(target, tree);
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

void LookUpFlatOurs(benchmark::State& state)
{
    MakeFlatFiles();
    const OurJob job("flat");
    wchar_t buffer[256];
    std::vector<WideText> names;
    for (int i = 0; i < 100000; ++i)
        names.push_back(Wide(FlatName(i * 10)));
    for (auto _ : state)
    {
        for (const WideText& name : names)
            Check(ProfGetStringW(job, nullptr, name.data(), buffer, 256, L"") > 0, "looking up");
    }
}

void LookUpFlatKeyFile(benchmark::State& state)
{
    MakeFlatFiles();
    const KeyFile file("flat ini");
    std::vector<std::string> names;
    for (int i = 0; i < 100000; ++i)
        names.push_back(FlatName(i * 10));
    for (auto _ : state)
    {
        for (const std::string& name : names)
        {
            char* value = g_key_file_get_value(file, "flat", name.c_str(), nullptr);
            Check(value != nullptr, "looking up");
            g_free(value);
        }
    }
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
    {"look up 100000/ours", LookUpOurs},
    {"look up 100000/GKeyFile", LookUpKeyFile},
    {"look up 100000/pugixml", LookUpDocument},
    {"set 10000/ours", SetOurs},
    {"set 10000/GKeyFile", SetKeyFile},
    {"set 10000/pugixml", SetDocument},
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
    {"flat: load/ours", LoadFlatOurs},
    {"flat: load/GKeyFile", LoadFlatKeyFile},
    {"flat: look up 100000/ours", LookUpFlatOurs},
    {"flat: look up 100000/GKeyFile", LookUpFlatKeyFile},
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
