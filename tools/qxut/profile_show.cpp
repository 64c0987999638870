#include "profile_show.h"

#include "profile_file.h"
#include "text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>

namespace qxut
{

namespace
{

constexpr std::size_t kIndent = 2;
constexpr std::size_t kDeepestIndent = 100;

// Deeper lists stand in one column: else what is shown would grow with the square of the depth.
std::string Indent(std::size_t depth)
{
    return std::string(kIndent * std::min(depth, kDeepestIndent), ' ');
}

std::string JsonText(const std::string& text)
{
    return nlohmann::json(text).dump();
}

} // namespace

void ShowAsText(std::ostream& out, HPROFJOB job, HPROFLIST list)
{
    Walk(
        job, list,
        [&](const Entry& entry, std::size_t depth)
        {
            out << Indent(depth);
            if (entry.list != nullptr)
                out << '[' << Shown(entry.name) << "]\n";
            else
                out << Shown(entry.name) << " = " << Shown(entry.value) << '\n';
        },
        [](std::size_t) {});
}

// Written piece by piece, since a JSON object of the whole would be walked by recursion.
void ShowAsJson(std::ostream& out, HPROFJOB job, HPROFLIST list)
{
    bool isFirst = true;
    out << '[';
    Walk(
        job, list,
        [&](const Entry& entry, std::size_t depth)
        {
            out << (isFirst ? "\n" : ",\n") << Indent(depth + 1) << "{\"name\": " << JsonText(entry.name);
            isFirst = entry.list != nullptr;
            if (entry.list != nullptr)
                out << ", \"list\": [";
            else
                out << ", \"value\": " << JsonText(entry.value) << '}';
        },
        [&](std::size_t depth)
        {
            if (!isFirst)
                out << '\n' << Indent(depth);
            out << (depth == 0 ? "]\n" : "]}");
            isFirst = false;
        });
}

} // namespace qxut
