#ifndef ZEF_POINTRUNS_H
#define ZEF_POINTRUNS_H

#include "core/cancel.h"
#include "outer/HullLattice.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// A set of points of a lattice, as runs on the lines along x: its size goes with its surface, not with its volume.
//
// Invariant:  the runs of a line are in order, do not touch and are not empty.
class PointRuns
{
public:
    struct Run
    {
        int from;
        int to; // the first point behind
    };
    struct Range
    {
        const Run* pBegin;
        const Run* pEnd;
        [[nodiscard]] const Run* begin() const noexcept { return pBegin; }
        [[nodiscard]] const Run* end() const noexcept { return pEnd; }
    };

    // Calls runsOf(line, vRuns) for each line in order; it may give runs in any order, that touch or overlap.
    template <typename F>
    PointRuns(const HullLattice& lattice_, F runsOf)
        : pLattice(&lattice_)
        , vOffsets(1, 0)
    {
        std::vector<Run> vLine;
        vOffsets.reserve(pLattice->numLines(0) + 1);
        for (std::size_t line = 0; line < pLattice->numLines(0); ++line)
        {
            checkCancelledAt(line);
            vLine.clear();
            runsOf(line, vLine);
            append(vLine);
        }
    }

    [[nodiscard]] Range onLine(std::size_t line) const noexcept
    {
        return {vRuns.data() + vOffsets[line], vRuns.data() + vOffsets[line + 1]};
    }
    [[nodiscard]] bool has(const HullLattice::Cell& p) const noexcept;
    // Whether p or one of the 26 points around it is in the set; p must not be at the edge of the lattice.
    [[nodiscard]] bool isNear(const HullLattice::Cell& p) const noexcept;

    [[nodiscard]] PointRuns unitedWith(const PointRuns& other) const;
    [[nodiscard]] PointRuns getOthers() const; // all points of the lattice that are not in the set
    // All points up to so many steps away along each axis.
    [[nodiscard]] PointRuns widened(int steps) const;
    // The points outside the set that a walk through such points, along the axes, reaches from the first corner of the
    // lattice.
    [[nodiscard]] PointRuns floodAround() const;

    // Calls f(axis, p, bFirstInside) for each two neighbours on a line of which one is in the set: p is the lower one.
    template <typename F>
    void forEachChange(F f) const;

private:
    void append(std::vector<Run>& vLine);
    [[nodiscard]] PointRuns widenedAcross(int axis, int steps) const;
    // Calls f(i) for each place along x that is in one of two lines alone.
    template <typename F>
    static void forEachDifference(Range a, Range b, F f);

    const HullLattice* pLattice;
    std::vector<std::size_t> vOffsets; // by line
    std::vector<Run> vRuns;
};

template <typename F>
void PointRuns::forEachDifference(Range a, Range b, F f)
{
    const Run* pA = a.pBegin;
    const Run* pB = b.pBegin;
    bool bInA = false;
    bool bInB = false;
    int at = 0;
    while (pA != a.pEnd || pB != b.pEnd)
    {
        const int nextA = pA == a.pEnd ? 1 << HullLattice::BITS : bInA ? pA->to : pA->from;
        const int nextB = pB == b.pEnd ? 1 << HullLattice::BITS : bInB ? pB->to : pB->from;
        const int next = std::min(nextA, nextB);
        if (bInA != bInB)
            for (int i = at; i < next; ++i)
                f(i, bInA);
        at = next;
        if (nextA == next)
        {
            pA += bInA ? 1 : 0;
            bInA = !bInA;
        }
        if (nextB == next)
        {
            pB += bInB ? 1 : 0;
            bInB = !bInB;
        }
    }
}

template <typename F>
void PointRuns::forEachChange(F f) const
{
    HullLattice::Cell p = {0, 0, 0};
    for (p[2] = 0; p[2] < pLattice->size[2]; ++p[2])
        for (p[1] = 0; p[1] < pLattice->size[1]; ++p[1])
        {
            const std::size_t line = pLattice->lineOf(0, p);
            checkCancelledAt(line);
            const Range own = onLine(line);
            for (const Run& run : own)
            {
                f(0, HullLattice::Cell{run.from - 1, p[1], p[2]}, false);
                f(0, HullLattice::Cell{run.to - 1, p[1], p[2]}, true);
            }
            for (const int axis : {1, 2})
            {
                HullLattice::Cell other = p;
                if (++other[axis] < pLattice->size[axis])
                    forEachDifference(own, onLine(pLattice->lineOf(0, other)),
                                      [&](int i, bool bOwn) {
                                          f(axis, HullLattice::Cell{i, p[1], p[2]}, bOwn);
                                      });
            }
        }
}

} // namespace TARN_ZEF

#endif
