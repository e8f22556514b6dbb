#ifndef ZEF_FINISH_CREASEMAKER_H
#define ZEF_FINISH_CREASEMAKER_H

#include "finish/SheetFit.h"
#include "surface/HalfEdgeMesh.h"

#include <array>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Gives a surface the creases that its points have. Around a crease no single fit holds, but those a little farther
// off on either side do. Each vertex there takes the plane of the side that it lies on. An edge whose ends took
// different sides crosses the crease: it gets a vertex where the planes meet. The new vertices of a triangle are joined
// by feature edges, those of a triangle between three sides by way of a vertex in the corner.
//
// Chains that cross few edges are noise, and are not made.
//
// Ownership:  works on the caller's mesh; keeps references to mesh and planes.
// Invariant:  a vertex is of kind CHAIN if two feature edges meet in it without much of a turn, FIXED if others do.
// Threads:    what is read only runs on the pool; edits are made in the order of numbers.
class CreaseMaker
{
public:
    using Planes = std::vector<SheetFit::LocalPlane>;

    // Lengths in units of the points but for noise, which is in cells.
    CreaseMaker(HalfEdgeMesh& mesh_, const Planes& vPlanes_, double cellSize_, double noise_, double radius_);

    void run();

    [[nodiscard]] std::size_t getNumCreaseEdges() const noexcept { return numEdges; }
    [[nodiscard]] std::size_t getNumCorners() const noexcept { return vCorners.size(); }

private:
    static constexpr int NONE = HalfEdgeMesh::NONE;

    // An edge between two sides.
    struct Crossing
    {
        int a = NONE;
        int b = NONE;
        Point3 point; // where the planes meet
        int vertex = NONE;
    };
    // A triangle that two or three creases enter.
    struct Passage
    {
        std::array<int, 3> vertices = {};                  // of the triangle
        std::array<int, 3> crossings = {NONE, NONE, NONE}; // of the edge from each vertex
        int number = 0;
    };

    void chooseSides();
    [[nodiscard]] int findSide(int v, std::vector<int>& vNear) const;
    [[nodiscard]] double getCost(int v, int side) const;
    [[nodiscard]] bool isGood(int v) const;
    [[nodiscard]] bool agree(int side, int otherSide) const;
    void vote();
    void findCrossings();
    [[nodiscard]] bool isBroken(int a, int b) const;
    [[nodiscard]] bool meet(int a, int b, Point3& point) const;
    void findPassages();
    void dropShortChains();
    void putOnSides();
    void cut();
    void join(int a, int b);
    void makeCorner(const Passage& passage);
    void snapToCrease();
    [[nodiscard]] bool maySnap(int h) const;
    void straightenChains();
    [[nodiscard]] std::array<int, 2> getChainEnds(int v) const;
    [[nodiscard]] double getTurn(int v, const std::array<int, 2>& ends) const;
    [[nodiscard]] double getShape(int v, const Point3& p, int other) const;
    [[nodiscard]] bool hasSide(int v) const;
    [[nodiscard]] bool isCorner(int v) const;
    void dissolve(int v);
    void unfold();
    void improve(int v);
    void setKinds();

    [[nodiscard]] int sideIndex(int v) const { return vSide[static_cast<std::size_t>(v)]; }
    [[nodiscard]] const SheetFit::LocalPlane& sideOf(int v) const
    {
        return vPlanes[static_cast<std::size_t>(vSide[static_cast<std::size_t>(v)])];
    }

    HalfEdgeMesh& mesh;
    const Planes& vPlanes;
    double cellSize;
    double noise;
    double radius;
    std::vector<int> vSide; // of each vertex: the vertex whose plane it takes, or NONE
    std::vector<Crossing> vCrossings;
    std::vector<int> vCrossingOf; // of each half-edge, before the cut
    std::vector<Passage> vPassages;
    std::size_t numEdges = 0;
    std::vector<int> vCorners; // vertices
};

} // namespace TARN_ZEF

#endif
