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

// Limits the indentation; otherwise the output would grow with the square of the depth.
std::string Indent(std::size_t depth)
{
    return std::string(kIndent * std::min(depth, kDeepestIndent), ' ');
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

// Writes JSON piece by piece, because a JSON object of the whole profile would be processed recursively.
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
