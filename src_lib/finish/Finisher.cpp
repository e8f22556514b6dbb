#include "finish/Finisher.h"

#include "core/definitions.h"
#include "finish/FoldRemoval.h"
#include "finish/Relaxation.h"
#include "finish/SheetFit.h"
#include "finish/SheetParter.h"

#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr int FIRST_ROUNDS = 4;
constexpr int LATER_ROUNDS = 2;
// Cosine of 20 degrees: triangles with a smaller angle collapse.
constexpr double THIN = 0.9397;
} // namespace

Finisher::Finisher(FlatMesh& flat_, const std::vector<Point3>& vCloud_, const FinishOptions& options_,
                   FinishReport& report_)
    : flat(flat_)
    , vCloud(vCloud_)
    , options(options_)
    , report(report_)
{
    ASSEX(options.maxMove > 0.0 && std::isfinite(options.maxMove));
    ASSEX(options.cellSize >= 0.0 && std::isfinite(options.cellSize));
}

void Finisher::run()
{
    part();
    if (flat.vCorners.empty())
        return;
    load();
    improve();
    removeFolds();
    unload();
}

void Finisher::part()
{
    PartReport parts;
    SheetParter(flat, parts).run();
    report.numUnusableT = parts.numUnusableT;
    report.numFlatT = parts.numFlatT;
    report.numDuplicateT = parts.numDuplicateT;
    report.numFinT = parts.numFinT;
    report.numSurplusT = parts.numDroppedT;
    report.numTurnedT = parts.numTurnedT;
    report.numCutSides = parts.numCutEdges;
    report.numDoubledVtx = parts.numDoubledVtx;
    report.numSplitEdges = parts.numSplitEdges;
}

void Finisher::improve()
{
    if (options.bEvenTriangles)
        even(FIRST_ROUNDS);
    if (!options.bFitToPoints || vCloud.empty())
        return;
    fit();
    if (!options.bEvenTriangles)
        return;
    even(LATER_ROUNDS);
    fit();
    Relaxation relaxation(mesh);
    relaxation.collapse(THIN);
    relaxation.flip();
}

void Finisher::even(int numRounds)
{
    Relaxation relaxation(mesh);
    for (int i = 0; i < numRounds; ++i)
    {
        relaxation.flip();
        relaxation.smooth();
    }
    relaxation.flip();
    relaxation.collapse(THIN);
}

void Finisher::fit()
{
    const double cellSize = getCellSize();
    if (!(cellSize > 0.0) || !std::isfinite(cellSize))
        return;
    SheetFit sheetFit(mesh, vCloud, cellSize, options.maxMove);
    sheetFit.run();
    report.fitRadius = sheetFit.getRadius();
    report.noise = sheetFit.getNoise();
}

void Finisher::removeFolds()
{
    FoldReport folds;
    FoldRemoval(mesh, folds).run();
    report.numFolds = folds.numPairs;
    report.numFoldCollapses = folds.numCollapses;
    report.numFoldT = folds.numDroppedT;
    report.numFilledCuts = folds.numFilled;
}

void Finisher::load()
{
    const std::vector<int> vCorners(flat.vCorners.begin(), flat.vCorners.end());
    ASSEX(mesh.build(flat.vPoints, vCorners));
}

void Finisher::unload()
{
    std::vector<int> vCorners;
    mesh.getFlat(flat.vPoints, vCorners);
    flat.vCorners.assign(vCorners.begin(), vCorners.end());
    report.numTurnedT += faceOutward(flat);
}

// Without one that is given: the edges of such a mesh are a little longer than its cells.
double Finisher::getCellSize() const
{
    if (options.cellSize > 0.0)
        return options.cellSize;
    double sum = 0.0;
    double num = 0.0;
    mesh.forEachEdge(
        [&](int h)
        {
            sum += (mesh.point(mesh.to(h)) - mesh.point(mesh.from(h))).length();
            num += 1.0;
        });
    return 0.85 * sum / num;
}

} // namespace TARN_ZEF
