#include "checkText.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "numberText.h"

namespace TARN_TOOL
{
using TARN_ZEF::MeshCheck;
using TARN_ZEF::MeshFault;
using TARN_ZEF::MeshFaultKind;

namespace
{
struct FaultWords
{
    MeshFaultKind kind;
    std::size_t MeshCheck::*pCount;
    const char* pOne;
    const char* pMany;
};

// In the order of their weight.
constexpr std::array<FaultWords, 7> FAULTS = {{
    {MeshFaultKind::INTERSECTION, &MeshCheck::numIntersections, "pair of triangles intersects",
     "pairs of triangles intersect"},
    {MeshFaultKind::NON_MANIFOLD_EDGE, &MeshCheck::numNonManifoldEdges, "edge has more than two triangles",
     "edges have more than two triangles"},
    {MeshFaultKind::NON_MANIFOLD_VERTEX, &MeshCheck::numNonManifoldVertices,
     "vertex joins parts that share no edge there", "vertices join parts that share no edge there"},
    {MeshFaultKind::ORIENTATION, &MeshCheck::numDisagreeingEdges,
     "edge lies between triangles that face opposite sides",
     "edges lie between triangles that face opposite sides"},
    {MeshFaultKind::DUPLICATE, &MeshCheck::numDuplicates, "triangle is there twice",
     "triangles are there twice"},
    {MeshFaultKind::FLAT, &MeshCheck::numFlat, "triangle is flat", "triangles are flat"},
    {MeshFaultKind::NOT_FINITE, &MeshCheck::numNotFinite, "triangle has a corner that is not finite",
     "triangles have a corner that is not finite"},
}};

std::string placesText(const MeshCheck& check, MeshFaultKind kind)
{
    std::string text;
    for (const MeshFault& fault : check.vFaults)
    {
        if (fault.kind != kind)
            continue;
        text += "    triangle " + std::to_string(fault.triangle);
        if (fault.otherTriangle >= 0)
            text += " and " + std::to_string(fault.otherTriangle);
        text += " at " + textOf(fault.place.x()) + " " + textOf(fault.place.y()) + " " +
                textOf(fault.place.z()) + "\n";
    }
    return text;
}

std::string borderText(const MeshCheck& check)
{
    if (check.isClosed())
        return "closed";
    std::string text =
        std::to_string(check.numBorderEdges) + " border edges in " + std::to_string(check.numBorderLoops) +
        (check.numBorderLoops == 1 ? " loop" : " loops") + " of length " + textOf(check.borderLength);
    if (check.numBorderLoops > 1)
        text += ", the longest " + textOf(check.longestLoopLength);
    return text;
}
} // namespace

std::string checkText(const MeshCheck& check)
{
    std::string text = std::string("check: ") + (check.isSound() ? "sound, " : "not sound, ") +
                       borderText(check) + ", Euler number " + std::to_string(check.eulerNumber) + "\n";
    for (const FaultWords& words : FAULTS)
    {
        const std::size_t num = check.*words.pCount;
        if (num == 0)
            continue;
        text += "  " + std::to_string(num) + " " + (num == 1 ? words.pOne : words.pMany) + "\n";
        text += placesText(check, words.kind);
    }
    if (!check.bAllPairsJudged)
        text += "  not all pairs of triangles were judged: too many lie in one place\n";
    return text;
}

JsonLine checkJson(const MeshCheck& check)
{
    JsonLine line;
    line.add("sound", std::size_t{check.isSound()});
    line.add("closed", std::size_t{check.isClosed()});
    line.add("eulerNumber", check.eulerNumber);
    line.add("pieces", check.numPieces);
    line.add("intersections", check.numIntersections);
    line.add("allPairsJudged", std::size_t{check.bAllPairsJudged});
    line.add("nonManifoldEdges", check.numNonManifoldEdges);
    line.add("nonManifoldVertices", check.numNonManifoldVertices);
    line.add("disagreeingEdges", check.numDisagreeingEdges);
    line.add("duplicates", check.numDuplicates);
    line.add("flat", check.numFlat);
    line.add("notFinite", check.numNotFinite);
    line.add("borderEdges", check.numBorderEdges);
    line.add("borderLoops", check.numBorderLoops);
    line.add("borderLength", check.borderLength);
    line.add("longestLoop", check.longestLoopLength);
    return line;
}

} // namespace TARN_TOOL
