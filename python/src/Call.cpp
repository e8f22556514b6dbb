#include "Call.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "CallMessages.h"
#include "errors.h"
#include "figures.h"

namespace TARN_PYTHON
{
namespace
{
using TARN_ZEF::CancelToken;

// A library call ends within a quarter of a second after it is cancelled at worst, and usually at once.
constexpr std::chrono::milliseconds LOOK_AROUND{40};

thread_local const CancelToken* pTokenOfThread = nullptr;

// The latest progress of a call, until the thread of Python takes it. What comes faster than it is taken is left out.
//
// Threads:    update() and finish() on the thread of the library, the others on the one of Python.
class Progress : public TARN_ZEF::ProgressBase
{
public:
    void update(const std::string& name, double fraction) override
    {
        const std::lock_guard<std::mutex> lock(mtx);
        oLatest.emplace(name, fraction);
        news.notify_one();
    }

    void finish()
    {
        const std::lock_guard<std::mutex> lock(mtx);
        bFinished = true;
        news.notify_one();
    }

    // Returns after some time, or earlier if there is something new. Whether the call has ended.
    [[nodiscard]] bool wait()
    {
        std::unique_lock<std::mutex> lock(mtx);
        news.wait_for(lock, LOOK_AROUND, [this] { return bFinished || oLatest.has_value(); });
        return bFinished;
    }

    [[nodiscard]] std::optional<std::pair<std::string, double>> take()
    {
        const std::lock_guard<std::mutex> lock(mtx);
        return std::exchange(oLatest, std::nullopt);
    }

private:
    std::mutex mtx;
    std::condition_variable news;
    std::optional<std::pair<std::string, double>> oLatest;
    bool bFinished = false;
};

// The thread on which the library works. However the scope is left, the call has ended then.
class LibraryThread
{
public:
    template <typename Work>
    LibraryThread(Progress& progress_, Work work)
        : progress(progress_)
        , thread([this, work] { run(work); })
    {
    }

    // Joining a thread that can be joined does not fail. NOLINTNEXTLINE(bugprone-exception-escape)
    ~LibraryThread()
    {
        if (!thread.joinable())
            return;
        token.cancel();
        join();
    }

    LibraryThread(const LibraryThread&) = delete;
    LibraryThread& operator=(const LibraryThread&) = delete;

    void join()
    {
        const py::gil_scoped_release release;
        thread.join();
    }

    // After join(): what the call has thrown, or null.
    [[nodiscard]] const std::exception_ptr& getFailure() const noexcept { return pFailure; }

private:
    template <typename Work>
    void run(const Work& work) noexcept
    {
        try
        {
            pTokenOfThread = &token;
            const TARN_ZEF::CancelScope scope(token);
            work();
        }
        catch (...)
        {
            pFailure = std::current_exception();
        }
        progress.finish();
    }

    Progress& progress;
    CancelToken token;
    std::exception_ptr pFailure;
    std::thread thread; // last: it uses the others
};

std::string reasonOf(const std::exception_ptr& pFailure)
{
    if (pFailure == nullptr)
        return {};
    try
    {
        std::rethrow_exception(pFailure);
    }
    catch (const std::exception& e)
    {
        return e.what();
    }
    catch (...)
    {
        return {};
    }
}

void tell(const py::object& callable, Progress& progress)
{
    const auto oLatest = progress.take();
    if (oLatest && !callable.is_none())
        callable(oLatest->first, oLatest->second);
}
} // namespace

Call::Call(py::object progress_, bool bReport_, std::optional<std::size_t> memoryLimit_)
    : progress(std::move(progress_))
    , bReport(bReport_)
    , memoryLimit(memoryLimit_)
{
}

void Call::perform(const std::function<void()>& work)
{
    CallMessages messages;
    Progress progressOfCall;
    LibraryThread thread(progressOfCall,
                         [&]
                         {
                             const CallMessages::Scope messageScope(messages);
                             std::optional<TARN_ZEF::ReportScope> oReportScope;
                             std::optional<TARN_ZEF::MemoryLimitScope> oLimit;
                             if (bReport)
                                 oReportScope.emplace(report);
                             if (memoryLimit)
                                 oLimit.emplace(*memoryLimit);
                             if (!progress.is_none())
                                 TARN_ZEF::subscribe(&progressOfCall);
                             work();
                         });
    bool bFinished = false;
    while (!bFinished)
    {
        {
            const py::gil_scoped_release release;
            bFinished = progressOfCall.wait();
        }
        messages.log();
        tell(progress, progressOfCall);
        if (PyErr_CheckSignals() != 0)
            throw py::error_already_set();
    }
    thread.join();
    messages.logErrors(reasonOf(thread.getFailure()));
    if (thread.getFailure() != nullptr)
        std::rethrow_exception(thread.getFailure());
}

void Call::checkCancelled()
{
    if (pTokenOfThread != nullptr && pTokenOfThread->isCancelled())
        throw TARN_ZEF::ZefCancelledException();
}

void bindCall(py::module_& module)
{
    py::class_<Call>(module, "Call", "How one call of the library is run, and what it tells.")
        .def(py::init<py::object, bool, std::optional<std::size_t>>(), py::arg("progress"),
             py::arg("bReport"), py::arg("memoryLimit"))
        .def_property_readonly("report", [](const Call& call) { return toDict(call.getReport()); });
}

} // namespace TARN_PYTHON
