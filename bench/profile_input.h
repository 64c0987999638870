// The settings used by the profile benchmarks: 100,000 leaves in 5,000 lists, in the format of each peer.
#pragma once

#include <string>
#include <vector>

namespace bench
{

struct Leaf
{
    std::string name;
    std::string value;
};

struct Section
{
    std::string name;
    std::vector<Leaf> leaves;
};

struct Group
{
    std::string name;
    std::vector<Section> sections;
};

struct LeafPath
{
    std::string group;
    std::string section;
    std::string name;
};

struct Settings
{
    std::vector<Group> groups;
    std::vector<LeafPath> paths; // 100,000, drawn at random
};

// Returns the same settings in every run.
const Settings& MadeSettings();

std::string ProfileText(const Settings& settings); // UTF-16 with a byte order mark, as saved by the library
std::string XmlText(const Settings& settings);     // the same in the library's XML form
std::string XmlTextUtf8(const Settings& settings); // the same in UTF-8
std::string IniText(const Settings& settings);     // UTF-8, one section per list

} // namespace bench
