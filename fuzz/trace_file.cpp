// The reader of recorded markers.
#include "../tools/qxut/trace_reader.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const qxut::TraceContents trace = qxut::ReadTrace({reinterpret_cast<const char*>(data), size});
    for (const qxut::TraceMark& mark : trace.marks)
        if (mark.lane >= trace.lanes.size())
            abort();
    return 0;
}
