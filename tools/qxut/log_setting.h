// The settings of the log file as the library reads them when a process loads it. Texts are UTF-8.
#pragma once

#include <string>

namespace qxut
{

struct LogSetting
{
    std::string path; // of the log file; empty if there is no log
    bool isFlushed = false;
    bool usesCounter = false; // lines show a counter instead of the time of day
};

LogSetting ReadLogSetting();

// Stores the settings. An empty name switches the log off. Throws a Failure.
void WriteLogSetting(const std::string& name, bool isFlushed);

} // namespace qxut
