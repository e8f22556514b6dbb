#include "ConEdge.h"

#include "CMesh.h"
#include "tools.h"

namespace TARN_ZEF
{
namespace
{
const double NO_NORMAL = 90.0;
const double TOO_MANY_MEMBERS = 181.0;

// Degrees between the normals of two triangles as if they ran the same way; false if a normal is missing.
bool getBend(const CTriangle* pT0, const CTriangle* pT1, const CMesh* pCMesh, double& bend)
{
    bool bOK0 = false;
    bool bOK1 = false;
    Vector3 nnv0;
    Vector3 nnv1;
    pT0->getNNV(nnv0, pCMesh, bOK0);
    pT1->getNNV(nnv1, pCMesh, bOK1);
    if (!bOK0 || !bOK1)
        return false;
    if (pT0->needFlip(pT1))
        nnv1.mul(-1.0);
    bend = getAngleDegree(nnv0, nnv1);
    return true;
}
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
    double bend = 0.0;
    if (!getBend(vMemT[0], vMemT[1], pCMesh, bend))
        value = NO_NORMAL;
    else
        value = bManifold ? bend : 180.0 - bend;
}

} // namespace TARN_ZEF
