#ifndef ZEF_EDGEOFTRIANGLES_H
#define ZEF_EDGEOFTRIANGLES_H

#include "core/definitions.h"

#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// What an edge of any mesh says about its triangles. Edge derives from it and hands out the list of its alive
// triangles, each once, by getTriangles().
//
// Its degree and what that makes it: see edgeDegree.h.
template <typename Edge, typename Triangle>
class EdgeOfTriangles
{
public:
    [[nodiscard]] int getDegree() const noexcept { return static_cast<int>(size()); }
    [[nodiscard]] bool isOrphan() const noexcept { return size() == 0; }
    [[nodiscard]] bool isBorder() const noexcept { return size() == 1; }
    [[nodiscard]] bool isInner() const noexcept { return size() == 2; }
    [[nodiscard]] bool isNonManifold() const noexcept { return size() > 2; }
    // The first triangle, null if there is none. A second one is fatal with bMustBeUnique, none is with bMustExist.
    [[nodiscard]] Triangle* getTriangle(bool bMustExist, bool bMustBeUnique) const
    {
        Triangle* pRet = nullptr;
        for (Triangle* pT : self().getTriangles())
        {
            if (bMustBeUnique)
                ASSEX(pRet == 0);
            if (pRet == nullptr)
                pRet = pT;
        }
        if (bMustExist)
            ASSEX(pRet != 0);
        return pRet;
    }
    // The first two triangles, null where there is none. Strict: true only at exactly 2, else at 2 or more.
    [[nodiscard]] bool getTwoTriangles(Triangle*& pT0, Triangle*& pT1, bool bStrict) const
    {
        const auto& vT = self().getTriangles();
        pT0 = vT.size() > 0 ? vT[0] : nullptr;
        pT1 = vT.size() > 1 ? vT[1] : nullptr;
        return bStrict ? vT.size() == 2 : vT.size() >= 2;
    }
    // The one other; null at none or several.
    [[nodiscard]] Triangle* getNeigT(const Triangle* pT) const
    {
        Triangle* pNeigT = nullptr;
        for (Triangle* pOther : self().getTriangles())
        {
            if (pOther == pT)
                continue;
            if (pNeigT != nullptr)
                return nullptr;
            pNeigT = pOther;
        }
        return pNeigT;
    }
    void getAliveT(std::vector<Triangle*>& vOut) const // appends
    {
        vOut.insert(vOut.end(), self().getTriangles().begin(), self().getTriangles().end());
    }

protected:
    EdgeOfTriangles() = default;
    ~EdgeOfTriangles() = default;

private:
    [[nodiscard]] const Edge& self() const noexcept { return static_cast<const Edge&>(*this); }
    [[nodiscard]] std::uint32_t size() const noexcept { return self().getTriangles().size(); }
};

} // namespace TARN_ZEF

#endif
