#include "tarn_tools/HilbertSort3.h"

#include "core/hardStop.h"
#include "tarn_tools/hilbertTables.h"

namespace TARN_ZEF
{
namespace
{
constexpr HilbertTables<3> tables;

} // namespace

HilbertSort3::HilbertSort3(double minX_, double minY_, double minZ_, double maxX_, double maxY_, double maxZ_,
                           int numBits_)
    : numBits(numBits_)
    , minX(minX_)
    , minY(minY_)
    , minZ(minZ_)
    , rangeX(maxX_ - minX_)
    , rangeY(maxY_ - minY_)
    , rangeZ(maxZ_ - minZ_)
{
    if (numBits < 3 || numBits >= 33 || numBits % 3 != 0)
        hardStop("HilbertSort3::HilbertSort3(..): invalid parameters\n");
}

unsigned int HilbertSort3::getIndex(double x, double y, double z) const
{
    x -= minX;
    y -= minY;
    z -= minZ;
    double stepX = rangeX;
    double stepY = rangeY;
    double stepZ = rangeZ;
    unsigned int state = 0;
    unsigned int index = 0;
    for (int shift = numBits - 3; shift >= 0; shift -= 3)
    {
        stepX *= 0.5;
        stepY *= 0.5;
        stepZ *= 0.5;
        const bool bx = x >= stepX;
        const bool by = y >= stepX;
        const bool bz = z >= stepX;
        x -= bx ? stepX : 0.0;
        y -= by ? stepY : 0.0;
        z -= bz ? stepZ : 0.0;
        const unsigned int q = (bz ? 1u : 0u) + (by ? 2u : 0u) + (bx ? 4u : 0u);
        index |= static_cast<unsigned int>(tables.positionTable[q][state]) << shift;
        state = tables.stateTable[q][state];
    }
    return index;
}

} // namespace TARN_ZEF
