#include "repair/TinyBorderPieces.h"

#include "cmesh/CMesh.h"
#include "core/CallRecorder.h"
#include "core/NumberSet.h"

#include <cstddef>
#include <vector>

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
} // namespace

TinyBorderPieces::TinyBorderPieces(CMesh* pCMesh_)
    : pCMesh(pCMesh_)
{
}

void TinyBorderPieces::kill(int maxNumT)
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
        addToReport(&CallReport::numPiecesDropped);
        for (CTriangle* pCT : piece.vT)
            pCT->kill(pCMesh);
    }
}

} // namespace TARN_ZEF
