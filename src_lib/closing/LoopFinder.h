#ifndef ZEF_LOOPFINDER_H
#define ZEF_LOOPFINDER_H

#include "Vector3.h"
#include "closing/EdgeMates.h"
#include "meshHoles.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Puts the border edges of a mesh together to loops, and tells rims from holes. The contract is that of
// findBorderLoops(); corners must be indices of points.
class LoopFinder
{
public:
    LoopFinder(const std::vector<Point3>& vPoints_, const std::vector<int>& vCorners_,
               const EdgeMates& mates_);

    [[nodiscard]] std::vector<BorderLoop> run();

private:
    // A part of the surface that hangs together over edges.
    struct Piece
    {
        double area = 0.0;
        Vector3 areaVector; // half the sum of the triangles' cross products
        bool bOriented = true;
    };

    void findPieces();
    void measurePieces();
    // Walks from border edge to border edge, and cuts off a loop whenever it meets its own way.
    void walkFrom(std::uint32_t start);
    // The border edge that goes on at vertex v, at the other side of the fan of the triangle of h; CROWDED where the
    // fan ends at more than two triangles.
    [[nodiscard]] std::uint32_t getNextBorder(std::uint32_t h, int v) const;
    void cutLoop(std::vector<int>& vWay, std::size_t from, std::size_t piece);
    void addLoop(std::vector<int> vVertices, std::size_t piece, bool bClosed);
    void judge(BorderLoop& loop) const;
    [[nodiscard]] Vector3 getAreaVector(const std::vector<int>& vLoop) const;

    const std::vector<Point3>& vPoints;
    const std::vector<int>& vCorners;
    const EdgeMates& mates;
    std::vector<std::size_t> vPieceOf; // by triangle
    std::vector<Piece> vPieces;
    std::vector<char> vSeen;          // by half-edge
    std::vector<std::size_t> vPlaces; // by vertex: its place on the way in hand, or NO_PLACE
    std::vector<BorderLoop> vLoops;
};

} // namespace TARN_ZEF

#endif
