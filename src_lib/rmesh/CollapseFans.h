#ifndef ZEF_COLLAPSEFANS_H
#define ZEF_COLLAPSEFANS_H

#include "Vector3.h"
#include "core/definitions.h"

#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
class REdge;

// The triangles at one vertex, flat, as the evaluation of collapses reads them. One walk over the mesh serves
// all edges at the vertex, and so does each normal.
struct CollapseFan
{
    struct Blade
    {
        enum class State
        {
            UNKNOWN, // the vectors are not filled yet
            READY,
            FLAT // no normal
        };

        Blade(const Point3* p1_, const Point3* p2_, const REdge* pRingRE_) noexcept
            : p1(p1_)
            , p2(p2_)
            , pRingRE(pRingRE_)
        {
        }
        [[nodiscard]] bool has(const Point3* p) const noexcept { return p1 == p || p2 == p; }

        const Point3* p1; // the corners after and before the vertex
        const Point3* p2;
        const REdge* pRingRE; // between them
        Vector3 vec12;        // from p2 to p1
        Vector3 nnv;          // unit normal
        State state = State::UNKNOWN;
    };

    // One of 64 bits for a vertex, to tell without a search that it is not in the ring. The address may decide:
    // it is a matter of speed only.
    [[nodiscard]] static u64 maskOf(const Point3* p) noexcept
    {
        return u64{1} << (reinterpret_cast<std::uintptr_t>(p) * 0x9E3779B97F4A7C15u >> 58);
    }
    [[nodiscard]] bool mayHaveInRing(const Point3* p) const noexcept { return (ringMask & maskOf(p)) != 0; }

    const Point3* pVtx = nullptr; // null: nothing is held
    std::vector<Blade> vBlades;   // in the order of the mesh's list
    u64 ringMask = 0;             // of the other corners
};

// The fans that were read last: those of an edge's two ends while it is evaluated. Edges at one vertex that
// are evaluated one after the other share its fan.
//
// Ownership:  borrows from the mesh: forget() after every change of it.
// Threads:    one for each thread that evaluates.
class CollapseFans
{
public:
    void forget() noexcept { aFan[0].pVtx = aFan[1].pVtx = nullptr; }

    // The fan at pVtx, gathered by gather(pVtx, fan) unless it is there. The one at pKeep stays.
    template <typename Gather>
    CollapseFan& at(const Point3* pVtx, const Point3* pKeep, Gather gather)
    {
        for (CollapseFan& fan : aFan)
            if (fan.pVtx == pVtx)
                return fan;
        CollapseFan& fan = aFan[aFan[0].pVtx == pKeep ? 1 : 0];
        gather(pVtx, fan);
        return fan;
    }

private:
    CollapseFan aFan[2];
};

} // namespace TARN_ZEF

#endif
