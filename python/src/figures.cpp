#include "figures.h"

#include <string>
#include <utility>
#include <vector>

#include "arrays.h"
#include "errors.h"

namespace TARN_PYTHON
{
namespace
{
using namespace TARN_ZEF;

// Puts members of a struct into a dictionary, in the order of the calls.
template <typename Struct>
class Members
{
public:
    explicit Members(const Struct& values_)
        : values(values_)
    {
    }

    template <typename T>
    Members& add(const char* name, T Struct::*pMember)
    {
        return add(name, toObject(values.*pMember));
    }
    Members& add(const char* name, const py::object& value)
    {
        members[name] = value;
        return *this;
    }
    [[nodiscard]] py::dict get() const { return members; }

private:
    static py::object toObject(const std::string& text) { return toText(text); }
    static py::object toObject(const Point3& point) { return toTuple(point); }
    template <typename T>
    static py::object toObject(const T& value)
    {
        return py::cast(value);
    }

    const Struct& values;
    py::dict members;
};

py::dict toDict(const StageReport& stage)
{
    return Members(stage)
        .add("name", &StageReport::name)
        .add("seconds", &StageReport::seconds)
        .add("peakBytes", &StageReport::peakBytes)
        .get();
}

py::dict toDict(const PassReport& pass)
{
    return Members(pass)
        .add("name", &PassReport::name)
        .add("numAddedT", &PassReport::numAddedT)
        .add("numKilledT", &PassReport::numKilledT)
        .get();
}

py::dict toDict(const CloudFigures& cloud)
{
    return Members(cloud)
        .add("spacing", &CloudFigures::spacing)
        .add("evenness", &CloudFigures::evenness)
        .add("noise", &CloudFigures::noise)
        .add("layers", &CloudFigures::layers)
        .get();
}

py::dict toDict(const AutoTrial& trial)
{
    return Members(trial)
        .add("factor", &AutoTrial::factor)
        .add("bSmooth", &AutoTrial::bSmooth)
        .add("bByFacing", &AutoTrial::bByFacing)
        .add("numTriangles", &AutoTrial::numTriangles)
        .add("numHoles", &AutoTrial::numHoles)
        .add("numRims", &AutoTrial::numRims)
        .add("numBorderEdges", &AutoTrial::numBorderEdges)
        .add("numBorderLoops", &AutoTrial::numBorderLoops)
        .add("numPieces", &AutoTrial::numPieces)
        .add("numNonManifoldEdges", &AutoTrial::numNonManifoldEdges)
        .add("numNonManifoldVertices", &AutoTrial::numNonManifoldVertices)
        .get();
}

const char* nameOf(MeshFaultKind kind)
{
    switch (kind)
    {
    case MeshFaultKind::NOT_FINITE:
        return "NOT_FINITE";
    case MeshFaultKind::FLAT:
        return "FLAT";
    case MeshFaultKind::DUPLICATE:
        return "DUPLICATE";
    case MeshFaultKind::NON_MANIFOLD_EDGE:
        return "NON_MANIFOLD_EDGE";
    case MeshFaultKind::NON_MANIFOLD_VERTEX:
        return "NON_MANIFOLD_VERTEX";
    case MeshFaultKind::ORIENTATION:
        return "ORIENTATION";
    case MeshFaultKind::INTERSECTION:
        return "INTERSECTION";
    case MeshFaultKind::BORDER:
        break;
    }
    return "BORDER";
}

py::dict toDict(const MeshFault& fault)
{
    return Members(fault)
        .add("kind", py::str(nameOf(fault.kind)))
        .add("triangle", &MeshFault::triangle)
        .add("otherTriangle", &MeshFault::otherTriangle)
        .add("place", &MeshFault::place)
        .get();
}

py::dict takeDict(SurfaceDistances& distances)
{
    return Members(distances)
        .add("numSamples", &SurfaceDistances::numSamples)
        .add("mean", &SurfaceDistances::mean)
        .add("rms", &SurfaceDistances::rms)
        .add("percentile99", &SurfaceDistances::percentile99)
        .add("largest", &SurfaceDistances::largest)
        .add("largestPlace", &SurfaceDistances::largestPlace)
        .add("nearestToThere", &SurfaceDistances::nearestToThere)
        .add("atPoints", fromDoubles(std::move(distances.vAtPoints)))
        .get();
}

template <typename Struct>
py::list toList(const std::vector<Struct>& vStructs)
{
    py::list list;
    for (const Struct& entry : vStructs)
        list.append(toDict(entry));
    return list;
}
} // namespace

py::dict toDict(const CallReport& report)
{
    return Members(report)
        .add("call", &CallReport::call)
        .add("bFinished", &CallReport::bFinished)
        .add("numPoints", &CallReport::numPoints)
        .add("numNotFinite", &CallReport::numNotFinite)
        .add("numFlatCorners", &CallReport::numFlatCorners)
        .add("numUsedPoints", &CallReport::numUsedPoints)
        .add("detectedSpacing", &CallReport::detectedSpacing)
        .add("usedSpacing", &CallReport::usedSpacing)
        .add("latticeBits", &CallReport::latticeBits)
        .add("numPointCells", &CallReport::numPointCells)
        .add("numFilledCells", &CallReport::numFilledCells)
        .add("numMovedCells", &CallReport::numMovedCells)
        .add("numRemovedCells", &CallReport::numRemovedCells)
        .add("numCells", &CallReport::numCells)
        .add("numRawT", &CallReport::numRawT)
        .add("passes", toList(report.vPasses))
        .add("numT", &CallReport::numT)
        .add("numHolesClosed", &CallReport::numHolesClosed)
        .add("numPiecesDropped", &CallReport::numPiecesDropped)
        .add("numBorderEdges", &CallReport::numBorderEdges)
        .add("numBorderLoops", &CallReport::numBorderLoops)
        .add("numNonManifoldEdges", &CallReport::numNonManifoldEdges)
        .add("numPieces", &CallReport::numPieces)
        .add("eulerNumber", &CallReport::eulerNumber)
        .add("seconds", &CallReport::seconds)
        .add("bytesAtStart", &CallReport::bytesAtStart)
        .add("peakBytes", &CallReport::peakBytes)
        .add("stages", toList(report.vStages))
        .get();
}

py::dict toDict(const AutoReport& report)
{
    return Members(report)
        .add("cloud", toDict(report.cloud))
        .add("factor", &AutoReport::factor)
        .add("bSmooth", &AutoReport::bSmooth)
        .add("bByFacing", &AutoReport::bByFacing)
        .add("reason", &AutoReport::reason)
        .add("trials", toList(report.vTrials))
        .get();
}

py::dict toDict(const FinishReport& report)
{
    return Members(report)
        .add("numUnusableT", &FinishReport::numUnusableT)
        .add("numFlatT", &FinishReport::numFlatT)
        .add("numDuplicateT", &FinishReport::numDuplicateT)
        .add("numWrapT", &FinishReport::numWrapT)
        .add("numFinT", &FinishReport::numFinT)
        .add("numTurnedT", &FinishReport::numTurnedT)
        .add("numCutSides", &FinishReport::numCutSides)
        .add("numDoubledVtx", &FinishReport::numDoubledVtx)
        .add("numSplitEdges", &FinishReport::numSplitEdges)
        .add("numDebrisT", &FinishReport::numDebrisT)
        .add("numFilledHoles", &FinishReport::numFilledHoles)
        .add("numNotches", &FinishReport::numNotches)
        .add("numTeeth", &FinishReport::numTeeth)
        .add("numThinT", &FinishReport::numThinT)
        .add("numFolds", &FinishReport::numFolds)
        .add("numFoldCollapses", &FinishReport::numFoldCollapses)
        .add("numFoldT", &FinishReport::numFoldT)
        .add("numFilledCuts", &FinishReport::numFilledCuts)
        .add("fitRadius", &FinishReport::fitRadius)
        .add("noise", &FinishReport::noise)
        .add("numCreaseEdges", &FinishReport::numCreaseEdges)
        .add("numCreaseCorners", &FinishReport::numCreaseCorners)
        .get();
}

py::dict toDict(const RemeshReport& report)
{
    return Members(report)
        .add("length", &RemeshReport::length)
        .add("featureAngle", &RemeshReport::featureAngle)
        .add("tolerance", &RemeshReport::tolerance)
        .add("numNonFinite", &RemeshReport::numNonFinite)
        .add("numWelded", &RemeshReport::numWelded)
        .add("numFlat", &RemeshReport::numFlat)
        .add("numDoubled", &RemeshReport::numDoubled)
        .add("numJoints", &RemeshReport::numJoints)
        .add("numParted", &RemeshReport::numParted)
        .add("numCut", &RemeshReport::numCut)
        .add("numTurned", &RemeshReport::numTurned)
        .add("numParts", &RemeshReport::numParts)
        .add("numClosed", &RemeshReport::numClosed)
        .add("numCavities", &RemeshReport::numCavities)
        .add("numSealed", &RemeshReport::numSealed)
        .add("bFromLattice", &RemeshReport::bFromLattice)
        .add("numTriangles", &RemeshReport::numTriangles)
        .add("numFarPlaces", &RemeshReport::numFarPlaces)
        .add("farthestPlace", &RemeshReport::farthestPlace)
        .get();
}

py::dict toDict(const MeshCheck& check)
{
    return Members(check)
        .add("isSound", py::bool_(check.isSound()))
        .add("isClosed", py::bool_(check.isClosed()))
        .add("isManifold", py::bool_(check.isManifold()))
        .add("isEdgeManifold", py::bool_(check.isEdgeManifold()))
        .add("isOriented", py::bool_(check.isOriented()))
        .add("isFreeOfIntersections", py::bool_(check.isFreeOfIntersections()))
        .add("numVertices", &MeshCheck::numVertices)
        .add("numTriangles", &MeshCheck::numTriangles)
        .add("numEdges", &MeshCheck::numEdges)
        .add("numPieces", &MeshCheck::numPieces)
        .add("eulerNumber", &MeshCheck::eulerNumber)
        .add("numNotFinite", &MeshCheck::numNotFinite)
        .add("numFlat", &MeshCheck::numFlat)
        .add("numDuplicates", &MeshCheck::numDuplicates)
        .add("numNonManifoldEdges", &MeshCheck::numNonManifoldEdges)
        .add("numNonManifoldVertices", &MeshCheck::numNonManifoldVertices)
        .add("numDisagreeingEdges", &MeshCheck::numDisagreeingEdges)
        .add("numIntersections", &MeshCheck::numIntersections)
        .add("bAllPairsJudged", &MeshCheck::bAllPairsJudged)
        .add("numBorderEdges", &MeshCheck::numBorderEdges)
        .add("numBorderLoops", &MeshCheck::numBorderLoops)
        .add("borderLength", &MeshCheck::borderLength)
        .add("longestLoopLength", &MeshCheck::longestLoopLength)
        .add("numLongestLoopEdges", &MeshCheck::numLongestLoopEdges)
        .add("faults", toList(check.vFaults))
        .get();
}

py::dict toDict(const BorderLoop& loop)
{
    return Members(loop)
        .add("vertices", fromInts(loop.vVertices))
        .add("length", &BorderLoop::length)
        .add("area", &BorderLoop::area)
        .add("bRim", &BorderLoop::bRim)
        .add("bClosed", &BorderLoop::bClosed)
        .add("piece", &BorderLoop::piece)
        .add("reason", &BorderLoop::reason)
        .get();
}

py::dict toDict(const FillResult& result)
{
    return Members(result)
        .add("bFilled", &FillResult::bFilled)
        .add("numTriangles", &FillResult::numTriangles)
        .add("numVertices", &FillResult::numVertices)
        .add("reason", &FillResult::reason)
        .get();
}

py::dict toDict(const FormatUse& use)
{
    return Members(use)
        .add("bReadsPoints", &FormatUse::bReadsPoints)
        .add("bReadsTriangles", &FormatUse::bReadsTriangles)
        .add("bWritesPoints", &FormatUse::bWritesPoints)
        .add("bWritesTriangles", &FormatUse::bWritesTriangles)
        .get();
}

py::dict toDict(MeshComparison&& comparison)
{
    py::dict both;
    both["toSecond"] = takeDict(comparison.toSecond);
    both["toFirst"] = takeDict(comparison.toFirst);
    return both;
}

} // namespace TARN_PYTHON
