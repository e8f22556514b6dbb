#ifndef ZEF_BODYPARTER_H
#define ZEF_BODYPARTER_H

#include "remesh/FlatSoup.h"
#include "remesh/TurnedSets.h"

#include <vector>

namespace TARN_ZEF
{
class SoupEdgeTable;

// Parts a welded soup into manifold sheets that are each turned consistently.
//
// Along edges of two triangles the sheets are plain. Where more meet, the triangles are sorted round the edge
// and paired so that each body keeps the space behind its faces; who is left alone gets a border. A surface of one
// side, such as a Moebius strip, is cut open along an edge. A vertex where several fans meet becomes one for each.
class BodyParter
{
public:
    // Changes soup in place: corners of turned triangles change places, vertices are copied.
    void run(FlatSoup& soup);

    // Of the last run; a part, from 0, and whether it was turned, for each triangle.
    [[nodiscard]] const std::vector<int>& getParts() const { return vPart; }
    [[nodiscard]] const std::vector<bool>& getTurned() const { return vTurned; }
    [[nodiscard]] int getNumParts() const { return numParts; }
    // Edges on which more than two triangles stood.
    [[nodiscard]] int getNumParted() const { return numParted; }
    // Edges cut because their triangles could not be turned alike.
    [[nodiscard]] int getNumCut() const { return numCut; }

private:
    struct Spoke;

    [[nodiscard]] bool tryToPart(FlatSoup& soup, bool bLast);
    [[nodiscard]] std::vector<int> findBackToBack(const FlatSoup& soup) const;
    void renumberParts();
    void isolate(FlatSoup& soup, const std::vector<int>& vTriangles);
    [[nodiscard]] static bool isBeside(const std::vector<Spoke>& vSpokes, std::size_t i, std::size_t j);
    void pairPlain(const FlatSoup& soup, const SoupEdgeTable& edges, TurnedSets& sets);
    void pairCrowded(const FlatSoup& soup, const SoupEdgeTable& edges, TurnedSets& sets);
    void pairAround(const FlatSoup& soup, const int* pCorners, int num, TurnedSets& sets);
    void look(Spoke& spoke, TurnedSets& sets) const;
    void pairNeighbours(std::vector<Spoke>& vSpokes, TurnedSets& sets);
    void pairBest(std::vector<Spoke> vSpokes, TurnedSets& sets);
    void joinPair(const Spoke& lower, const Spoke& upper, int rating, TurnedSets& sets);
    [[nodiscard]] int rate(const Spoke& lower, const Spoke& upper, bool bAlone, TurnedSets& sets) const;
    void findFacing(const FlatSoup& soup, TurnedSets& sets);
    void turn(FlatSoup& soup, TurnedSets& sets);
    void partVertices(FlatSoup& soup) const;

    std::vector<int> vPartner; // a corner each: the one that begins the edge in the paired triangle, or -1
    std::vector<int> vFacing;  // a set each: 1 outward as its first triangle stands, -1 inward, 0 unknown
    std::vector<int> vPart;
    std::vector<bool> vTurned;
    int numParts = 0;
    int numParted = 0;
    int numCut = 0;
};

} // namespace TARN_ZEF

#endif
