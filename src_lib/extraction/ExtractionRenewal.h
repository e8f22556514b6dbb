#ifndef ZEF_EXTRACTIONRENEWAL_H
#define ZEF_EXTRACTIONRENEWAL_H

#include "cmesh/CTriangle.h"
#include "core/definitions.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
class CEdge;
class CMesh;
struct CVertex;

// Extracts some cubes of a mesh anew and leaves the mesh as a whole extraction would: the same triangles and
// edges, in the same order of creation and with the same numbers.
//
// The triangles of a cube depend on its own cells and on the cubes across its faces. So if few cells have come
// or gone, nearly all of the last extraction still holds. What the passes did to it since is undone, the cubes
// around the changed cells lose their triangles, the caller makes these again, and numbers and lists are
// brought into order.
//
// Ownership:  refers to a mesh whose last extraction is known, ExtractionRecord::isKnown(). Nobody else may
//             touch it between constructor and finish().
// Invariant:  at the end every triangle is alive, without patch or mark, and oriented as it was made; no edge
//             is an orphan. Pointers to triangles and edges that were not taken out stay valid. Bundles stay.
// Cost:       that of the cubes and of what is undone, and a walk over the whole mesh in memory order, on the
//             workers of the pool.
class ExtractionRenewal
{
public:
    // vBases  the cubes to be made anew, by their highest cells, ascending: those of the changed cells and all
    //         that share a face with one of them. Takes their triangles out.
    ExtractionRenewal(CMesh* pCMesh_, std::vector<u64> vBases_);
    ExtractionRenewal(const ExtractionRenewal&) = delete;
    ExtractionRenewal& operator=(const ExtractionRenewal&) = delete;

    [[nodiscard]] const std::vector<u64>& getBases() const noexcept { return vBases; }

    // To be called after the caller has created the triangles of the cubes with CMesh::createT(), first of
    // those that are not flat, then of the flat ones, in the order of the cubes.
    // numNewCubeT  how many of them are of cubes that are not flat
    // Triangles in another order are an assertion failure.
    void finish(std::size_t numNewCubeT);

private:
    // Where the triangles of a cube stood, [from, to) of all.
    struct Gap
    {
        u64 base;
        std::size_t from;
        std::size_t to;
    };
    // Triangles in a row, [from, to) of all, that come to stand from target on.
    struct Run
    {
        std::size_t from;
        std::size_t to;
        std::size_t target;
        [[nodiscard]] std::size_t getTargetEnd() const { return target + to - from; }
    };
    // The order in which triangles come to stand, before they have their numbers.
    struct ByPlace
    {
        std::size_t numOldCubeT;
        std::size_t numOldT;
        std::size_t firstNewFlat;
        [[nodiscard]] bool isFlat(const CTriangle& ct) const noexcept
        {
            const std::size_t number = ct.getNumber();
            return number < numOldT ? number >= numOldCubeT : number >= firstNewFlat;
        }
        bool operator()(const CTriangle* pA, const CTriangle* pB) const noexcept;
    };

    void undoPasses();
    [[nodiscard]] std::vector<Gap> findGaps(std::size_t from, std::size_t to) const;
    void takeOutTriangles(const std::vector<Gap>& vGaps);
    void takeOutOrphans();
    void takeOut(CEdge* pCE) noexcept;
    void appendRuns(std::size_t from, const std::vector<Gap>& vGaps, std::size_t to, std::size_t fromNew,
                    std::size_t toNew, std::vector<Run>& vRuns) const;
    void moveRuns(const std::vector<Run>& vRuns, const std::vector<CTriangle*>& vNewT);
    template <typename Less>
    void sortLists(const std::vector<CTriangle*>& vT, Less isLess);
    template <typename Less>
    static void sortEdge(CEdge& edge, Less isLess);
    template <typename Less>
    void sortCorner(CVertex* pVertex, Less isLess);
    void numberAll();

    CMesh* pCMesh;
    std::vector<u64> vBases;
    std::vector<Gap> vCubeGaps; // of the cubes that were not flat, ascending; as the next
    std::vector<Gap> vFlatGaps;
    std::size_t numOldCubeT; // triangles of cubes that were not flat, the first ones
    std::size_t numOldT;
    std::vector<CTriangle*> vRevivedT; // what the passes had killed
    std::vector<CTriangle*> vTakenOutT;
    std::vector<CTriangle*> vAtCorner; // scratch
};

} // namespace TARN_ZEF

#endif
