#ifndef ZEF_BODYFINDER_H
#define ZEF_BODYFINDER_H

#include "remesh/FlatSoup.h"
#include "remesh/TurnedSets.h"

#include <array>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
class SoupEdgeTable;

// Parts the bodies that touch along edges or faces, by the spaces that the triangles enclose: the two sides of each
// triangle are joined round every edge with the sides that look at them, and what hangs together then bounds one
// space. A space is a body if most of its faces look out of it; a face between two bodies goes to both. How single
// triangles are turned does not matter.
//
// Only spaces with an edge of more than two triangles are touched: all else is left to BodyParter.
class BodyFinder
{
public:
    explicit BodyFinder(FlatSoup& soup_);

    // Gives the triangles of each body corners of its own, turned as they came where a copy came so.
    void run();

    // Edges on which more than two triangles stood.
    [[nodiscard]] int getNumCrowded() const { return numCrowded; }

private:
    // What one side set bounds.
    struct Space
    {
        double volume = 0.0; // six times; seen from within the space
        double area = 0.0;   // twice, as outArea
        double outArea = 0.0;
        int anyTriangle = -1;
        bool bCrowded = false;
    };

    void findCrowded();
    void matchDiagonals();
    void joinSides(const SoupEdgeTable& edges);
    void joinRound(const int* pCorners, int num);
    void groupCopies();
    void measure();
    [[nodiscard]] bool looksOut(int side) const;
    [[nodiscard]] bool isBody(const Space& space) const;
    void emit();

    FlatSoup& soup;
    TurnedSets sides;                 // 2t: in front of triangle t, 2t + 1: behind it
    std::vector<bool> vCrowded;       // a triangle each
    std::vector<int> vCopy;           // a triangle each: the first on the same corners
    std::vector<unsigned char> vWays; // of that one, how copies are turned: bit 1 evenly, bit 2 oddly
    std::vector<Space> vSpaces;       // by the name of the side set
    int numCrowded = 0;
};

} // namespace TARN_ZEF

#endif
