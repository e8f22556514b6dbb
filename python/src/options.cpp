#include "options.h"

namespace TARN_PYTHON
{
using namespace TARN_ZEF;

template <>
const OptionTable<AutoOptions>& getOptionTable()
{
    using O = AutoOptions;
    static const OptionTable<O> table =
        OptionTable<O>()
            .add("largestFactor", &O::largestFactor, "largest factor on the detected spacing; at least 1")
            .add("largestFactorOfOpen", &O::largestFactorOfOpen, "the same for surfaces that stay open")
            .add("bMaySmooth", &O::bMaySmooth, "whether smoothing may be chosen")
            .add("leastNoiseToSmooth", &O::leastNoiseToSmooth,
                 "noise from which on points are smoothed, in spacings")
            .add("mostEdgesOfHole", &O::mostEdgesOfHole,
                 "longest border loop, in edges, that counts as a hole")
            .add("mostFaultsLeft", &O::mostFaultsLeft,
                 "share of faults, 0 to 1, that the second factor may leave for the search to go on")
            .add("bTellSheetsApart", &O::bTellSheetsApart,
                 "whether closed bodies are looked for by the way that points face, where no factor does");
    return table;
}

template <>
const OptionTable<FinishOptions>& getOptionTable()
{
    using O = FinishOptions;
    static const OptionTable<O> table =
        OptionTable<O>()
            .add("bEvenTriangles", &O::bEvenTriangles, "whether triangles are evened out")
            .add("bFitToPoints", &O::bFitToPoints, "whether vertices move onto a local fit of the points")
            .add("bKeepCreases", &O::bKeepCreases,
                 "whether creases and corners of the object are found in the points")
            .add("maxMove", &O::maxMove, "farthest way of a vertex in one fit, in cells; above 0")
            .add("longestHole", &O::longestHole,
                 "longest border, in edges, of holes that are closed; 0: none")
            .add("cellSize", &O::cellSize, "edge of a cell, in units of the points; 0: as the mesh says")
            .add("bRoundToFloat", &O::bRoundToFloat,
                 "whether coordinates end as floats, for files that hold no more; the mesh is sound in "
                 "either case");
    return table;
}

template <>
const OptionTable<RemeshOptions>& getOptionTable()
{
    using O = RemeshOptions;
    static const OptionTable<O> table =
        OptionTable<O>()
            .add("length", &O::length, "wanted edge length, in units of the points; -1: found from the soup")
            .add("lengthFactor", &O::lengthFactor, "factor on a length that is found; above 0")
            .add("maxTriangles", &O::maxTriangles, "most triangles of the result; at least 100")
            .add(
                "featureAngle", &O::featureAngle,
                "degrees above which an edge is kept sharp; -1: found from the soup; above 180: borders only")
            .add("tolerance", &O::tolerance,
                 "farthest distance from the soup, in wanted lengths; above 0, at most 1")
            .add("weldTolerance", &O::weldTolerance, "corners nearer than this are one, in extents; 0 to 0.1")
            .add("bCoarse", &O::bCoarse, "whether edges keep their length where features are closer together")
            .add("bOuter", &O::bOuter, "whether the outer hull alone is wanted")
            .add("numBridgedCells", &O::numBridgedCells,
                 "of the outer hull: widest gap that counts as closed, in cells, two of them a length; 0 to "
                 "100");
    return table;
}

template <>
const OptionTable<CheckOptions>& getOptionTable()
{
    using O = CheckOptions;
    static const OptionTable<O> table =
        OptionTable<O>()
            .add("maxPlaces", &O::maxPlaces, "places that are told of each kind of fault")
            .add("bJoinEqualPoints", &O::bJoinEqualPoints,
                 "whether vertices with equal coordinates count as one")
            .add("bFindIntersections", &O::bFindIntersections,
                 "whether intersections are looked for; most of the time")
            .add("maxPairs", &O::maxPairs, "pairs of near triangles after which the search ends");
    return table;
}

template <>
const OptionTable<CompareOptions>& getOptionTable()
{
    using O = CompareOptions;
    static const OptionTable<O> table = OptionTable<O>().add(
        "numSamples", &O::numSamples, "places on each surface that are measured; at least 1");
    return table;
}

template <>
const OptionTable<FillOptions>& getOptionTable()
{
    using O = FillOptions;
    static const OptionTable<O> table =
        OptionTable<O>()
            .add("bRefine", &O::bRefine, "whether fills get vertices of their own")
            .add("bFair", &O::bFair,
                 "whether fills go on smoothly from the surface around; only with bRefine");
    return table;
}

template <>
const OptionTable<ReadOptions>& getOptionTable()
{
    using O = ReadOptions;
    static const OptionTable<O> table =
        OptionTable<O>()
            .add("columns", &O::columns, "text: what the columns hold, as 'x,y,z,i,r,g,b'; empty: found")
            .add("vClasses", &O::vClasses, "LAS: the classes that are taken; empty: all")
            .add("bLastReturns", &O::bLastReturns, "LAS: whether only the last return of a pulse is taken");
    return table;
}

template <>
const OptionTable<WriteOptions>& getOptionTable()
{
    using O = WriteOptions;
    static const OptionTable<O> table =
        OptionTable<O>()
            .add("bASCII", &O::bASCII, "whether text is written where a format has both forms")
            .add("spacing", &O::spacing,
                 "length that the coordinates must tell to a thousandth; 0: floats only where they are exact")
            .add("bCompressed", &O::bCompressed, "PCD, unless bASCII: whether it is compressed")
            .add("bYUp", &O::bYUp, "GLB: whether z is turned to y, as viewers expect");
    return table;
}
void bindOptions(py::module_& module)
{
    py::dict tables;
    tables["AutoOptions"] = getOptionTable<AutoOptions>().describe();
    tables["FinishOptions"] = getOptionTable<FinishOptions>().describe();
    tables["RemeshOptions"] = getOptionTable<RemeshOptions>().describe();
    tables["CheckOptions"] = getOptionTable<CheckOptions>().describe();
    tables["CompareOptions"] = getOptionTable<CompareOptions>().describe();
    tables["FillOptions"] = getOptionTable<FillOptions>().describe();
    tables["ReadOptions"] = getOptionTable<ReadOptions>().describe();
    tables["WriteOptions"] = getOptionTable<WriteOptions>().describe();
    module.attr("options") = tables;
}

} // namespace TARN_PYTHON
