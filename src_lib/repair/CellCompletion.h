#ifndef ZEF_CELLCOMPLETION_H
#define ZEF_CELLCOMPLETION_H

#include "core/definitions.h"

#include <vector>

namespace TARN_ZEF
{
class Progress;
class Voro;
struct RepairState;

// Lets Voro complete the cells around borders and edges of degree 4 and extract again.
//
// Leaves:    the mesh of the renewed extraction, each square with one diagonal.
// Validity:  all pointers to triangles and edges die.
// Cost:      what the cells that come in change, not the mesh.
class CellCompletion
{
public:
    explicit CellCompletion(RepairState& state_);

    void run(Voro* pVoro);

private:
    [[nodiscard]] std::vector<u64> collectCells(Progress& progress);

    RepairState& state;
};

} // namespace TARN_ZEF

#endif
