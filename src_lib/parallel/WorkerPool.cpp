#include "parallel/WorkerPool.h"

#include <algorithm>
#include <charconv>
#include <condition_variable>
#include <cstdlib>
#include <list>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

#if defined(__unix__) || defined(__APPLE__)
#include <pthread.h>
#endif

namespace TARN_ZEF
{
namespace
{
constexpr int MAX_THREADS = 256;

thread_local bool bWorkerThread = false;

int readNumThreads()
{
    const int hardware = static_cast<int>(std::thread::hardware_concurrency());
    const int fallback = std::clamp(hardware, 1, MAX_THREADS);
    const char* const pText = std::getenv("ZEF_THREADS");
    if (pText == nullptr)
        return fallback;
    const std::string_view text(pText);
    int n = 0;
    const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), n);
    const bool bWhole = error == std::errc() && pEnd == text.data() + text.size();
    return bWhole && n >= 1 && n <= MAX_THREADS ? n : fallback;
}

std::atomic<int>& numThreadsSetting()
{
    static std::atomic<int> setting(readNumThreads());
    return setting;
}

} // namespace

// What the workers see of the pool.
struct WorkerPool::Shared
{
    // The next job, or a null pointer.
    [[nodiscard]] std::unique_ptr<Job> take()
    {
        const std::lock_guard<std::mutex> lock(queueMtx);
        if (queue.empty())
            return nullptr;
        std::unique_ptr<Job> pJob = std::move(queue.front());
        queue.pop_front();
        return pJob;
    }

    // False if the pool takes no more jobs. The flags rise under the same mutex, so a worker that saw one
    // of them and then an empty queue has nothing to come.
    [[nodiscard]] bool put(std::unique_ptr<Job>& pJob)
    {
        const std::lock_guard<std::mutex> lock(queueMtx);
        if (bFinish || bEnd || numThreads == 0)
            return false;
        queue.push_back(std::move(pJob));
        return true;
    }

    void wakeOne()
    {
        const std::lock_guard<std::mutex> lock(mtx);
        if (numWaiting > 0)
            cv.notify_one();
    }

    void wakeAll()
    {
        const std::lock_guard<std::mutex> lock(mtx);
        cv.notify_all();
    }

    void runWorker(int index, const std::atomic<bool>& bStop);

    std::list<std::unique_ptr<Job>> queue;
    std::mutex queueMtx;
    std::atomic<bool> bFinish{false};
    std::atomic<bool> bEnd{false};
    std::atomic<int> numWaiting{0};
    std::atomic<int> numThreads{0};
    std::mutex mtx;
    std::condition_variable cv;
};

void WorkerPool::Shared::runWorker(int index, const std::atomic<bool>& bStop)
{
    bWorkerThread = true;
    std::unique_ptr<Job> pJob = take();
    while (true)
    {
        while (pJob != nullptr)
        {
            (*pJob)(index);
            pJob.reset();
            if (bStop)
                return;
            pJob = take();
        }
        std::unique_lock<std::mutex> lock(mtx);
        ++numWaiting;
        cv.wait(lock,
                [&]
                {
                    const bool bLast = bFinish || bEnd || bStop;
                    pJob = take();
                    return pJob != nullptr || bLast;
                });
        --numWaiting;
        if (pJob == nullptr)
            return;
    }
}

WorkerPool::WorkerPool(int numThreads)
    : pShared(std::make_shared<Shared>())
{
    try
    {
        resize(numThreads);
    }
    catch (...)
    {
        // No memory for more threads, and the ones that run must not be left alone.
        stop(true);
        throw;
    }
}

WorkerPool::~WorkerPool()
{
    stop(true);
}

std::future<void> WorkerPool::push(Job job)
{
    auto pTask = std::make_shared<std::packaged_task<void(int)>>(std::move(job));
    std::future<void> handle = pTask->get_future();
    auto pJob = std::make_unique<Job>([pTask](int index) { (*pTask)(index); });
    if (pShared->put(pJob))
        pShared->wakeOne();
    else
        (*pJob)(0);
    return handle;
}

void WorkerPool::stop(bool bWait)
{
    std::list<std::unique_ptr<Job>> dropped;
    std::vector<std::thread> vEnding;
    {
        const std::lock_guard<std::mutex> lock(threadsMtx);
        const std::lock_guard<std::mutex> queueLock(pShared->queueMtx);
        if (bWait)
            pShared->bFinish = true;
        else
        {
            pShared->bEnd = true;
            for (const auto& pFlag : vStopFlags)
                *pFlag = true;
            dropped.swap(pShared->queue);
        }
        vEnding.swap(vThreads);
        vStopFlags.clear();
    }
    // Whoever waits for one of these learns it now, not when the last worker has ended.
    dropped.clear();
    pShared->wakeAll();
    for (std::thread& thread : vEnding)
    {
        // A job that ends the process gets here on its own worker.
        if (thread.get_id() == std::this_thread::get_id())
            thread.detach();
        else
            thread.join();
    }
    const std::lock_guard<std::mutex> lock(pShared->queueMtx);
    pShared->numThreads = 0;
    pShared->queue.clear();
}

void WorkerPool::resize(int n)
{
    const std::size_t num = static_cast<std::size_t>(std::max(n, 1));
    const std::lock_guard<std::mutex> lock(threadsMtx);
    if (pShared->bFinish || pShared->bEnd)
        return;
    if (vThreads.size() > num)
        shrinkTo(num);
    else
        growTo(num);
}

int WorkerPool::size() const
{
    const std::lock_guard<std::mutex> lock(threadsMtx);
    return static_cast<int>(vThreads.size());
}

void WorkerPool::shrinkTo(std::size_t num)
{
    pShared->numThreads = static_cast<int>(num);
    for (std::size_t i = num; i < vThreads.size(); ++i)
    {
        *vStopFlags[i] = true;
        vThreads[i].detach();
    }
    pShared->wakeAll();
    vThreads.resize(num);
    vStopFlags.resize(num);
}

void WorkerPool::growTo(std::size_t num)
{
    vThreads.reserve(num);
    vStopFlags.reserve(num);
    while (vThreads.size() < num)
    {
        auto pFlag = std::make_shared<std::atomic<bool>>(false);
        const int index = static_cast<int>(vThreads.size());
        try
        {
            vThreads.emplace_back([pAll = pShared, pFlag, index] { pAll->runWorker(index, *pFlag); });
        }
        catch (const std::system_error&)
        {
            // The system gives no more threads: fewer do the same work.
            return;
        }
        vStopFlags.push_back(std::move(pFlag));
        pShared->numThreads = static_cast<int>(vThreads.size());
    }
}

namespace
{
// Holds the pool of the process, and gives a forked child one of its own.
//
// Threads:  any.
class PoolOfProcess
{
public:
    PoolOfProcess()
    {
#if defined(__unix__) || defined(__APPLE__)
        // Without memory for the handler the process has no pool either: the next call tries again.
        if (pthread_atfork(nullptr, nullptr, leaveToParent) != 0)
            throw std::bad_alloc();
#endif
    }
    ~PoolOfProcess()
    {
        delete pPool.exchange(nullptr);
    }
    PoolOfProcess(const PoolOfProcess&) = delete;
    PoolOfProcess& operator=(const PoolOfProcess&) = delete;

    // No lock, which another thread could hold at the moment of a fork.
    [[nodiscard]] WorkerPool& get()
    {
        WorkerPool* pFound = pPool;
        if (pFound != nullptr)
            return *pFound;
        auto pNew = std::make_unique<WorkerPool>(getNumThreads());
        return pPool.compare_exchange_strong(pFound, pNew.get()) ? *pNew.release() : *pFound;
    }

private:
    // The child has none of the threads, so neither may it wait for them: the old pool is kept as it is, for good.
    static void leaveToParent() noexcept
    {
        pParents = pPool.exchange(nullptr);
    }

    static inline std::atomic<WorkerPool*> pPool{nullptr};
    static inline WorkerPool* pParents = nullptr;
};
} // namespace

WorkerPool& getWorkerPool()
{
    static PoolOfProcess holder;
    return holder.get();
}

bool isWorkerThread()
{
    return bWorkerThread;
}

int getNumThreads()
{
    return numThreadsSetting();
}

void setNumThreads(int n)
{
    const int num = std::clamp(n, 1, MAX_THREADS);
    numThreadsSetting() = num;
    // One thread needs no pool.
    if (num > 1)
        getWorkerPool().resize(num);
}

} // namespace TARN_ZEF
