#ifndef ZEF_FINISH_FOLDREMOVAL_H
#define ZEF_FINISH_FOLDREMOVAL_H

#include "finish/FoldFinder.h"
#include "surface/HalfEdgeMesh.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace TARN_ZEF
{
// What the removal of folds had to do.
struct FoldReport
{
    std::size_t numPairs = 0;     // that intersected, or triangles without area, before
    std::size_t numDroppedT = 0;  // triangles that went
    std::size_t numCollapses = 0; // edges
    std::size_t numFilled = 0;    // cuts that were filled again

    // What a later search had to do; its pairs came up on the way.
    void add(const FoldReport& later)
    {
        numDroppedT += later.numDroppedT;
        numCollapses += later.numCollapses;
        numFilled += later.numFilled;
    }
};

// Takes all folds out of a surface: at the end no two triangles intersect. The mildest means come first: smoothing
// where triangles intersect, then borders give way, then edges collapse, then triangles are cut out and small cuts
// filled, and in the end cut out for good. Each round of that last kind removes triangles, so it comes to an end on
// every surface.
//
// Vertices at one place, where fans were parted, go apart a little as well: a reader that joins corners by their
// coordinates then finds the same mesh.
class FoldRemoval
{
public:
    using Flags = std::vector<std::uint8_t>;
    // The place that can be kept next to one.
    using Rounding = std::function<Point3(const Point3&)>;

    // round: vertices are at such places, and go to such; empty if every place is one.
    FoldRemoval(HalfEdgeMesh& mesh_, FoldReport& report_, Rounding round_);

    // On the whole surface, or near the triangles t with vChanged[t] != 0, as the rest is known to be without.
    void run();
    void runNear(const Flags& vChanged);
    // The same after triangles were changed; those of vBad are smoothed first, with so many rings of vertices around
    // them, and those with vDrop[t] != 0 taken out.
    void runNear(const Flags& vChanged, const std::vector<int>& vBad, int numRings, const Flags& vDrop);

private:
    using Pairs = std::vector<FoldFinder::Pair>;

    void remove(Pairs vPairs);
    void smooth(const Pairs& vPairs, int numRings, int numIterations);
    void collapse(const Pairs& vPairs);
    void dropBorders(const Pairs& vPairs);
    void cut(const Pairs& vPairs, bool bFill);
    void drop(const Flags& vDrop, bool bFill);
    [[nodiscard]] Flags chooseFewest(const Pairs& vPairs) const;
    [[nodiscard]] std::vector<int> getVertices(const Pairs& vPairs, int numRings) const;
    void partEqualPoints();
    [[nodiscard]] std::vector<int> findEqualPoints() const;
    void move(int v, const Point3& p);
    void touchAround(int v);

    HalfEdgeMesh& mesh;
    FoldReport& report;
    Rounding round;
    Flags vTouched; // triangles since the last search
};

// The nearest place with float coordinates.
[[nodiscard]] Point3 roundToFloat(const Point3& p) noexcept;

} // namespace TARN_ZEF

#endif
