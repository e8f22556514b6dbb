#ifndef ZEF_HOLECLOSER_H
#define ZEF_HOLECLOSER_H

#include "closing/EdgeMates.h"
#include "closing/HolePatch.h"
#include "meshHoles.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

namespace TARN_ZEF
{
// Closes loops of a mesh. The contract is that of fillHoles(): a patch that would intersect anything, or hold a flat
// triangle, is made again without vertices of its own, then of the least area that there is, and if that is
// no better, left out.
class HoleCloser
{
public:
    // Both vectors must outlive it. Refuses a loop that is none of the mesh.
    HoleCloser(const std::vector<Point3>& vPoints_, const std::vector<int>& vCorners_,
               const std::vector<BorderLoop>& vChosen_, const FillOptions& options_);

    // Appends new points and triangles to what the mesh has.
    void run(std::vector<Point3>& vNewPoints, std::vector<int>& vNewCorners);
    [[nodiscard]] const std::vector<FillResult>& getResults() const { return vResults; }

private:
    enum class Level : std::uint8_t
    {
        FULL,  // as the options say
        TIGHT, // triangles between the vertices of the loop alone, of least bend
        SMALL, // the same, of least area
        OPEN
    };
    struct Fill
    {
        Level level = Level::FULL;
        std::vector<Point3> vPoints;
        std::vector<int> vCorners; // as HolePatch gives them
    };

    void requireLoop(const BorderLoop& loop) const;
    [[nodiscard]] std::vector<char> markLoops() const;
    void make(std::size_t i);
    template <typename F>
    void forEachNewEdge(const Fill& fill, F f) const;
    void leaveOpen(std::size_t i, const char* reason);
    // Makes again, or leaves open, what is at fault. False if nothing is.
    [[nodiscard]] bool mendFaults();
    // All fills behind each other; vOwners tells the loop of each triangle.
    void collect(std::vector<Point3>& vNewPoints, std::vector<int>& vNewCorners,
                 std::vector<std::size_t>& vOwners) const;

    const std::vector<Point3>& vPoints;
    const std::vector<int>& vCorners;
    const std::vector<BorderLoop>& vChosen;
    FillOptions options;
    EdgeMates mates;
    RingTable rings;
    std::set<u64> taken; // edges across fills as they are
    Surroundings around;
    std::vector<Fill> vFills;
    std::vector<FillResult> vResults;
};

} // namespace TARN_ZEF

#endif
