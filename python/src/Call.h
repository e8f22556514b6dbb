#ifndef ZEF_PYTHON_CALL_H
#define ZEF_PYTHON_CALL_H

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <type_traits>

#include "zef.h"

namespace TARN_PYTHON
{
namespace py = pybind11;

// One call of the library as Python makes it: what is to be told of it, and how it is run.
//
// The library works on a thread of its own, without Python's lock, while the calling thread waits and looks twenty times
// a second for signals, progress and messages. So Ctrl-C works in every call, however long it reports nothing, and
// signal handlers, progress callables and loggers run on the thread that called, as in Python's own calls.
//
// Threads:    one object belongs to one call.
class Call
{
public:
    // progress     None, or a callable of a name and a fraction from 0 to 1
    // bReport      whether getReport() is wanted
    // memoryLimit  in bytes; none: no limit
    Call(py::object progress_, bool bReport_, std::optional<std::size_t> memoryLimit_);

    // Returns what work returns. Called with Python's lock; work runs without it and must not touch Python.
    // Throws  what work throws; or what a signal handler or the progress callable has raised: the library's call is
    //         cancelled then, and has ended
    template <typename Work>
    std::invoke_result_t<Work> run(Work work);

    // Of the library's call that run() made last; as far as it came, if it failed.
    [[nodiscard]] const TARN_ZEF::CallReport& getReport() const noexcept { return report; }

    // For work that waits for something else than the library: throws ZefCancelledException once the call that the
    // thread works for is cancelled.
    static void checkCancelled();

private:
    void perform(const std::function<void()>& work);

    py::object progress;
    bool bReport;
    std::optional<std::size_t> memoryLimit;
    TARN_ZEF::CallReport report;
};

template <typename Work>
std::invoke_result_t<Work> Call::run(Work work)
{
    using Result = std::invoke_result_t<Work>;
    if constexpr (std::is_void_v<Result>)
    {
        perform(work);
    }
    else
    {
        std::optional<Result> oResult;
        perform([&] { oResult.emplace(work()); });
        return std::move(*oResult);
    }
}

void bindCall(py::module_& module);

} // namespace TARN_PYTHON

#endif
