// The passes of Top over borders.
#include "repair/Top.h"

#include "cmesh/CMesh.h"
#include "core/NumberSet.h"

namespace TARN_ZEF
{
namespace
{
// A piece at the border dies if its border edges per triangle exceed MAX_BORDER_RATIO, and whatever that
// ratio is, below MAX_SMALL_PIECE triangles with two border edges and below MAX_FLAKE with one.
const double MAX_BORDER_RATIO = 0.2;
const std::size_t MAX_SMALL_PIECE = 25;
const std::size_t MAX_FLAKE = 7;

// A piece of surface between borders and non-manifold edges.
struct Piece
{
    std::vector<CTriangle*> vT;
    std::size_t numBorder = 0; // border edges that no other piece has counted
    bool bLarge = false;       // too many triangles; the two above are not complete then
};

// Collects the pieces of a mesh from their borders. Pieces above a size are given up, and given up at once
// when another border leads there again: so the whole costs no more than a few walks over all triangles.
class PieceFinder
{
public:
    explicit PieceFinder(std::size_t maxNumT_)
        : maxNumT(maxNumT_)
    {
    }

    // False if the edge belongs to a piece that was found before.
    bool isNewBorder(const CEdge* pCE) { return usedCE.insert(pCE->getNumber()); }

    // The piece at the border edge, which isNewBorder() has taken for it.
    void find(CTriangle* pSeed, Piece& piece)
    {
        piece.vT.clear();
        piece.numBorder = 1;
        piece.bLarge = !push(pSeed);
        while (!vWorkspace.empty())
        {
            CTriangle* pCT = vWorkspace.back();
            vWorkspace.pop_back();
            piece.vT.push_back(pCT);
            piece.bLarge = piece.bLarge || piece.vT.size() > maxNumT;
            for (int i = 0; !piece.bLarge && i < 3; ++i)
                piece.bLarge = !cross(pCT, *pCT->getCEdge(i), piece);
            if (piece.bLarge)
                break;
        }
        settle(piece);
    }

private:
    // False if this leads into a large piece.
    bool cross(CTriangle* pCT, const CEdge& edge, Piece& piece)
    {
        const CEdge::TriangleList& vNeigs = edge.vCT;
        if (vNeigs.size() == 1 && usedCE.insert(edge.getNumber()))
            ++piece.numBorder;
        if (vNeigs.size() != 2)
            return true;
        if (vNeigs[0] != pCT)
            ASSEX(vNeigs[1] == pCT);
        return push(vNeigs[vNeigs[0] == pCT ? 1 : 0]);
    }
    bool push(CTriangle* pCT)
    {
        if (largeT.contains(pCT->getNumber()))
            return false;
        if (usedT.insert(pCT->getNumber()))
            vWorkspace.push_back(pCT);
        return true;
    }
    // Remembers a large piece; forgets the triangles of any other, which later pieces may contain again once
    // kills have joined them.
    void settle(Piece& piece)
    {
        piece.vT.insert(piece.vT.end(), vWorkspace.begin(), vWorkspace.end());
        vWorkspace.clear();
        for (const CTriangle* pCT : piece.vT)
        {
            usedT.erase(pCT->getNumber());
            if (piece.bLarge)
                largeT.insert(pCT->getNumber());
        }
    }

    std::size_t maxNumT;
    NumberSet usedCE;
    NumberSet usedT;  // of the present piece
    NumberSet largeT; // kills only make a piece larger, so these stay
    std::vector<CTriangle*> vWorkspace;
};

bool isTinyBorderPiece(const Piece& piece)
{
    if (piece.bLarge)
        return false;
    const std::size_t numT = piece.vT.size();
    const double ratio = static_cast<double>(piece.numBorder) / static_cast<double>(numT);
    return ratio > MAX_BORDER_RATIO || (numT < MAX_SMALL_PIECE && piece.numBorder >= 2) ||
           (numT < MAX_FLAKE && piece.numBorder >= 1);
}

// The third corner of a hole with three edges, one of them given; false if it is none. The last edge may be one
// of an odd number of triangles, at the end of a fin that ran into the hole.
bool findThirdCorner(const CMesh& mesh, const CEdge& edge, u64& thirdCCD)
{
    const u64 ownCCD = edge.vCT[0]->getThirdCCD(edge.v0, edge.v1);
    std::vector<CEdge*> vIncCE;
    mesh.getIncCE(edge.v0, vIncCE);
    for (const CEdge* pCE : vIncCE)
    {
        thirdCCD = pCE->getOtherVCD(edge.v0);
        if (!pCE->isBorder() || thirdCCD == edge.v1 || thirdCCD == ownCCD)
            continue;
        const CEdge* pLastCE = mesh.getCE(thirdCCD, edge.v1);
        if (pLastCE != nullptr && pLastCE->getDegree() % 2 == 1 &&
            !pLastCE->hasTriangle(edge.v0, edge.v1, thirdCCD))
            return true;
    }
    return false;
}
} // namespace

void Top::getBordersKillDeg1nn(std::vector<CEdge*>& vBorders)
{
    std::vector<CEdge*> vCE;
    pCMesh->getDegN(DEG_BORDER, vCE);
    for (CEdge* pCE : vCE)
    {
        ASSEX_TEXT(pCE->vCT.size() == 1, "vCT.size()==1");
        CTriangle* pCT = pCE->vCT[0];
        const int ici = pCT->getICI(pCE->v0, pCE->v1);
        // The two other edges are non-manifold: it hangs between two fins and adds nothing.
        if (pCT->getCEdge(CTriangle::getNext(ici))->isNonManifold() &&
            pCT->getCEdge(CTriangle::getPrev(ici))->isNonManifold())
            pCT->kill(pCMesh);
        else
            vBorders.push_back(pCE);
    }
}

void Top::integrateCCD(CEdge* pCE)
{
    if (pCE->vCT.size() != 1)
        return;
    CTriangle* pCT = pCE->vCT[0];
    int numBorder = 0;
    int ici = -1; // opposite the non-manifold edge
    for (int i = 0; i < 3; ++i)
    {
        const int degree = pCT->getCEdge(i)->getDegree();
        ASSEX(degree > 0);
        if (degree == 2)
            return;
        if (degree == 1)
            ++numBorder;
        else
            ici = i;
    }
    if (numBorder == 3)
    {
        pCT->kill(pCMesh);
        return;
    }
    if (ici < 0 || numBorder < 2)
        return;
    std::vector<CTriangle*> vKids;
    if (!pCT->getCEdge(ici)->trySplitNeigsKillT(pCMesh, pCT, ici, vKids))
        pCT->kill(pCMesh);
}

void Top::killTinyBorderPatches(int maxNumT)
{
    std::vector<CEdge*> vCE;
    pCMesh->getDegN(DEG_BORDER, vCE);
    PieceFinder finder(static_cast<std::size_t>(maxNumT));
    Piece piece;
    for (CEdge* pCE : vCE)
    {
        if (!finder.isNewBorder(pCE) || pCE->vCT.empty())
            continue;
        ASSEX_TEXT(pCE->vCT.size() == 1, "vCT.size()==1");
        finder.find(pCE->vCT[0], piece);
        if (!isTinyBorderPiece(piece))
            continue;
        for (CTriangle* pCT : piece.vT)
            pCT->kill(pCMesh);
    }
}

void Top::closeTriangularHoles()
{
    std::vector<CEdge*> vBorders;
    pCMesh->getDegN(DEG_BORDER, vBorders);
    u64 thirdCCD = 0;
    for (const CEdge* pCE : vBorders)
        if (pCE->isBorder() && findThirdCorner(*pCMesh, *pCE, thirdCCD))
            pCMesh->createT(pCE->v0, pCE->v1, thirdCCD, 0, 0);
}

} // namespace TARN_ZEF
