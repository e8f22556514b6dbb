// The rows of triangles of all 256 cube configurations: the 23 base rows, and how the others follow from
// them by rotation and by the rule which fixes the diagonal on a cube face. Class Casx serves them.
#ifndef ZEF_CASXTABLES_H
#define ZEF_CASXTABLES_H

#include <array>

namespace TARN_ZEF
{
// A fixed type: an unknown mode is a value to refuse.
enum TriMode : int
{
    TM_THIN = 0,
    TM_FAT = 1
};

// The role of a triangle in its row.
enum TriUse
{
    TUU = 0, // a slot without a triangle; as a question: no filter
    TUT = 1, // belongs to the surface
    TUF = 2, // kept for the view of a configuration only
    TUI = 3  // the same
};

inline constexpr int CASX_NUM_CONFIGS = 256;
inline constexpr int CASX_NUM_SLOTS = 12;
// A slot after the last triangle; every value above 255 ends a row.
inline constexpr int CASX_END = 512;

// Row after row, CASX_NUM_SLOTS masks each. A mask has three bits set, the corners of the triangle, and says
// nothing about orientation.
using CasxRows = std::array<int, CASX_NUM_CONFIGS * CASX_NUM_SLOTS>;

struct CasxSlot
{
    int mask = CASX_END;
    TriUse use = TUU;
};

// One of the configurations from which all others come by rotation. Mirror images are not used, hence 23
// classes and not 22.
struct CasxBaseCase
{
    int cfg;
    CasxSlot fat[CASX_NUM_SLOTS];
    CasxSlot thin[CASX_NUM_SLOTS]; // masks only: the uses of fat, slot by slot, serve both modes
};

inline constexpr int CASX_NUM_BASE_CASES = 23;
extern const std::array<CasxBaseCase, CASX_NUM_BASE_CASES> CASX_BASE_CASES;

// All rows, and for each row the configuration of its base case.
struct CasxExpansion
{
    CasxRows rows;
    std::array<int, CASX_NUM_CONFIGS> baseOf;
};

// A quarter turn, count times, of a configuration or of a triangle mask.
[[nodiscard]] int rotateConfigX(int cfg, int count);
[[nodiscard]] int rotateConfigY(int cfg, int count);
[[nodiscard]] int rotateConfigZ(int cfg, int count);

// If two triangles cover one face of the cube, gives them the diagonal through the face's lowest corner.
// Returns whether they do cover one face; other triangles stay as they are.
bool samePlaneUnify(int& maskA, int& maskB);

// Computes all rows from the base cases.
[[nodiscard]] CasxExpansion expandCasxRows(TriMode triMode);

// The same as a constant, with no work at run time; the rows of TM_THIN are sorted.
[[nodiscard]] const CasxRows& getConstantCasxRows(TriMode triMode);

} // namespace TARN_ZEF

#endif
