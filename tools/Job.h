#ifndef ZEF_TOOLS_JOB_H
#define ZEF_TOOLS_JOB_H

#include "MeshSource.h"

#include <memory>
#include <string>

namespace TARN_TOOL
{
// One run over the inputs of the options. Output files appear only when everything has worked.
class Job
{
public:
    virtual ~Job() = default;
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    // Throws ToolError with the reason if the job cannot be done.
    virtual void run() = 0;

    // Whether the mesh, judged as asked for, has faults. What was to be written was written all the same.
    [[nodiscard]] virtual bool hasFoundFaults() const { return false; }

    // The one for the task of the options, or for what the inputs hold if they leave that open.
    // Throws UsageError if the options do not fit that.
    [[nodiscard]] static std::unique_ptr<Job> create(Options& options, LibraryCalls& calls,
                                                     const Console& console, InputReader& reader);

protected:
    explicit Job(const JobContext& context_)
        : options(context_.options)
        , context(context_)
    {
    }

    const Options& options;
    JobContext context;
};

} // namespace TARN_TOOL

#endif
