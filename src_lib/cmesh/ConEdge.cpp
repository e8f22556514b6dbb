#include "cmesh/ConEdge.h"

#include "cmesh/CMesh.h"
#include "geometry/tools.h"

namespace TARN_ZEF
{
namespace
{
const double NO_NORMAL = 90.0;
const double TOO_MANY_MEMBERS = 181.0;
} // namespace

bool ConEdge::operator<(const ConEdge& other) const noexcept
{
    if (isNaN(value) || isNaN(other.value))
        return !isNaN(value);
    return value < other.value;
}

void ConEdge::addMember(CTriangle* pCT) noexcept
{
    if (numMemT < 2)
        vMemT[static_cast<std::size_t>(numMemT)] = pCT;
    ++numMemT;
}

void ConEdge::rate(const CMesh* pCMesh)
{
    ASSEX(deg > 1);
    ASSEX_TEXT(numMemT >= 2, "vMemT.size()>=2");
    if (numMemT > 2)
    {
        bManifold = true;
        value = TOO_MANY_MEMBERS;
        return;
    }
    Vector3 nnv0;
    Vector3 nnv1;
    value = NO_NORMAL;
    if (!vMemT[0]->getNNVs(vMemT[1], pCMesh, nnv0, nnv1))
        return;
    const double bend = getAngleDegree(nnv0, nnv1);
    value = bManifold ? bend : 180.0 - bend;
}

} // namespace TARN_ZEF
