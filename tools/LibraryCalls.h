#ifndef ZEF_TOOLS_LIBRARYCALLS_H
#define ZEF_TOOLS_LIBRARYCALLS_H

#include "Interruption.h"
#include "LibraryMessages.h"
#include "Options.h"
#include "ProgressBar.h"
#include "ToolError.h"

#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace TARN_TOOL
{
// Calls the library: its progress goes to the terminal, its messages where the options want them, its refusals
// become ToolErrors, and a signal ends the call.
//
// Threads:    one object for each process; it takes over the messages during calls.
class LibraryCalls
{
public:
    explicit LibraryCalls(const Options& options);
    LibraryCalls(const LibraryCalls&) = delete;
    LibraryCalls& operator=(const LibraryCalls&) = delete;

    // Returns what f returns.
    //
    // hint    what the tool calls the things that the library's reasons may name
    // Throws  ToolError for a refusal; ZefCancelledException after a signal; and else what f throws
    template <typename F>
    std::invoke_result_t<F> run(F f, const char* hint = "");

    // What the library said in its last call, if it was held back.
    [[nodiscard]] const std::string& getHeldMessages() const { return held; }
    // The last call's result is fine, so that its messages matter no more.
    void forgetMessages() { held.clear(); }
    // What the calls since the last time did, if that is wanted.
    [[nodiscard]] std::vector<TARN_ZEF::CallReport> takeReports() { return std::exchange(vReports, {}); }

private:
    LibraryMessages::Mode mode;
    ProgressBar progressBar;
    std::string held;
    bool bReport;
    std::size_t memoryLimit; // in bytes; 0: none
    std::vector<TARN_ZEF::CallReport> vReports;
};

template <typename F>
std::invoke_result_t<F> LibraryCalls::run(F f, const char* hint)
{
    // Puts all back in order, however the call ends.
    struct End
    {
        LibraryCalls& calls;
        LibraryMessages& messages;
        TARN_ZEF::CallReport& report;

        ~End()
        {
            calls.progressBar.clear();
            calls.held = messages.finish();
            if (!report.call.empty())
                calls.vReports.push_back(std::move(report));
        }
    };
    try
    {
        LibraryMessages messages(mode);
        TARN_ZEF::CallReport report;
        std::optional<TARN_ZEF::ReportScope> oReportScope;
        if (bReport)
            oReportScope.emplace(report);
        std::optional<TARN_ZEF::MemoryLimitScope> oLimit;
        if (memoryLimit > 0)
            oLimit.emplace(memoryLimit);
        const End end{*this, messages, report};
        const Interruption::Call call;
        return f();
    }
    catch (const TARN_ZEF::ZefRefusedException& refused)
    {
        forgetMessages(); // which are the reason once more
        throw ToolError(std::string(refused.what()) + hint);
    }
}

} // namespace TARN_TOOL

#endif
