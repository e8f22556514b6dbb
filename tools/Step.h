#ifndef ZEF_TOOLS_STEP_H
#define ZEF_TOOLS_STEP_H

#include "zef.h"

#include <memory>
#include <optional>
#include <string>

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
        LAPLACE
    };

    static constexpr double DEFAULT_ANGLE = 25.0;

    Kind kind = Kind::FLIPS;
    double length = 0.0;          // REDUCE: longest edge to collapse, in units of the points or in cells
    bool bCells = false;          // REDUCE: length counts in spacings
    double angle = DEFAULT_ANGLE; // REDUCE: degrees by which a triangle may turn in one collapse
    int numIterations = 0;        // LAPLACE

    // The step "LEN[,ANGLE]" of a reduction, such as "0.5", "2c" or "2c,15"; nothing if text is no such.
    [[nodiscard]] static std::optional<Step> parseReduce(const std::string& text);

    // As the user wrote it, without the dashes.
    [[nodiscard]] std::string getText() const;

    // Whether apply() needs the spacing.
    [[nodiscard]] bool needsSpacing() const { return kind == Kind::REDUCE && bCells; }

    // spacing  in force, in units of the points
    // Throws   ZefBugException as the library tells
    void apply(const std::shared_ptr<TARN_ZEF::Mesh>& pMesh, double spacing) const;
};

} // namespace TARN_TOOL

#endif
