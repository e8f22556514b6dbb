#ifndef ZEF_SIZEFIELD_H
#define ZEF_SIZEFIELD_H

#include "remesh/WorkSurface.h"

namespace TARN_ZEF
{
// Wanted edge lengths at the free vertices: what the distance from the source allows, then no more than a slope above
// what the neighbours want. Chains keep theirs.
class SizeField
{
public:
    explicit SizeField(WorkSurface& work_)
        : work(work_)
        , mesh(work_.mesh)
    {
    }

    void find();

private:
    void shrinkByDistance();
    void spread();

    WorkSurface& work;
    HalfEdgeMesh& mesh;
};

} // namespace TARN_ZEF

#endif
