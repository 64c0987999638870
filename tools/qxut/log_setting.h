// The settings of the log file, as the library reads them when a process loads it. Texts are UTF-8.
#pragma once

#include <string>

namespace qxut
{

struct LogSetting
{
    std::string path; // where the lines go; empty if there is no log
    bool isFlushed = false;
    bool usesCounter = false; // for the time of a line
};

LogSetting ReadLogSetting();

// An empty name switches the log off. Throws a Failure.
void WriteLogSetting(const std::string& name, bool isFlushed);

} // namespace qxut
