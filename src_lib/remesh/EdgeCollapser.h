#ifndef ZEF_EDGECOLLAPSER_H
#define ZEF_EDGECOLLAPSER_H

#include "remesh/WorkSurface.h"

namespace TARN_ZEF
{
// Takes vertices away by collapsing edges into one of their ends.
class EdgeCollapser
{
public:
    explicit EdgeCollapser(WorkSurface& work_)
        : work(work_)
        , mesh(work_.mesh)
    {
    }

    // Vertices of chains that are to vanish.
    void collapseSurplus();
    // Free ends of edges that are too short.
    void collapseShort();

private:
    [[nodiscard]] bool tryCollapse(int h, double longest);
    [[nodiscard]] bool keepsShape(int h, double longest) const;
    [[nodiscard]] bool keepsDistance(int h) const;
    [[nodiscard]] bool isSurplus(int h) const;

    WorkSurface& work;
    HalfEdgeMesh& mesh;
};

} // namespace TARN_ZEF

#endif
