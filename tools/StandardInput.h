#ifndef ZEF_TOOLS_STANDARDINPUT_H
#define ZEF_TOOLS_STANDARDINPUT_H

#include "SafeOutputFile.h"

#include <string>

namespace TARN_TOOL
{
// Standard input as a file, since readers want to know its size and look at its start.
//
// Ownership:  the file is a temporary one and goes with the object.
class StandardInput
{
public:
    // Reads to the end. format: "ply", or empty if the content tells.
    // Throws ToolError if it cannot be read or kept.
    explicit StandardInput(const std::string& format);

    [[nodiscard]] const std::string& getFileName() const { return fileName; }

private:
    SafeOutputFile file;
    std::string fileName;
};

} // namespace TARN_TOOL

#endif
