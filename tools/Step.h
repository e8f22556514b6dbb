#ifndef ZEF_TOOLS_STEP_H
#define ZEF_TOOLS_STEP_H

#include "zef.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace TARN_TOOL
{
// One call that improves the finished mesh, as the command line asks for it.
struct Step
{
    enum class Kind
    {
        FLIPS,
        ANNEAL,
        REDUCE,
        LAPLACE,
        FILL
    };
    // Which holes are filled.
    enum class Holes
    {
        NUMBERED,
        UP_TO_LENGTH,
        ALL_BUT_RIM,
        ALL
    };

    static constexpr double DEFAULT_ANGLE = 25.0;

    Kind kind = Kind::FLIPS;
    double length =
        0.0; // REDUCE: longest edge to collapse, FILL: longest hole; in units of the points or in cells
    bool bCells = false;               // REDUCE, FILL: length counts in spacings
    double angle = DEFAULT_ANGLE;      // REDUCE: degrees by which a triangle may turn in one collapse
    int numIterations = 0;             // LAPLACE
    Holes holes = Holes::ALL_BUT_RIM;  // FILL
    std::vector<std::size_t> vLoops{}; // FILL, NUMBERED: from 1, as findBorderLoops() has them

    // The step "LEN[,ANGLE]" of a reduction, such as "0.5", "2c" or "2c,15"; nothing if text is no such.
    [[nodiscard]] static std::optional<Step> parseReduce(const std::string& text);

    // The step of filling: numbers such as "2" or "1,4", a length such as "3.5" or "20c", "all-but-rim" or "all".
    [[nodiscard]] static std::optional<Step> parseFill(const std::string& text);

    // As the user wrote it, without the dashes.
    [[nodiscard]] std::string getText() const;

    // Whether apply() needs the spacing.
    [[nodiscard]] bool needsSpacing() const { return bCells; }

    // Changes the mesh or puts another one in its place.
    //
    // spacing  in force, in units of the points
    // Returns  what there is to tell; may be empty
    // Throws   ZefBugException as the library tells; ToolError for numbers of loops that are not there
    std::string apply(std::shared_ptr<TARN_ZEF::Mesh>& pMesh, double spacing) const;

private:
    std::string fill(std::shared_ptr<TARN_ZEF::Mesh>& pMesh, double spacing) const;
    [[nodiscard]] std::vector<TARN_ZEF::BorderLoop> chooseLoops(const std::vector<TARN_ZEF::BorderLoop>& vAll,
                                                                double spacing) const;
};

} // namespace TARN_TOOL

#endif
