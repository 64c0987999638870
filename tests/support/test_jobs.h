// Jobs and hosts for the tests of job pools. They count how they are used.
#pragma once

#include <qxut23/jobs.h>

#include <windows.h>

#include <unknwn.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <utility>

namespace qxtest
{

// The counters of a test, which outlive its jobs.
struct JobCounts
{
    std::atomic<int> alive = 0;
    std::atomic<int> runs = 0;
    std::atomic<int> told = 0;
    std::atomic<int> dropped = 0;    // jobs released without having run
    std::atomic<int> takenAgain = 0; // jobs that a host has taken more than once
};

// A reference-counted job with an initial count of 1.
class TestJob final : public IUTThreadedJob
{
public:
    using Work = std::function<void()>;

    explicit TestJob(JobCounts& counts, Work work = {}, std::int32_t group = 0, bool onWorker = true)
        : _counts(counts),
          _work(std::move(work)),
          _group(group),
          _onWorker(onWorker)
    {
        ++_counts.alive;
    }
    TestJob(const TestJob&) = delete;
    TestJob& operator=(const TestJob&) = delete;
    ~TestJob()
    {
        _counts.dropped += !_hasRun;
        --_counts.alive;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        constexpr GUID kJob = QXUT_IID_IUTTHREADEDJOB;
        const bool isKnown = offersInterface && iid == kJob;
        *object = isKnown ? this : nullptr;
        return isKnown ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++_references; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --_references;
        if (left == 0)
            delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE Run() override
    {
        ++_counts.runs;
        _hasRun = true;
        if (_work)
            _work();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetResult() override { return S_OK; }
    std::int32_t STDMETHODCALLTYPE GetGroup() override { return _group; }
    std::int32_t STDMETHODCALLTYPE CanRunOnWorker() override { return _onWorker; }

    // Called by the host. Returns true the first time.
    bool Take() { return ++_taken == 1; }
    bool HasRun() const { return _hasRun; }

    bool offersInterface = true;

private:
    JobCounts& _counts;
    const Work _work;
    const std::int32_t _group;
    const bool _onWorker;
    std::atomic<ULONG> _references = 1;
    std::atomic<int> _taken = 0;
    std::atomic<bool> _hasRun = false;
};

// Lives on the stack. `references` shows whether all references were released.
class TestHost final : public IUTThreadedJobHost
{
public:
    using Answer = std::function<std::int32_t(const wchar_t* name, IUTThreadedJob* job)>;

    explicit TestHost(Answer answer) : _answer(std::move(answer)) {}
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
    {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    std::int32_t STDMETHODCALLTYPE OnJobDone(const QXWCHAR* name, IUTThreadedJob* job) override
    {
        return _answer(name, job);
    }
    std::int32_t STDMETHODCALLTYPE WaitForJobs(void* event) override
    {
        ++waits;
        if (letsLibraryWait)
            return 1;
        WaitForSingleObject(event, 1);
        return 0;
    }

    bool letsLibraryWait = true;
    std::atomic<int> waits = 0;
    std::atomic<ULONG> references = 1;

private:
    const Answer _answer;
};

// Returns a function for a host that only counts. With an answer of 0, it takes each job.
inline TestHost::Answer CountAndAnswer(JobCounts& counts, std::int32_t answer)
{
    return [&counts, answer](const wchar_t*, IUTThreadedJob* job)
    {
        ++counts.told;
        if (answer == 0 && job && !static_cast<TestJob*>(job)->Take())
            ++counts.takenAgain;
        return answer;
    };
}

} // namespace qxtest
