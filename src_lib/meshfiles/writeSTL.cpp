#include "meshfiles/writeSTL.h"

#include "core/definitions.h"
#include "geometry/tools.h"
#include "rmesh/RMesh.h"
#include "rmesh/RTriangle.h"
#include "text/TextWriter.h"
#include "text/UnfinishedFile.h"
#include "text/closeWhole.h"

#include <fstream>
#include <vector>

namespace TARN_ZEF
{
namespace
{
constexpr int PRECISION = 10;

void writeFacet(TextWriter& out, const RTriangle& triangle)
{
    bool bOK = false;
    const Vector3 nv =
        getNormalVector(triangle.getCorner(0), triangle.getCorner(1), triangle.getCorner(2), bOK);
    out.text("facet normal ");
    out.point(Point3(nv.x(), nv.y(), nv.z()));
    out.text(" outer loop\n");
    for (int ici = 0; ici < 3; ++ici)
    {
        out.text("  vertex ");
        out.point(*triangle.getCorner(ici));
    }
    out.text(" endloop\nendfacet\n");
}

} // namespace

bool writeSTL(const RMesh* pRMesh, const std::string& name)
{
    const UnfinishedFile unfinished(name);
    std::ofstream file(name, std::ios::binary);
    if (!file)
    {
        errorMessage("writeSTL", "Failed to open " + name);
        return false;
    }
    std::vector<RTriangle*> vRT;
    pRMesh->getAliveT(vRT);
    {
        TextWriter out(file, PRECISION);
        out.text("solid - ZEF\n");
        for (const RTriangle* pRT : vRT)
            writeFacet(out, *pRT);
        out.text("endsolid - ZEF\n");
    }
    if (closeWhole(file))
        return true;
    errorMessage("writeSTL", "failed to write " + name);
    return false;
}

} // namespace TARN_ZEF
