#ifndef ZEF_TRIANGLETREE_H
#define ZEF_TRIANGLETREE_H

#include "Point3.h"

#include "tarn_tools/Box.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Finds the nearest place of a surface.
//
// Triangles stand in the order of a space-filling curve through their centres. Four in a row make a block, four blocks
// in a row a block of the next level, and so on: the tree is its boxes, without a pointer.
//
// Ownership:  copies the corners, so that triangles next to each other stand together in memory.
// Threads:    queries from any thread.
// Cost:       a sort to build, some 100 bytes a triangle; a query looks at a few blocks of each level.
class TriangleTree
{
public:
    // Three corners in a row are one triangle, all of them finite. There must be one.
    TriangleTree(const std::vector<Point3>& vPoints, const std::vector<int>& vCorners);

    struct Nearest
    {
        Point3 place;
        double sqDistance;
    };
    [[nodiscard]] Nearest find(const Point3& p) const;

private:
    static constexpr std::size_t WIDTH = 4;
    static constexpr std::size_t MAX_LEVELS = 17; // of 2^32 triangles

    // A box that waits for its turn.
    struct Waiting
    {
        double sqDistance;
        std::uint32_t level;
        std::uint32_t index;
    };
    using Stack = std::array<Waiting, MAX_LEVELS * WIDTH>;

    using Triangle = std::array<Point3, 3>;

    void sortAlongCurve();
    [[nodiscard]] std::vector<std::uint64_t> getCurveCodes() const;
    void buildLevels();
    void pushChildren(const Waiting& parent, const Point3& p, double limit, Stack& stack,
                      std::size_t& numWaiting) const;
    void visitBlock(std::size_t block, const Point3& p, Nearest& nearest) const;

    std::vector<Triangle> vTriangles;      // along the curve
    std::vector<std::vector<Box>> vLevels; // of blocks of triangles, then of blocks of these, up to one
};

} // namespace TARN_ZEF

#endif
