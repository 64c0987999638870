// Counts the primes below a number, in slices that run as jobs on a pool, and shows how jobs, a host, progress and an
// abort go together. Nothing but the public header is used.
//
//     primes 10000000                  counts them
//     primes 10000000 --stop-after 5   gives up after five slices, as a user might who has seen enough; those that run
//                                      by then go on to their end
#include <qxut23/jobs.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

constexpr std::uint32_t kSliceCount = 64;

struct InterfaceId
{
    std::uint32_t first;
    std::uint16_t second, third;
    std::uint8_t rest[8];
};

constexpr InterfaceId kJobId = QXUT_IID_IUTTHREADEDJOB;

bool IsPrime(std::uint32_t number)
{
    if (number < 4)
        return number > 1;
    if (number % 2 == 0)
        return false;
    for (std::uint32_t divisor = 3; divisor <= number / divisor; divisor += 2)
        if (number % divisor == 0)
            return false;
    return true;
}

// A job: the library holds references to it, and the last one to go takes it along.
class Slice final : public IUTThreadedJob
{
public:
    Slice(std::uint32_t begin, std::uint32_t end) : _begin(begin), _end(end) {}
    virtual ~Slice() = default;

    QXHRESULT QXUT_COMCALL QueryInterface(const _GUID& iid, void** object) override
    {
        constexpr auto kNoInterface = static_cast<QXHRESULT>(0x80004002);
        *object = std::memcmp(&iid, &kJobId, sizeof kJobId) == 0 ? static_cast<IUTThreadedJob*>(this) : nullptr;
        if (!*object)
            return kNoInterface;
        AddRef();
        return 0;
    }
    QXULONG QXUT_COMCALL AddRef() override { return ++_references; }
    QXULONG QXUT_COMCALL Release() override
    {
        const QXULONG left = --_references;
        if (left == 0)
            delete this;
        return left;
    }

    QXHRESULT QXUT_COMCALL Run() override
    {
        for (std::uint32_t number = _begin; number < _end; ++number)
            _primes += IsPrime(number);
        return 0;
    }
    QXHRESULT QXUT_COMCALL GetResult() override { return 0; }
    std::int32_t QXUT_COMCALL GetGroup() override { return 0; }
    std::int32_t QXUT_COMCALL CanRunOnWorker() override { return 1; }

    std::uint32_t Primes() const { return _primes; }

private:
    std::atomic<QXULONG> _references = 1;
    const std::uint32_t _begin;
    const std::uint32_t _end;
    std::uint32_t _primes = 0;
};

// The host of the finalizing call: it is told on the thread that makes the call, so it needs no lock.
class Progress final : public IUTThreadedJobHost
{
public:
    Progress(HUTTHREADPOOL pool, std::uint32_t stopAfter) : _pool(pool), _stopAfter(stopAfter) {}

    QXHRESULT QXUT_COMCALL QueryInterface(const _GUID&, void** object) override
    {
        *object = nullptr;
        return static_cast<QXHRESULT>(0x80004002);
    }
    // It lives as long as main().
    QXULONG QXUT_COMCALL AddRef() override { return 2; }
    QXULONG QXUT_COMCALL Release() override { return 1; }

    std::int32_t QXUT_COMCALL OnJobDone(const QXWCHAR*, IUTThreadedJob* job) override
    {
        _primes += static_cast<Slice*>(job)->Primes();
        ++_slices;
        if (_slices % 8 == 0)
            std::printf("%u of %u slices, %u primes so far\n", _slices, kSliceCount, _primes);
        if (_slices == _stopAfter)
            UtilThreadPoolAbort(_pool, 0);
        return 0;
    }
    std::int32_t QXUT_COMCALL WaitForJobs(void*) override { return 1; }

    std::uint32_t Slices() const { return _slices; }
    std::uint32_t Primes() const { return _primes; }

private:
    const HUTTHREADPOOL _pool;
    const std::uint32_t _stopAfter;
    std::uint32_t _slices = 0;
    std::uint32_t _primes = 0;
};

std::uint32_t Number(const char* text)
{
    return static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10));
}

void AddSlices(HUTTHREADPOOL pool, std::uint32_t end)
{
    constexpr QXWCHAR kName[] = {'s', 'l', 'i', 'c', 'e', 0};
    const auto border = [end](std::uint32_t slice)
    {
        return static_cast<std::uint32_t>(std::uint64_t{end} * slice / kSliceCount);
    };
    for (std::uint32_t slice = 0; slice < kSliceCount; ++slice)
    {
        auto* const job = new Slice(border(slice), border(slice + 1));
        UtilThreadPoolAdd(pool, kName, reinterpret_cast<IUnknown*>(static_cast<IUTThreadedJob*>(job)), nullptr);
        job->Release(); // the pool has a reference of its own
    }
}

} // namespace

int main(int argc, char** argv)
{
    const bool stops = argc == 4 && std::strcmp(argv[2], "--stop-after") == 0;
    if (argc != 2 && !stops)
    {
        std::puts("usage: primes NUMBER [--stop-after SLICES]");
        return 2;
    }
    constexpr QXWCHAR kName[] = {'p', 'r', 'i', 'm', 'e', 's', 0};
    const HUTTHREADPOOL pool = UtilThreadPoolOpen(0, kName);
    Progress progress(pool, stops ? Number(argv[3]) : 0);
    AddSlices(pool, Number(argv[1]));
    UtilThreadPoolFinalize(pool, &progress);
    UtilThreadPoolClose(pool);

    if (progress.Slices() == kSliceCount)
        std::printf("%u primes below %u\n", progress.Primes(), Number(argv[1]));
    else
        std::printf(
            "stopped after %u of %u slices, with %u primes\n", progress.Slices(), kSliceCount, progress.Primes());
    return 0;
}
