#include "finish/CreaseMaker.h"

#include "finish/CreaseCrossings.h"
#include "finish/CreaseCut.h"
#include "finish/CreaseUnfolding.h"
#include "finish/creaseChains.h"

namespace TARN_ZEF
{
using Kind = HalfEdgeMesh::Kind;

CreaseMaker::CreaseMaker(HalfEdgeMesh& mesh_, const CreaseSides::Surfaces& vSurfaces_, double cellSize_,
                         double noise_, double radius_, const Box& room)
    : mesh(mesh_)
    , cellSize(cellSize_)
    , sides(mesh_, vSurfaces_, cellSize_, noise_, radius_, room)
{
}

void CreaseMaker::run()
{
    sides.run();
    CreaseCrossings crossings(mesh, sides);
    crossings.run();
    if (crossings.getCrossings().empty())
        return;
    CreaseCut cut(mesh, sides, crossings, cellSize);
    cut.run();
    std::vector<int> vCorners = cut.getCorners();
    CreaseUnfolding(mesh, sides, crossings, cellSize).run(vCorners);
    setKinds();
    numEdges = cut.getNumEdges();
    numCorners = vCorners.size();
}

void CreaseMaker::setKinds()
{
    for (int v = 0; v < mesh.endVertices(); ++v)
    {
        if (!mesh.isAliveVertex(v))
            continue;
        const int number = getNumFeatures(mesh, v);
        if (number == 2 && !mesh.isBorderVertex(v))
            mesh.setKind(v,
                         getTurn(mesh, v, getChainEnds(mesh, v)) > -SHARP_TURN ? Kind::FIXED : Kind::CHAIN);
        else if (number > 0)
            mesh.setKind(v, Kind::FIXED);
    }
}

} // namespace TARN_ZEF
