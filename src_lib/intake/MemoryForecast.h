#ifndef ZEF_MEMORYFORECAST_H
#define ZEF_MEMORYFORECAST_H

#include "Point3.h"
#include "lattice/Calc.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// What a call works on, as far as its memory goes.
enum class MemoryUse
{
    SCAN,
    SMOOTHED_SCAN,
    MELT,
    SAMPLES // of a soup
};

// How much memory a call will take at most, at one spacing or another.
//
// Two times of a call can be its peak: the intake, which goes by the points, and the mesh in two forms, which goes by
// the cells and by how many triangles stand on them. Both are linear; the factors are measured. The heap keeps a
// part of what the lesser of the two has freed.
//
// Ownership:  refers to the points.
// Threads:    one; counts on the pool. The result does not depend on it.
// Cost:       of each spacing, a sort of cells and a look at their neighbours.
class MemoryForecast
{
public:
    // Finite points, at least one; or corners of triangles.
    MemoryForecast(const std::vector<Point3>& vPoints_, MemoryUse use_);

    // At that spacing, which must be one that the lattice has enough levels for.
    [[nodiscard]] std::size_t getBytes(double spacing) const;
    // A spacing above the given one that takes at most limit bytes; 0.0 if none does.
    [[nodiscard]] double findFitting(double spacing, std::size_t limit) const;

private:
    struct Cells
    {
        double num = 0.0;
        double inSheet = 0.0; // each by how far it is surrounded by others, at most 1.0
    };
    [[nodiscard]] double getIntakeBytes() const;
    [[nodiscard]] Cells countCells(double spacing) const;
    [[nodiscard]] Cells countCellsOfPoints(double spacing) const;
    [[nodiscard]] double countCellsOfTriangles(double spacing) const;
    [[nodiscard]] Calc makeLattice(double spacing) const;

    const std::vector<Point3>& vPoints;
    MemoryUse use;
    Point3 low;
    double maxExtent = 0.0;
};

} // namespace TARN_ZEF

#endif
