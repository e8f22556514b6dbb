#ifndef ZEF_DUALSURFACE_H
#define ZEF_DUALSURFACE_H

#include "outer/CellLoops.h"
#include "outer/HullLattice.h"
#include "outer/SoupPlanes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// The surface between inside and outside points of a lattice: a vertex for each time that it passes a cell, four of them
// round each edge that changes. Where a vertex stands is for derived classes to say.
//
// Manifold by construction: two cells agree about the side between them. Only where the surface passes such a side twice,
// and connects the same vertices both times, would an edge have four triangles; one of the two gets a vertex of its own.
// Source:  S. Schaefer et al., Manifold dual contouring, 2007, for several vertices in a cell.
class DualSurface
{
public:
    using Cell = HullLattice::Cell;

    // An edge of the lattice from inside to outside, or back.
    struct Change
    {
        Cell lower;
        int axis;
        bool bFirstInside;
        // Vertices of the four cells round it, counter-clockwise seen from the far end.
        std::array<int, 4> ring = {-1, -1, -1, -1};
        [[nodiscard]] Cell getOutside() const;
    };

    explicit DualSurface(const HullLattice& lattice_)
        : lattice(lattice_)
    {
    }
    virtual ~DualSurface() = default;
    DualSurface(const DualSurface&) = delete;
    DualSurface& operator=(const DualSurface&) = delete;

    // Once. REQUIRES: all edges of the lattice that change are there.
    void run(std::vector<Change> vAllChanges);

    [[nodiscard]] const std::vector<HullVertex>& getVertices() const { return vVertices; }
    [[nodiscard]] const std::vector<int>& getCorners() const { return vCorners; }

protected:
    // Where the surface passes these edges of the cell.
    [[nodiscard]] virtual HullVertex makeVertex(const Cell& cell,
                                                const std::vector<const Change*>& vLoop) const = 0;
    // Whether the ring is better cut from its first vertex to the third than from the second to the fourth.
    [[nodiscard]] virtual bool isFirstDiagonalBetter(const std::array<int, 4>& ring,
                                                     const Change& change) const = 0;

    const HullLattice& lattice;

private:
    // A change as one of its cells sees it.
    struct CellEdge
    {
        std::uint64_t key; // of the cell, then the edge in it
        std::uint32_t change;
        std::uint32_t place; // in the ring
    };
    // Where two cells of a ring meet, of which one has a side with four changes.
    struct Link
    {
        std::pair<int, int> ends;
        std::uint64_t outside; // point that tells apart where the surface passes twice
        std::uint32_t change;
        int place;
    };

    void findVertices();
    void passCell(const CellEdge* pBegin, const CellEdge* pEnd);
    [[nodiscard]] unsigned getCorners(const CellEdge* pBegin, const CellEdge* pEnd) const;
    void splitDoubleLinks();
    void splitLinks(const Link& first, const Link& second);
    void addTriangles();
    void addQuad(const Change& change);
    void addPolygon(const std::vector<int>& vRing);
    void addTriangle(int a, int b, int c);

    const CellLoops cellLoops;
    std::vector<Change> vChanges;
    std::vector<HullVertex> vVertices;
    std::vector<bool> vAmbiguous;                        // by vertex: its cell has a side with four changes
    std::vector<std::pair<std::uint64_t, int>> vMiddles; // sorted: 4 change + place, and the vertex there
    std::vector<int> vCorners;
};

} // namespace TARN_ZEF

#endif
