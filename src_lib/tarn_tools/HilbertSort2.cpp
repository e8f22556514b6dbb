#include "tarn_tools/HilbertSort2.h"

#include "core/hardStop.h"
#include "tarn_tools/hilbertTables.h"

namespace TARN_ZEF
{
namespace
{
constexpr HilbertTables<2> tables;

} // namespace

HilbertSort2::HilbertSort2(double minX_, double minY_, double maxX_, double maxY_, int numBits_)
    : numBits(numBits_)
    , minX(minX_)
    , minY(minY_)
    , rangeX(maxX_ - minX_)
    , rangeY(maxY_ - minY_)
{
    if (numBits < 2 || numBits >= 33 || numBits % 2 != 0)
        hardStop("HilbertSort2::HilbertSort2(..): invalid parameters\n");
}

unsigned int HilbertSort2::getIndex(double x, double y) const
{
    x -= minX;
    y -= minY;
    double stepX = rangeX;
    double stepY = rangeY;
    unsigned int state = 0;
    unsigned int index = 0;
    for (int shift = numBits - 2; shift >= 0; shift -= 2)
    {
        stepX *= 0.5;
        stepY *= 0.5;
        const bool bx = x >= stepX;
        const bool by = y >= stepY;
        x -= bx ? stepX : 0.0;
        y -= by ? stepY : 0.0;
        const unsigned int q = (by ? 1u : 0u) + (bx ? 2u : 0u);
        index |= static_cast<unsigned int>(tables.positionTable[q][state]) << shift;
        state = tables.stateTable[q][state];
    }
    return index;
}

} // namespace TARN_ZEF
