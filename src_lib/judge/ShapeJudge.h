#ifndef ZEF_SHAPEJUDGE_H
#define ZEF_SHAPEJUDGE_H

#include "judge/CornerNumbering.h"
#include "judge/FaultList.h"
#include "judge/JudgedMesh.h"
#include "judge/LowestPairs.h"
#include "judge/TrianglePair.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Counts what can be told from coordinates alone: triangles that are flat or not finite, duplicates, intersections.
//
// Threads:    works on the pool; the result is the same for every number of threads.
// Cost        some 70 bytes a triangle while it runs, the tree of boxes included.
class ShapeJudge
{
public:
    // Keeps references.
    ShapeJudge(const JudgedMesh& mesh_, const CornerNumbering& numbering_);

    // Call once. Fills in what is about triangles and pairs of them; up to options.maxPlaces of a kind are added to faults.
    void run(const UnitFrame& frame, const CheckOptions& options, MeshCheck& check, FaultList& faults);

private:
    enum class Shape : std::uint8_t
    {
        NORMAL,
        FLAT,
        NOT_FINITE
    };

    struct Duplicates
    {
        std::size_t num = 0;
        LowestPairs lowest;
        std::vector<std::pair<CornerNumbers, std::uint32_t>> vOfCorner; // the one in hand
    };

    [[nodiscard]] CornerNumbers numbersOf(std::size_t triangle) const;
    [[nodiscard]] Shape shapeOf(const ExactSigns& signs, std::size_t triangle) const;
    void findShapes(std::size_t maxPlaces, MeshCheck& check, FaultList& faults);
    // The finite ones, those with the same lowest corner number together.
    void sortTriangles();
    void findDuplicates(std::size_t maxPlaces, MeshCheck& check, FaultList& faults);
    // Puts those around one corner in order, too, so that in a large fan neighbours lie beside each other.
    void sortAtCorner(std::size_t from, std::size_t end, Duplicates& part);
    void findIntersections(const UnitFrame& frame, const CheckOptions& options, MeshCheck& check,
                           FaultList& faults);

    const JudgedMesh& mesh;
    const CornerNumbering& numbering;
    std::vector<Shape> vShapes;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> vSorted; // lowest corner number, triangle
};

} // namespace TARN_ZEF

#endif
