#ifndef ZEF_TOOLS_SAFEOUTPUTFILE_H
#define ZEF_TOOLS_SAFEOUTPUTFILE_H

#include <string>

namespace TARN_TOOL
{
// An output file that appears whole or not at all: it is written under a temporary name in the same folder
// and renamed at the end.
//
// Invariant:  before commit() a file of the final name is untouched. Whatever ends the run, an exception or
//             one of the signals that installSignalHandlers() covers, takes the temporary file away.
// Threads:    none.
class SafeOutputFile
{
public:
    // Checks early that name can be written. A link is followed.
    // Throws ToolError if the folder is missing or not writable, or if name is there and is not a writable
    // regular file.
    explicit SafeOutputFile(const std::string& name_);
    ~SafeOutputFile();
    SafeOutputFile(const SafeOutputFile&) = delete;
    SafeOutputFile& operator=(const SafeOutputFile&) = delete;

    // Creates the temporary file and returns its name, which ends in the same extension. Call once.
    [[nodiscard]] const std::string& create();

    // Gives the file its final name. Throws ToolError if that fails.
    void commit();

    // The name as the user gave it.
    [[nodiscard]] const std::string& getName() const { return name; }

    // Interrupt, termination and hang-up take temporary files away before they end the process.
    static void installSignalHandlers();

private:
    std::string name;
    std::string target;   // name with links resolved
    std::string tempName; // empty if no temporary file is there
};

} // namespace TARN_TOOL

#endif
