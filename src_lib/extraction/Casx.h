#ifndef ZEF_CASX_H
#define ZEF_CASX_H

#include "extraction/CasxTables.h"
#include "lattice/Calc.h"

#include <array>
#include <string>
#include <vector>

namespace TARN_ZEF
{
class Visualizer3;

// For each of the 256 occupations of a cube of eight cells, the triangles that the surface has inside it.
// Their corners are the centres of occupied cells: there are no edge midpoints and no interpolation.
//
// A configuration is the byte of occupation, in the order of Calc::completeArray8Down(), which names the
// cube by its highest cell. Triangles carry no orientation: corners come in rising bit order.
//
// Invariant:  a row's triangles stand before its end mark; each corner is an occupied cell.
// Threads:    immutable after construction.
// Cost:       a row of getTutTriangles() is one array access. Construction copies a constant table.
class Casx
{
public:
    // The surface triangles of one configuration: numTriangles triples of corner indices, 0 to 7.
    struct TutRow
    {
        unsigned char numTriangles = 0;
        unsigned char corners[3 * CASX_NUM_SLOTS] = {};
    };

    // bExperimental computes the rows from the base cases, prints them as source, and gives the same
    // triangles: it serves to make the constant table anew.
    Casx(TriMode triMode_, bool bExperimental);
    Casx(const Casx&) = delete;
    Casx& operator=(const Casx&) = delete;

    // Appends the corners of the triangles with the use tu, or of all with TUU; three entries are one
    // triangle. array holds the cube's eight cells. Nothing is appended for fewer than three cells and for
    // the full cube.
    void getTriangles(int cfg, const CCD* array, std::vector<CCD>& vTriCCD, TriUse tu) const;

    // What getTriangles() gives for TUT, as corner indices; cfg must lie in 0..255 and is not checked.
    [[nodiscard]] const TutRow& getTutTriangles(int cfg) const noexcept
    {
        return tutRows[static_cast<std::size_t>(cfg)];
    }

    // The missing cells, of a cube with six or seven; 0 for all other configurations.
    [[nodiscard]] static int getExtraMask(int cfg);
    // The corners opposite the missing ones, if those are one corner or two that share a cube edge; else 0.
    [[nodiscard]] static int getRemoveMask(int cfg);

    // Four cells on one face of the cube: the table's diagonal of that square is one of two.
    [[nodiscard]] static constexpr bool isFlat(int cfg) noexcept
    {
        return cfg == 15 || cfg == 51 || cfg == 102 || cfg == 153 || cfg == 204 || cfg == 240;
    }

    // Adds one configuration to a scene: its cells and surface triangles in color, hidden triangles gray. The
    // configurations stand in rows of 16. pVis must draw on getDrawingLattice(); title becomes a comment.
    void showConfig(int cfg, Visualizer3* pVis, const std::string& title, const std::string& color) const;
    [[nodiscard]] static Calc getDrawingLattice();

private:
    void initAllCases();
    void expandBaseCases();
    void initTutRows();
    void showAllConfigs() const;

    void addTriConfig(int cfg, const int* pMasks);
    // Writes into the rows of all rotations of cfg.
    void addTriUse(int cfg, const CasxSlot* pSlots);

    std::vector<int> vTriVec;    // rows of CASX_NUM_SLOTS masks
    std::vector<TriUse> vTriUse; // aligned with the fat rows, and used for both modes
    std::array<TutRow, CASX_NUM_CONFIGS> tutRows;
    TriMode triMode;
};

} // namespace TARN_ZEF

#endif
