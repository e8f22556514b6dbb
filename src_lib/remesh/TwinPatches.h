#ifndef ZEF_TWINPATCHES_H
#define ZEF_TWINPATCHES_H

#include "remesh/FlatSoup.h"
#include "remesh/SourceSurface.h"

#include <utility>
#include <vector>

namespace TARN_ZEF
{
// The faces in which bodies touch: patches of the same triangles, facing each other. Remeshed each for itself they would
// cross in a thousand places; so one of the two gets the triangles of the other, turned over.
class TwinPatches
{
public:
    explicit TwinPatches(const SourceSurface& source);

    // Takes over what is alive in mesh, which was made from the source. Twins whose borders were not cut alike stay as
    // they are.
    void getFlat(const HalfEdgeMesh& mesh, FlatSoup& flat) const;

private:
    // Of a patch in the remeshed surface.
    struct Face
    {
        std::vector<int> vTriangles;
        std::vector<std::pair<int, int>> vBorder; // ends of edges, as places
        std::vector<std::pair<int, int>> vRim;    // sorted: place and vertex
    };

    void findTwins(const SourceSurface& source);
    [[nodiscard]] static Face collectFace(const HalfEdgeMesh& mesh, std::vector<int> vTriangles,
                                          const std::vector<int>& vPlace);
    [[nodiscard]] static bool fit(const Face& kept, const Face& replaced);
    static void replace(const HalfEdgeMesh& mesh, const Face& kept, const Face& replaced, FlatSoup& flat);

    std::vector<std::pair<int, int>> vTwins; // labels of patches, the lower one first
};

} // namespace TARN_ZEF

#endif
