#ifndef ZEF_TOOLS_BATCH_H
#define ZEF_TOOLS_BATCH_H

#include "Console.h"
#include "LibraryCalls.h"
#include "Options.h"

#include <cstddef>
#include <string>
#include <vector>

namespace TARN_TOOL
{
// One job for each input, one after the other on the same workers; results go into one folder under the names of the
// inputs. A failure is told, and the next input follows.
class Batch
{
public:
    Batch(const Options& options_, LibraryCalls& calls_, const Console& console_);

    // Returns the status of the process: 0 if all went well, EXIT_UNSOUND if some results have faults, EXIT_UNUSABLE if
    // some inputs failed.
    // Throws ToolError if the folder cannot be made, or two results would have one name; ZefCancelledException.
    [[nodiscard]] int run();

private:
    [[nodiscard]] std::string getResultName(const std::string& input) const;
    void prepare() const;
    void runOne(const std::string& input);
    void tellFailure(const std::string& input, const std::string& reason) const;
    void tellSummary() const;

    const Options& options;
    LibraryCalls& calls;
    const Console& console;
    std::size_t numUnsound = 0;
    std::vector<std::string> vFailed; // inputs
};

} // namespace TARN_TOOL

#endif
