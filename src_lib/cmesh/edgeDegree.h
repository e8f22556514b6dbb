// The degree of an edge is the number of its alive triangles. What an edge is called goes by it, in both meshes:
//
//   0         orphan        out of use; counts as absent, but stays in memory
//   1         border        the surface ends here
//   2         inner         the surface passes through
//   above 2   non-manifold  several sheets meet
//
// An irregular edge is a border or non-manifold.
#ifndef ZEF_EDGEDEGREE_H
#define ZEF_EDGEDEGREE_H

namespace TARN_ZEF
{
// What a query by degree may ask for, besides one degree as such.
inline constexpr int DEG_BORDER = 1;
inline constexpr int DEG_INNER = 2;
inline constexpr int DEG_NON_MANIFOLD = -1;
inline constexpr int DEG_IRREGULAR = -5;
inline constexpr int DEG_IN_USE = -99;

// Whether deg is a degree above 0 or one of the names above.
[[nodiscard]] constexpr bool isDegreeQuery(int deg) noexcept
{
    return deg > 0 || deg == DEG_NON_MANIFOLD || deg == DEG_IRREGULAR || deg == DEG_IN_USE;
}

// Whether an edge of that degree is one that deg asks for.
[[nodiscard]] constexpr bool fitsDegree(int degree, int deg) noexcept
{
    switch (deg)
    {
    case DEG_NON_MANIFOLD:
        return degree > 2;
    case DEG_IRREGULAR:
        return degree == 1 || degree > 2;
    case DEG_IN_USE:
        return degree > 0;
    default:
        return degree == deg;
    }
}

} // namespace TARN_ZEF

#endif
