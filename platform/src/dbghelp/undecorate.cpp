#include "dbghelp/undecorate.h"

#include <cctype>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <cxxabi.h>

namespace qxplatform
{
namespace
{

constexpr std::string_view kOperator = "operator";
constexpr std::string_view kAnonymous = "(anonymous namespace)";

bool IsPartOfWord(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '$';
}

// Returns the length of "operator" and its symbol at a position, or 0. A conversion extends to its parameters.
std::size_t OperatorLength(std::string_view text, std::size_t position)
{
    if (!text.substr(position).starts_with(kOperator) || (position > 0 && IsPartOfWord(text[position - 1])))
        return 0;
    std::size_t end = position + kOperator.size();
    if (end >= text.size() || IsPartOfWord(text[end]))
        return 0;
    if (text.substr(end).starts_with("()") || text.substr(end).starts_with("[]"))
        return end + 2 - position;
    if (text[end] == ' ') // a conversion, new, delete, or a literal's suffix
    {
        int depth = 0;
        while (++end < text.size() && (depth > 0 || text[end] != '('))
            depth += text[end] == '<' ? 1 : text[end] == '>' ? -1 : 0;
        return end - position;
    }
    while (end < text.size() && std::string_view("<>=!+-*/%&|^~,").find(text[end]) != std::string_view::npos)
        ++end;
    // The '<' at the end begins template arguments, except in "<", "<<" and "<=" themselves.
    const std::string_view symbol = text.substr(position + kOperator.size(), end - position - kOperator.size());
    if (symbol.size() > 1 && symbol.back() == '<' && symbol != "<<")
        --end;
    return end - position;
}

// Returns the position after the bracket that closes the one at `position`.
std::size_t AfterBrackets(std::string_view text, std::size_t position)
{
    int depth = 0;
    while (position < text.size())
    {
        if (const std::size_t length = OperatorLength(text, position))
        {
            position += length;
            continue;
        }
        const char c = text[position++];
        depth += c == '(' || c == '<' || c == '[' || c == '{' ? 1 : 0;
        if ((c == ')' || c == ']' || c == '}' || (c == '>' && text[position - 2] != '-')) && --depth == 0)
            break;
    }
    return position;
}

} // namespace

std::string DemangledName(const char* name)
{
    const std::string_view whole(name);
    const std::string plain(whole.substr(0, whole.find('@', whole.empty() ? 0 : 1)));
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> demangled(
        plain.starts_with("_Z") ? abi::__cxa_demangle(plain.c_str(), nullptr, nullptr, &status) : nullptr, &std::free);
    return demangled ? std::string(demangled.get()) : plain;
}

// The name ends at the first parenthesis outside of brackets, unless "::" follows its end, as for members of local
// classes. It begins after the last blank before that.
std::string NameWithoutParameters(const std::string& demangled)
{
    const std::string_view text = demangled;
    std::size_t begin = 0;
    std::size_t position = 0;
    while (position < text.size())
    {
        if (const std::size_t length = OperatorLength(text, position))
        {
            position += length;
            continue;
        }
        const char c = text[position];
        if (c == '(' && !text.substr(position).starts_with(kAnonymous))
        {
            std::size_t after = AfterBrackets(text, position);
            for (const std::string_view qualifier : {" const", " volatile", " &&", " &"})
                if (text.substr(after).starts_with(qualifier) && text.substr(after).find("::") == qualifier.size())
                    after += qualifier.size();
            if (!text.substr(after).starts_with("::"))
                break;
            position = after;
        }
        else if (c == '(' || c == '<' || c == '[' || c == '{')
            position = AfterBrackets(text, position);
        else if (c == ' ' && text.substr(position).starts_with(" [clone"))
            break;
        else
        {
            ++position;
            if (c == ' ')
                begin = position;
        }
    }
    // "decltype (x) name" and similar results contain a parenthesis before the name.
    return begin < position ? std::string(text.substr(begin, position - begin)) : demangled;
}

} // namespace qxplatform
