#ifndef ZEF_SNODE_H
#define ZEF_SNODE_H

#include "Point3.h"
#include "geometry/Plane.h"
#include "lattice/cellCodes.h"

#include <cfloat>
#include <cstdint>

namespace TARN_ZEF
{
// One lattice cell of a cloud on its way to a bundle: a position, and the plane of the surface through it.
// The normal (NNV) is a unit vector whose sign means nothing.
//
// A node does not know its neighbours: Smooth keeps the links of all nodes together, by their places.
// Threads:    different nodes may be written at the same time.
// Cost:       compact, since there are as many as occupied cells.
class SNode
{
public:
    // Who made a node other than from input points.
    static constexpr int GAP_FILLER = 0;
    static constexpr int MOVED = -1;

    SNode() noexcept = default;
    // numPoints_: input points merged in the node, or GAP_FILLER or MOVED.
    SNode(RCD rcd_, const Point3& pos_, int numPoints_, std::uint32_t number_) noexcept
        : rcd(rcd_)
        , pos(pos_)
        , numPoints(numPoints_)
        , number(number_)
    {
    }

    // The cell that the node was made in; its position may have left it.
    [[nodiscard]] RCD getRCD() const noexcept { return rcd; }
    // Creation number, from 0.
    [[nodiscard]] std::uint32_t getNumber() const noexcept { return number; }
    [[nodiscard]] int getNumPoints() const noexcept { return numPoints; }
    [[nodiscard]] const Point3& getPoint() const noexcept { return pos; }
    void setPoint(const Point3& pos_) noexcept { pos = pos_; }

    [[nodiscard]] bool hasPlane() const noexcept { return bHasPlane; }
    // Of the plane. A node without one is an assertion failure.
    [[nodiscard]] const Vector3& getNNV() const
    {
        ASSEX(bHasPlane);
        return plane.getNV();
    }
    // The point of the plane next to p. A node without a plane is an assertion failure.
    [[nodiscard]] Point3 projection(const Point3& p) const
    {
        ASSEX(bHasPlane);
        return p - plane.getNV() * plane.getSignedDistance(p);
    }
    // The plane through the node's point with that normal.
    void setPlane(const Vector3& nnv, double area_)
    {
        plane = Plane(pos, nnv);
        area = area_;
        bHasPlane = true;
    }

    // Of the patch that the plane was fitted to; 0.0 before the first fit.
    [[nodiscard]] double getArea() const noexcept { return area; }
    // The largest double as area marks a normal that needs no repair.
    [[nodiscard]] bool isTrusted() const noexcept { return area == DBL_MAX; }
    void setTrusted() noexcept { area = DBL_MAX; }

    [[nodiscard]] bool isCrease() const noexcept { return bCrease; }
    void setCrease() noexcept { bCrease = true; }

private:
    RCD rcd = 0;
    Point3 pos;
    Plane plane;
    double area = 0.0;
    int numPoints = 0;
    std::uint32_t number = 0;
    bool bCrease = false;
    bool bHasPlane = false;
};

} // namespace TARN_ZEF

#endif
