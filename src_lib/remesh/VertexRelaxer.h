#ifndef ZEF_VERTEXRELAXER_H
#define ZEF_VERTEXRELAXER_H

#include "remesh/WorkSurface.h"

namespace TARN_ZEF
{
// Moves free vertices towards the middle of their fans, in the tangent plane, and back onto their patch.
class VertexRelaxer
{
public:
    explicit VertexRelaxer(WorkSurface& work_)
        : work(work_)
        , mesh(work_.mesh)
    {
    }

    // bOnlyBetter: only where the worst triangle gets better.
    void relax(bool bOnlyBetter);
    // Whether it moved.
    bool relaxVertex(int v, bool bOnlyBetter);

private:
    [[nodiscard]] Point3 middleOfFan(int v) const;
    [[nodiscard]] bool mayMove(int v, const Point3& p, bool bOnlyBetter) const;

    WorkSurface& work;
    HalfEdgeMesh& mesh;
};

} // namespace TARN_ZEF

#endif
