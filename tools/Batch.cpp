#include "Batch.h"

#include <cstdlib>
#include <filesystem>
#include <set>
#include <system_error>

#include "Report.h"
#include "ToolError.h"
#include "exitCodes.h"
#include "runJob.h"

namespace TARN_TOOL
{
namespace fs = std::filesystem;

Batch::Batch(const Options& options_, LibraryCalls& calls_, const Console& console_)
    : options(options_)
    , calls(calls_)
    , console(console_)
{
}

int Batch::run()
{
    prepare();
    for (const std::string& input : options.vInputs)
        runOne(input);
    tellSummary();
    return !vFailed.empty() ? EXIT_UNUSABLE : numUnsound != 0 ? EXIT_UNSOUND : EXIT_SUCCESS;
}

std::string Batch::getResultName(const std::string& input) const
{
    const std::string extension = "." + (options.format.empty() ? "ply" : options.format);
    return (fs::path(options.batchFolder) / (fs::path(input).stem().string() + extension)).string();
}

void Batch::prepare() const
{
    std::set<std::string> names;
    for (const std::string& input : options.vInputs)
    {
        const std::string name = getResultName(input);
        std::error_code ec;
        if (fs::equivalent(input, name, ec))
            throw ToolError("the result of " + input + " would replace it; give another folder to --batch");
        if (!names.insert(name).second)
            throw ToolError("two inputs would give " + name + "; rename one, or give them in two calls");
    }
    std::error_code ec;
    fs::create_directories(options.batchFolder, ec);
    if (!fs::is_directory(options.batchFolder))
        throw ToolError("cannot make the folder " + options.batchFolder + ": " + ec.message());
}

void Batch::runOne(const std::string& input)
{
    Options one = options;
    one.batchFolder.clear();
    one.vInputs = {input};
    one.outName = getResultName(input);
    const Outcome outcome = runJob(one, calls, console);
    if (!outcome.reason.empty())
    {
        vFailed.push_back(input);
        tellFailure(input, outcome.reason);
    }
    numUnsound += outcome.status == EXIT_UNSOUND ? 1 : 0;
}

void Batch::tellFailure(const std::string& input, const std::string& reason) const
{
    console.error(input + " failed: " + reason);
    if (!options.bJson)
        return;
    Options one = options;
    one.vInputs = {input};
    JsonLine line = startJson(one);
    line.add("error", reason);
    console.print(line.getText() + "\n");
}

void Batch::tellSummary() const
{
    const std::size_t num = options.vInputs.size();
    if (options.bJson)
    {
        JsonLine line;
        line.add("schema", JSON_SCHEMA);
        line.add("task", std::string("batch"));
        line.add("inputs", num);
        line.add("failed", vFailed.size());
        line.add("unsound", numUnsound);
        console.print(line.getText() + "\n");
        return;
    }
    std::string text = "batch: " + std::to_string(num - vFailed.size()) + " of " + std::to_string(num) +
                       " inputs done, results in " + options.batchFolder;
    if (numUnsound != 0)
        text += ", " + std::to_string(numUnsound) + " not sound";
    for (const std::string& input : vFailed)
        text += "\nfailed: " + input;
    if (!options.bQuiet)
        console.print(text + "\n");
}

} // namespace TARN_TOOL
