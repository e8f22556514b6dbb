#ifndef ZEF_TOOLS_SAFEOUTPUTFILE_H
#define ZEF_TOOLS_SAFEOUTPUTFILE_H

#include <string>

namespace TARN_TOOL
{
// An output file that appears whole or not at all: it is written under a temporary name in the same folder
// and renamed at the end. For standard output it is a file that is copied there at the end.
//
// Invariant:  before commit() a file of the final name is untouched. Whatever ends the run, an exception or
//             a signal, takes the temporary file away.
// Threads:    none.
class SafeOutputFile
{
public:
    // Checks early that name can be written. A link is followed.
    // Throws ToolError if the folder is missing or not writable, or if name is there and is not a writable
    // regular file.
    explicit SafeOutputFile(const std::string& name_);
    // The same; "-" is standard output, and formatName has the extension of what goes there.
    SafeOutputFile(const std::string& name_, const std::string& formatName);
    ~SafeOutputFile();
    SafeOutputFile(const SafeOutputFile&) = delete;
    SafeOutputFile& operator=(const SafeOutputFile&) = delete;

    // Creates the temporary file and returns its name, which ends in the same extension. Call once.
    [[nodiscard]] const std::string& create();

    // Gives the file its final name. Throws ToolError if that fails.
    void commit();

    // The name as the user gave it.
    [[nodiscard]] const std::string& getName() const { return name; }

    // Takes the temporary files of all objects away. For signal handlers: calls nothing that they may not.
    static void removeTempFiles() noexcept;

private:
    void requireWritable() const;
    [[nodiscard]] std::string getFolder() const;
    void copyToStandardOutput();

    std::string name;
    std::string target; // name with links resolved; empty for standard output
    std::string extension;
    std::string tempName; // empty if no temporary file is there
};

} // namespace TARN_TOOL

#endif
