#ifndef ZEF_TOOLS_INPUTREADER_H
#define ZEF_TOOLS_INPUTREADER_H

#include "Console.h"
#include "LibraryCalls.h"
#include "Options.h"
#include "StandardInput.h"
#include "zef.h"

#include <optional>
#include <string>
#include <vector>

namespace TARN_TOOL
{
// Reads the inputs of a job, several as one. What readers leave out is told.
//
// Errors:     ToolError, which names the file and what to do.
class InputReader
{
public:
    InputReader(const Options& options_, LibraryCalls& calls_, const Console& console_);

    // Finite ones only. Attributes stay if each input has them.
    [[nodiscard]] TARN_ZEF::PointData readPoints();
    // As the files have them. Colors stay if each input has them.
    [[nodiscard]] TARN_ZEF::TriangleData readTriangles();
    // One of the inputs.
    [[nodiscard]] TARN_ZEF::TriangleData readTriangles(const std::string& name);
    // Whether all inputs hold triangles.
    [[nodiscard]] bool holdTriangles();
    // Whether the first input is a PLY, whatever its name.
    [[nodiscard]] bool isPly();

private:
    // The file to read for a name that the user gave.
    [[nodiscard]] const std::string& findFile(const std::string& name);
    template <typename F>
    auto read(const std::string& name, F f, const char* hint = "");
    template <typename Data>
    void tell(const std::string& name, const Data& data) const;
    [[nodiscard]] TARN_ZEF::PointData readPoints(const std::string& name);

    const Options& options;
    LibraryCalls& calls;
    const Console& console;
    std::optional<StandardInput> standardInput;
};

} // namespace TARN_TOOL

#endif
