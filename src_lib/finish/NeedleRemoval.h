#ifndef ZEF_FINISH_NEEDLEREMOVAL_H
#define ZEF_FINISH_NEEDLEREMOVAL_H

#include "finish/TriangleShape.h"
#include "surface/HalfEdgeMesh.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Takes the last triangles with an angle below 7 degrees out of a surface: an edge of theirs collapses or flips, or
// they leave the border. That changes the surface by about their height, so feature edges and kinds of vertices do
// not count any more; it may bend, but not fold. Fewer are thin afterwards, or none as thin as the one that went.
//
// Ownership:  works on the caller's mesh; edits are made in the order of numbers.
class NeedleRemoval
{
public:
    using Flags = std::vector<std::uint8_t>;

    explicit NeedleRemoval(HalfEdgeMesh& mesh_);

    // Returns the number of triangles that were mended or are to leave.
    std::size_t run();

    // Of the triangles: which ones were changed. Some of them may be dead.
    [[nodiscard]] const Flags& getTouched() const noexcept { return vTouched; }
    // Which ones are still to leave, after which corners have to be parted.
    [[nodiscard]] const Flags& getLeaving() const noexcept { return vLeaving; }
    // Those that nothing helped, ascending.
    [[nodiscard]] const std::vector<int>& getStubborn() const noexcept { return vStubborn; }

private:
    class Change;

    [[nodiscard]] bool mend(int t);
    [[nodiscard]] bool tryCollapse(int h);
    [[nodiscard]] bool tryFlip(int h);
    [[nodiscard]] bool tryDrop(int t);
    void addChange(int centre, int other, const Point3& target, Change& change) const;
    [[nodiscard]] TriangleShape getShape(int t) const;
    void touchAround(int v);

    HalfEdgeMesh& mesh;
    Flags vTouched;
    Flags vLeaving;
    std::vector<int> vStubborn;
};

} // namespace TARN_ZEF

#endif
