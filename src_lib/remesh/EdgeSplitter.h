#ifndef ZEF_EDGESPLITTER_H
#define ZEF_EDGESPLITTER_H

#include "remesh/WorkSurface.h"

#include <array>
#include <vector>

namespace TARN_ZEF
{
class EdgeFlipper;

// Splits edges that are too long for their sizes, longer ones first: in classes of a square root of two.
// After each class diagonals are flipped round the new vertices, so that the pieces do not get thin; what is
// long among the new edges comes into its class in turn.
class EdgeSplitter
{
public:
    EdgeSplitter(WorkSurface& work_, EdgeFlipper& flipper_)
        : work(work_)
        , mesh(work_.mesh)
        , flipper(flipper_)
    {
    }

    // Stops early where the surface is full.
    void splitLong();

private:
    static constexpr int NUM_CLASSES = 64;

    [[nodiscard]] int classOf(int h) const;
    void enqueue(int h);
    [[nodiscard]] std::vector<int> splitClass(int i);

    WorkSurface& work;
    HalfEdgeMesh& mesh;
    EdgeFlipper& flipper;
    std::array<std::vector<int>, NUM_CLASSES> vQueues; // half-edges that stood for a long edge once
};

} // namespace TARN_ZEF

#endif
