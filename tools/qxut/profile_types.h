// The types of values that are no texts, for get, set and append.
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
    const char* form; // how a value is written on the command line
    // The code of the library's getter.
    std::int32_t (*get)(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, nlohmann::ordered_json& value);
    // False, with nothing done, for what is no value of the type.
    bool (*set)(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const std::string& text);
    bool (*append)(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const std::string& text);
};

// Null for an unknown name.
const ValueType* FindValueType(const std::string& name);
std::vector<std::string> ValueTypeNames();
// A line for each type.
std::string ValueTypeHelp();

// In the form of the command line, so that what get prints can be given to set.
std::string ValueText(const nlohmann::ordered_json& value);

} // namespace qxut
