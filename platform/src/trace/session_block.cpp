#include "trace/session_block.h"

#include "base/home.h"
#include "base/user_folder.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <linux/futex.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace qxplatform
{

// The contents are written only by the user's own programs, but any of them may be faulty, so readers trust nothing.
struct SessionBlock::Layout
{
    std::atomic<LONG> counter; // odd while the rest is being changed
    std::uint32_t level;
    std::uint64_t id;
    std::uint64_t anyKeywords;
    std::uint64_t allKeywords;
    char file[kLongestFile + 1];
};

namespace
{

std::string BlockName()
{
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char c : HomeFolder())
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    char name[32];
    std::snprintf(name, sizeof(name), "trace-%016llx", static_cast<unsigned long long>(hash));
    return name;
}

} // namespace

bool SessionBlock::Open()
{
    constexpr int kTries = 100;
    constexpr timespec kPause = {0, 1'000'000};
    _folder = OpenUserFolder();
    _name = BlockName();
    for (int left = kTries; _folder && left > 0; --left)
    {
        if (OpenOnce())
            return true;
        if (errno != EAGAIN)
            return false;
        nanosleep(&kPause, nullptr);
    }
    return false;
}

// Fails with EAGAIN if another process is just removing the file.
bool SessionBlock::OpenOnce()
{
    Descriptor file = OpenInUserFolder(_folder, _name, O_RDWR | O_CREAT);
    struct stat status;
    if (!file || flock(file.Get(), LOCK_SH | LOCK_NB) != 0 || fstat(file.Get(), &status) != 0)
        return false;
    if (status.st_nlink == 0)
        return errno = EAGAIN, false;
    // Allocates the memory now: a store into a page that can't be allocated would end the process.
    if (const int code = posix_fallocate(file.Get(), 0, sizeof(Layout)); code != 0)
        return errno = code, false;
    void* const view = mmap(nullptr, sizeof(Layout), PROT_READ | PROT_WRITE, MAP_SHARED, file.Get(), 0);
    if (view == MAP_FAILED)
        return false;
    _layout = static_cast<Layout*>(view);
    _file = std::move(file);
    return true;
}

SessionBlock::~SessionBlock()
{
    if (!_layout)
        return;
    const bool isInUse = _layout->id != 0 || IsForgotten() || flock(_file.Get(), LOCK_EX | LOCK_NB) != 0;
    if (!isInUse)
        unlinkat(_folder.Get(), _name.c_str(), 0);
    munmap(_layout, sizeof(Layout));
}

TraceSession SessionBlock::Read() const
{
    TraceSession session;
    const LONG counter = _layout->counter.load(std::memory_order_acquire);
    session.id = _layout->id;
    session.level = static_cast<std::uint8_t>(_layout->level);
    session.anyKeywords = _layout->anyKeywords;
    session.allKeywords = _layout->allKeywords;
    session.file.assign(_layout->file, strnlen(_layout->file, kLongestFile));
    std::atomic_thread_fence(std::memory_order_acquire);
    const bool isWhole = counter % 2 == 0 && counter == _layout->counter.load(std::memory_order_relaxed);
    return isWhole && session.id != 0 && !session.file.empty() ? session : TraceSession();
}

void SessionBlock::Write(const TraceSession& session)
{
    // A program that was killed while it changed the session has left an odd number.
    const LONG before = _layout->counter.load(std::memory_order_relaxed);
    const LONG changing = before % 2 == 0 ? before + 1 : before;
    _layout->counter.store(changing, std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_release);
    _layout->id = session.id;
    _layout->level = session.level;
    _layout->anyKeywords = session.anyKeywords;
    _layout->allKeywords = session.allKeywords;
    const std::size_t length = std::min(session.file.size(), kLongestFile);
    std::memcpy(_layout->file, session.file.data(), length);
    _layout->file[length] = '\0';
    _layout->counter.store(static_cast<LONG>(static_cast<DWORD>(changing) + 1), std::memory_order_release);
    syscall(SYS_futex, &_layout->counter, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

LONG SessionBlock::Counter() const
{
    return _layout->counter.load(std::memory_order_acquire);
}

void SessionBlock::WaitForChange(LONG counter) const
{
    syscall(SYS_futex, &_layout->counter, FUTEX_WAIT, counter, nullptr, nullptr, 0);
}

void SessionBlock::Nudge()
{
    _layout->counter.fetch_add(2, std::memory_order_acq_rel);
    syscall(SYS_futex, &_layout->counter, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

bool SessionBlock::IsForgotten() const
{
    struct stat status;
    return fstat(_file.Get(), &status) != 0 || status.st_nlink == 0;
}

// An fcntl lock, because the users of the block hold flock locks on the same file.
bool SessionBlock::Lock() const
{
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    return fcntl(_file.Get(), F_OFD_SETLK, &whole) == 0;
}

} // namespace qxplatform
