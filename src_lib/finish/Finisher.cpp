#include "finish/Finisher.h"

#include "core/Progress.h"
#include "core/cancel.h"
#include "core/definitions.h"
#include "core/refuse.h"
#include "finish/BorderEvening.h"
#include "finish/CreaseMaker.h"
#include "finish/DebrisRemoval.h"
#include "finish/NeedleRemoval.h"
#include "finish/Relaxation.h"
#include "finish/SheetParter.h"
#include "finish/SmallHoles.h"
#include "finish/fillLoops.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <string>

namespace TARN_ZEF
{
namespace
{
constexpr int FIRST_ROUNDS = 4;
constexpr int LATER_ROUNDS = 3;
constexpr int NEEDLE_ROUNDS = 6;
// In which only the vertices of needles move, not those around them.
constexpr int GENTLE_ROUNDS = 3;
// Cosine of 20 degrees: triangles with a smaller angle collapse.
constexpr double THIN = 0.9397;
constexpr std::size_t LONGEST_FILLED = 12;
// Border edges shorter than that go, in cells.
constexpr double SHORT = 0.7;

} // namespace

Finisher::Finisher(FlatMesh& flat_, const std::vector<Point3>& vCloud_, const FinishOptions& options_,
                   FinishReport& report_, const NearFrame& frame_)
    : flat(flat_)
    , vCloud(vCloud_)
    , options(options_)
    , report(report_)
    , frame(frame_)
{
    if (!(options.maxMove > 0.0) || !std::isfinite(options.maxMove))
        refuse<ZefBadArgument>("options.maxMove > 0.0 && isfinite(options.maxMove)",
                               "the farthest way of a vertex is " + std::to_string(options.maxMove) +
                                   " cells; give a number above 0");
    if (!(options.cellSize >= 0.0) || !std::isfinite(options.cellSize))
        refuse<ZefBadArgument>("options.cellSize >= 0.0 && isfinite(options.cellSize)",
                               "the cell size is " + std::to_string(options.cellSize) +
                                   "; give a number above 0, or 0 to take that of the mesh");
}

void Finisher::run()
{
    scaleDown();
    part();
    tellDone("FI_part");
    if (flat.vCorners.empty())
        return;
    load();
    checkCancelled();
    tellDone("FI_load");
    improve();
    removeFolds();
    checkCancelled();
    tellDone("FI_folds");
    unload();
}

void Finisher::tellDone(const char* step)
{
    getRootProgress()->getChildProgressSetTodo(step, 1)->setFinished(true);
}

// Squares and products must not overflow: coordinates of any size are brought near 1. A power of two takes no bit
// from them but where one is beyond all measure smaller than another.
void Finisher::scaleDown()
{
    double largest = 0.0;
    for (const Point3& p : flat.vPoints)
        for (const double x : {p.x(), p.y(), p.z()})
            if (std::isfinite(x))
                largest = std::max(largest, std::fabs(x));
    constexpr double LARGEST = 0x1p200;
    if (largest <= LARGEST)
        return;
    (void)std::frexp(largest, &exponent);
    scale(flat.vPoints, -exponent);
    vScaledCloud = vCloud;
    scale(vScaledCloud, -exponent);
}

Point3 Finisher::getScaled(const Point3& p, int power)
{
    return {std::ldexp(p.x(), power), std::ldexp(p.y(), power), std::ldexp(p.z(), power)};
}

void Finisher::scale(std::vector<Point3>& vPoints, int power)
{
    for (Point3& p : vPoints)
        p = getScaled(p, power);
}

void Finisher::part()
{
    PartReport parts;
    cellSize = findCellSize();
    const DebrisRemoval::Flags vWasOfLarge = DebrisRemoval::findLarge(flat);
    SheetParter parter(flat, parts, cellSize);
    parter.run();
    vIsParted = parter.getParted();
    vIsOfLarge.resize(flat.vPoints.size());
    for (std::size_t v = 0; v < vIsOfLarge.size(); ++v)
        vIsOfLarge[v] = vWasOfLarge[parter.getSource(v)];
    report.numUnusableT = parts.numUnusableT;
    report.numFlatT = parts.numFlatT;
    report.numDuplicateT = parts.numDuplicateT;
    report.numWrapT = parts.numWrapT;
    report.numFinT = parts.numFinT;
    report.numTurnedT = parts.numTurnedT;
    report.numCutSides = parts.numCutEdges;
    report.numDoubledVtx = parts.numDoubledVtx;
    report.numSplitEdges = parts.numSplitEdges;
}

void Finisher::improve()
{
    const bool bFit = options.bFitToPoints && !vCloud.empty();
    pEvenProgress = getRootProgress()->getChildProgressSetTodo("FI_even", bFit ? FIRST_ROUNDS + LATER_ROUNDS
                                                                               : FIRST_ROUNDS);
    pFitProgress =
        getRootProgress()->getChildProgressSetTodo("FI_fit", 2 * static_cast<u64>(mesh.endVertices()));
    if (options.bEvenTriangles)
    {
        even(FIRST_ROUNDS);
        evenBorders();
    }
    if (!bFit)
        return;
    fit();
    if (report.numCreaseEdges > 0)
        refineCreases();
    if (!options.bEvenTriangles)
        return;
    even(LATER_ROUNDS);
    evenBorders();
    fit();
    (void)mendThin();
}

// Where the points belong to is known only now that each side has its own triangles.
void Finisher::refineCreases()
{
    if (options.bEvenTriangles)
        (void)mendThin();
    fit();
}

// Returns which triangles are others than before.
Relaxation::Flags Finisher::mendThin()
{
    Relaxation relaxation(mesh);
    relaxation.collapse(THIN);
    relaxation.flip();
    relaxation.collapse(THIN);
    return relaxation.getTouched();
}

void Finisher::even(int numRounds)
{
    Relaxation relaxation(mesh);
    for (int i = 0; i < numRounds; ++i)
    {
        relaxation.flip();
        relaxation.smooth();
        pEvenProgress->increment();
    }
    relaxation.flip();
    relaxation.collapse(THIN);
}

void Finisher::evenBorders()
{
    BorderEvening borders(mesh);
    borders.trim();
    borders.smooth();
    report.numNotches += borders.getNumFilled();
    report.numTeeth += borders.getNumDropped();
    if (cellSize > 0.0 && std::isfinite(cellSize))
        Relaxation(mesh).collapseBorder(SHORT * cellSize);
}

void Finisher::fit()
{
    if (!(cellSize > 0.0) || !std::isfinite(cellSize))
        return;
    if (oFit)
    {
        oFit->repeat(*pFitProgress);
        return;
    }
    oFit.emplace(mesh, exponent == 0 ? vCloud : vScaledCloud, cellSize, options.maxMove);
    oFit->run(*pFitProgress);
    report.fitRadius = oFit->getRadius();
    report.noise = oFit->getNoise();
    if (options.bKeepCreases)
        makeCreases();
}

void Finisher::makeCreases()
{
    CreaseMaker maker(mesh, oFit->getSurfaces(), cellSize, report.noise, report.fitRadius, oFit->getRoom());
    maker.run();
    report.numCreaseEdges = maker.getNumCreaseEdges();
    report.numCreaseCorners = maker.getNumCorners();
}

void Finisher::removeFolds()
{
    const Rounding round = options.bRoundToFloat && areFloatsFine() ? Rounding(roundToFloat) : nullptr;
    FoldReport folds;
    roundPoints(round);
    FoldRemoval(mesh, folds, round).run();
    // What was smoothed or filled is thin here and there.
    if (options.bEvenTriangles && folds.numPairs > 0)
    {
        const Relaxation::Flags vTouched = mendThin();
        roundPoints(round);
        FoldReport later;
        FoldRemoval(mesh, later, round).runNear(vTouched);
        folds.add(later);
    }
    if (options.bEvenTriangles)
        removeNeedles(folds, round);
    if (frame.isShifted())
        removeFoldsOfFarPlace(folds);
    report.numFolds = folds.numPairs;
    report.numFoldCollapses = folds.numCollapses;
    report.numFoldT = folds.numDroppedT;
    report.numFilledCuts += folds.numFilled;
    report.numDebrisT += DebrisRemoval(mesh).run();
}

// What is taken out of folds can leave thin triangles again.
void Finisher::removeNeedles(FoldReport& folds, const Rounding& round)
{
    for (int i = 0; i < NEEDLE_ROUNDS; ++i)
    {
        NeedleRemoval needles(mesh);
        const std::size_t num = needles.run();
        report.numThinT += num;
        if (num == 0 && needles.getStubborn().empty())
            return;
        roundPoints(round);
        FoldReport later;
        FoldRemoval(mesh, later, round)
            .runNear(needles.getTouched(), needles.getStubborn(), i < GENTLE_ROUNDS ? 0 : 1,
                     needles.getLeaving());
        folds.add(later);
    }
}

// Where the points came from, the digits are fewer: what is sound here must be so there.
void Finisher::removeFoldsOfFarPlace(FoldReport& folds)
{
    const Rounding round = [this](const Point3& p)
    { return getScaled(frame.enter(frame.leave(getScaled(p, exponent))), -exponent); };
    roundPoints(round);
    FoldReport later;
    FoldRemoval(mesh, later, round).run();
    folds.add(later);
}

// Whether a float tells places a thousandth of a cell apart, everywhere on the surface.
bool Finisher::areFloatsFine() const
{
    double largest = 0.0;
    for (int v = 0; v < mesh.endVertices(); ++v)
        for (const double x : {mesh.point(v).x(), mesh.point(v).y(), mesh.point(v).z()})
            largest = std::max(largest, std::fabs(x));
    const double unscaled = std::ldexp(largest, exponent);
    return unscaled < std::numeric_limits<float>::max() && cellSize * 1e-3 > largest * FLT_EPSILON &&
           std::ldexp(cellSize * 1e-3, exponent) > std::numeric_limits<float>::min();
}

void Finisher::roundPoints(const Rounding& round)
{
    if (!round)
        return;
    for (int v = 0; v < mesh.endVertices(); ++v)
        if (mesh.isAliveVertex(v))
            mesh.setPoint(v, round(mesh.point(v)));
}

void Finisher::load()
{
    const std::vector<int> vCorners(flat.vCorners.begin(), flat.vCorners.end());
    std::vector<int> vOrigin;
    ASSEX(mesh.build(flat.vPoints, vCorners, &vOrigin));
    // Small holes where sheets were parted are none of the object's.
    report.numFilledCuts =
        fillLoops(mesh, LONGEST_FILLED,
                  [&](int v)
                  { return vIsParted[static_cast<std::size_t>(vOrigin[static_cast<std::size_t>(v)])] != 0; });
    report.numFilledHoles = SmallHoles(mesh).close(options.longestHole);
    DebrisRemoval::Flags vOfLarge;
    vOfLarge.reserve(vOrigin.size());
    for (const int v : vOrigin)
        vOfLarge.push_back(vIsOfLarge[static_cast<std::size_t>(v)]);
    DebrisRemoval debris(mesh);
    debris.label(vOfLarge);
    report.numDebrisT += debris.run();
}

void Finisher::unload()
{
    std::vector<int> vCorners;
    mesh.getFlat(flat.vPoints, vCorners);
    flat.vCorners.assign(vCorners.begin(), vCorners.end());
    Mates vMates = getMates();
    report.numTurnedT += faceOutward(flat, vMates);
    scale(flat.vPoints, exponent);
}

// Of the triangles in the order of getFlat().
Mates Finisher::getMates() const
{
    std::vector<FlatMesh::Index> vPlace(static_cast<std::size_t>(mesh.endTriangles()));
    FlatMesh::Index num = 0;
    for (int t = 0; t < mesh.endTriangles(); ++t)
        if (mesh.isAlive(t))
            vPlace[static_cast<std::size_t>(t)] = num++;
    const auto toFlat = [&vPlace](int h)
    {
        return 3 * vPlace[static_cast<std::size_t>(HalfEdgeMesh::triangleOf(h))] +
               static_cast<FlatMesh::Index>(h & 3);
    };
    Mates vMates;
    vMates.reserve(3 * std::size_t{num});
    for (int t = 0; t < mesh.endTriangles(); ++t)
        if (mesh.isAlive(t))
            for (int h = 4 * t; h < 4 * t + 3; ++h)
                vMates.push_back(mesh.isBorder(h) ? FlatMesh::NONE : toFlat(mesh.partner(h)));
    return vMates;
}

// Without one that is given: the edges of such a mesh are a little longer than its cells.
double Finisher::findCellSize() const
{
    if (options.cellSize > 0.0)
        return std::ldexp(options.cellSize, -exponent);
    double sum = 0.0;
    for (FlatMesh::Index h = 0; h < flat.vCorners.size(); ++h)
        sum += (flat.vPoints[flat.to(h)] - flat.at(h)).length();
    return flat.vCorners.empty() ? 0.0 : 0.85 * sum / static_cast<double>(flat.vCorners.size());
}

} // namespace TARN_ZEF
