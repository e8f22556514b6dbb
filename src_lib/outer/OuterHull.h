#ifndef ZEF_OUTERHULL_H
#define ZEF_OUTERHULL_H

#include "remesh/FlatSoup.h"

#include <vector>

namespace TARN_ZEF
{
// The page of the room "outer": oriented sheets come in, the closed surface around all of them goes out, without what
// lies within. The room knows what remeshing and closing know; nothing of clouds and their meshes.
//
// Sheets are sealed first. Where they then are closed and meet nowhere, the hull is they themselves. Else a lattice tells
// inside from outside (InsidePoints), and DualSurface follows the border between them, with its vertices on the sheets.
class OuterHull
{
public:
    // length       wanted edge length; the cells of the lattice are half as large
    // bridgedCells widest gap that counts as closed, in cells; above 0 the lattice always decides
    OuterHull(double length_, int bridgedCells_)
        : length(length_)
        , bridgedCells(bridgedCells_)
    {
    }

    // Replaces the soup, which must be oriented and edge-manifold. It is closed, manifold and faces outward
    // afterwards, or empty if there is no hull.
    void run(FlatSoup& soup);

    [[nodiscard]] int getNumSealed() const { return numSealed; }
    [[nodiscard]] bool isFromLattice() const { return bFromLattice; }

private:
    struct Parts
    {
        std::vector<int> vPart; // by triangle
        int num = 0;
        std::vector<bool> vSolid;  // by part: closed round some space
        std::vector<bool> vWithin; // by part: within another one
    };

    [[nodiscard]] static Parts findParts(FlatSoup& soup);
    [[nodiscard]] static bool areApart(const FlatSoup& soup);
    static void keepOutermost(FlatSoup& soup, const Parts& parts);
    void runOnLattice(FlatSoup& soup, const Parts& parts) const;

    double length;
    int bridgedCells;
    int numSealed = 0;
    bool bFromLattice = false;
};

} // namespace TARN_ZEF

#endif
