// Walks its own stack with functions, source lines and modules. docs/diagnostics.md shows the program and its output.
#include <qxut23/stacks.h>

#include <cstdio>
#include <cstring>

namespace
{

// The functions of this program up to main; the library and the system have frames around them.
void PrintOwnFrames(IDBGStackTraceList* frames)
{
    DBGStackTraceItem* frame = nullptr;
    while (frames->Next(1, &frame, nullptr) == 0)
    {
        if (std::strstr(frame->module, "stacks") == nullptr)
            continue;
        std::printf("%s", frame->name);
        if (const char* const file = std::strstr(frame->file, "stacks.cpp")) // empty if the line isn't known
            std::printf(" (%s, line %u)", file, frame->line);
        std::printf("\n");
        if (std::strcmp(frame->name, "main") == 0)
            return;
    }
}

[[gnu::noinline]] void Stack()
{
    const HDEBUGHELPJOB job = UtilDebugHelpJobOpen();
    UtilDebugHelpSetOption(job, 1, 20); // at most 20 frames
    UtilDebugHelpSetOption(job, 3, 3);  // modules, symbols, lines and variables
    IDBGStackTraceList* frames = nullptr;
    if (UtilDebugHelpGetStackTrace(job, &frames, nullptr) != 0)
    {
        PrintOwnFrames(frames);
        frames->Release();
    }
    else
        std::printf("no session: there is no debug-help library, or another job uses it\n");
    UtilDebugHelpJobClose(job);
}

[[gnu::noinline]] void Modules()
{
    const HDEBUGHELPJOB job = UtilDebugHelpJobOpen();
    IDBGModuleList* modules = nullptr;
    if (UtilDebugHelpGetModuleList(job, &modules) != 0)
    {
        DBGModuleItem* module = nullptr;
        while (modules->Next(1, &module, nullptr) == 0)
            if (std::strstr(module->name, "qxUT23") != nullptr)
                std::printf("%s, symbols from %s\n", module->name, module->symbolType);
        modules->Release();
    }
    UtilDebugHelpJobClose(job);
}

} // namespace

int main()
{
    std::printf("== Stack\n");
    Stack();
    std::printf("== Modules\n");
    Modules();
}
