// The typed values that get, set and append support.
#pragma once

#include <qxut23/profile_values.h>

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace qxut
{

struct ValueType
{
    const char* name;
    const char* form; // the form of a value on the command line
    // Returns the code of the library's getter.
    std::int32_t (*get)(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, nlohmann::ordered_json& value);
    // Returns false and does nothing if the text is not of the type.
    bool (*set)(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const std::string& text);
    bool (*append)(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const std::string& text);
};

// Returns null if the name is unknown.
const ValueType* FindValueType(const std::string& name);
std::vector<std::string> ValueTypeNames();
// Returns a description with one line for each type.
std::string ValueTypeHelp();

// Formats a value for the command line, so that the output of get is valid input for set.
std::string ValueText(const nlohmann::ordered_json& value);

} // namespace qxut
