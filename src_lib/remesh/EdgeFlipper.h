#ifndef ZEF_EDGEFLIPPER_H
#define ZEF_EDGEFLIPPER_H

#include "remesh/WorkSurface.h"

#include <vector>

namespace TARN_ZEF
{
// Flips diagonals in rounds: those of a list, then those around what was flipped.
class EdgeFlipper
{
public:
    explicit EdgeFlipper(WorkSurface& work_)
        : work(work_)
        , mesh(work_.mesh)
    {
    }

    enum class Aim
    {
        VALENCE, // six neighbours, between vertices that may move; else as SHAPE
        SHAPE    // Delaunay
    };

    void flipAll(Aim aim);
    // pFlipped, if not null, is appended what was flipped.
    void flipFrom(std::vector<int> vQueue, Aim aim, std::vector<int>* pFlipped = nullptr);

private:
    void countValences();
    [[nodiscard]] bool wantsFlip(int h, Aim aim) const;
    [[nodiscard]] bool evensValences(int h) const;
    [[nodiscard]] bool isDelaunay(int h) const;
    [[nodiscard]] bool keepsSurface(int h) const;
    void flip(int h, std::vector<int>& vNext);

    WorkSurface& work;
    HalfEdgeMesh& mesh;
    std::vector<int> vValence; // empty unless these count
    std::vector<char> vQueued; // a half-edge each
};

} // namespace TARN_ZEF

#endif
