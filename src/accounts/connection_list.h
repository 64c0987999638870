// The drives that the system remembers as connected with a share.
#pragma once

#include "core/text/string.h"

#include <windows.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace qx
{

struct RememberedConnection
{
    IString drive; // X:, or empty
    IString share; // \\server\share
};

// A walk over the remembered connections of disks, read in blocks.
class ConnectionList
{
public:
    static constexpr DWORD kBlockSize = 16000;

    explicit ConnectionList(DWORD blockSize = kBlockSize);
    ConnectionList(const ConnectionList&) = delete;
    ConnectionList& operator=(const ConnectionList&) = delete;
    ~ConnectionList();

    // Returns false if the system can't list the connections.
    bool IsOpen() const { return _walk != nullptr; }

    // Reads the first connections, enlarging the block if the system requires it. Returns false if reading still fails.
    // An empty list isn't a failure. Without this call, Find doesn't enlarge the block.
    bool ReadFirst();

    // Finds the next connection that `isWanted` accepts. Returns false if there is none up to the end of the list or
    // to the first error.
    bool Find(const std::function<bool(const RememberedConnection&)>& isWanted, RememberedConnection& found);

private:
    DWORD Read();

    HANDLE _walk = nullptr;
    DWORD _size;
    std::vector<std::max_align_t> _block;
    std::vector<RememberedConnection> _read; // the entries of the last block
    std::size_t _position = 0;               // index of the next entry in `_read`
};

} // namespace qx
