#include "holesText.h"

#include "numberText.h"

namespace TARN_TOOL
{
namespace
{
const char* kindOf(const TARN_ZEF::BorderLoop& loop)
{
    return !loop.bClosed ? "open chain" : loop.bRim ? "rim" : "hole";
}
} // namespace

std::string holesText(const std::vector<TARN_ZEF::BorderLoop>& vLoops)
{
    if (vLoops.empty())
        return "no borders: the surface is closed\n";
    std::string text = "borders: " + std::to_string(vLoops.size()) + "\n";
    for (std::size_t i = 0; i < vLoops.size(); ++i)
    {
        const TARN_ZEF::BorderLoop& loop = vLoops[i];
        text += "  " + std::to_string(i + 1) + ": " + kindOf(loop) + " of " +
                std::to_string(loop.vVertices.size()) + " vertices, length " + textOf(loop.length) +
                ", area " + textOf(loop.area) + ", piece " + std::to_string(loop.piece + 1) + ": " +
                loop.reason + "\n";
    }
    return text;
}

std::vector<JsonLine> holesJson(const std::vector<TARN_ZEF::BorderLoop>& vLoops)
{
    std::vector<JsonLine> vLines(vLoops.size());
    for (std::size_t i = 0; i < vLoops.size(); ++i)
    {
        const TARN_ZEF::BorderLoop& loop = vLoops[i];
        vLines[i].add("number", i + 1);
        vLines[i].add("kind", std::string(kindOf(loop)));
        vLines[i].add("vertices", loop.vVertices.size());
        vLines[i].add("length", loop.length);
        vLines[i].add("area", loop.area);
        vLines[i].add("piece", loop.piece + 1);
        vLines[i].add("reason", loop.reason);
    }
    return vLines;
}

} // namespace TARN_TOOL
