// The settings that the profile benchmark works on: 100,000 leaves in 5,000 lists, in the spelling of each peer.
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

// Always the same.
const Settings& MadeSettings();

std::string ProfileText(const Settings& settings); // UTF-16 with the mark, as the library saves it
std::string XmlText(const Settings& settings);     // the same, as the library's XML form has it
std::string XmlTextUtf8(const Settings& settings); // and in UTF-8
std::string IniText(const Settings& settings);     // UTF-8, a section for each list

} // namespace bench
