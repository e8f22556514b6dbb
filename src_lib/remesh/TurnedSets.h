#ifndef ZEF_TURNEDSETS_H
#define ZEF_TURNEDSETS_H

#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Sets of triangles in which each knows whether it must be turned over against the others: a union-find with
// one bit more.
class TurnedSets
{
public:
    explicit TurnedSets(int num)
        : vParent(num)
        , vTurned(num, 0)
    {
        std::iota(vParent.begin(), vParent.end(), 0);
    }

    // The set of t, and whether t is turned against the triangle that names it.
    struct Place
    {
        int set;
        bool bTurned;
    };

    [[nodiscard]] Place find(int t)
    {
        int root = t;
        bool bTurned = false;
        for (; vParent[root] != root; root = vParent[root])
            bTurned ^= vTurned[root] != 0;
        const Place place = {root, bTurned};
        while (vParent[t] != root)
        {
            const int up = vParent[t];
            const bool bRest = bTurned ^ (vTurned[t] != 0);
            vParent[t] = root;
            vTurned[t] = bTurned ? 1 : 0;
            t = up;
            bTurned = bRest;
        }
        return place;
    }

    // Joins the sets of two triangles so that they are turned against each other or not. False, and nothing
    // changed, where they stand in one set the other way. The set of the lower name keeps its name.
    [[nodiscard]] bool join(int a, int b, bool bAgainst)
    {
        const Place placeA = find(a);
        const Place placeB = find(b);
        const bool bTurn = placeA.bTurned ^ placeB.bTurned ^ bAgainst;
        if (placeA.set == placeB.set)
            return !bTurn;
        const int keeps = placeA.set < placeB.set ? placeA.set : placeB.set;
        const int joins = placeA.set < placeB.set ? placeB.set : placeA.set;
        vParent[joins] = keeps;
        vTurned[joins] = bTurn ? 1 : 0;
        return true;
    }

private:
    std::vector<int> vParent;
    std::vector<char> vTurned; // against the parent
};

} // namespace TARN_ZEF

#endif
