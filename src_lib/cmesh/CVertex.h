#ifndef ZEF_CVERTEX_H
#define ZEF_CVERTEX_H

#include "core/definitions.h"

namespace TARN_ZEF
{
class CEdge;
class CTriangle;
struct Bundle;

// The record that a CMesh keeps of one corner: the heads of its lists.
//
// Ownership:  lives in a pool of the mesh; never moves while the mesh holds its contents.
// Invariant:  the triangle list holds each alive triangle at the corner once, in order of creation, linked
//             through the triangles themselves; the edge list holds every edge, orphans included, whose
//             lower end is this corner.
struct CVertex
{
    explicit CVertex(u64 ccd_) noexcept
        : ccd(ccd_)
    {
    }

    u64 ccd;
    Bundle* pBundle = nullptr; // cached from the bundle map; null: not known yet
    CTriangle* pFirstT = nullptr;
    CTriangle* pLastT = nullptr;
    CEdge* pFirstCE = nullptr;
};

} // namespace TARN_ZEF

#endif
