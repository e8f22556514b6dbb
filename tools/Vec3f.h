#ifndef ZEF_TOOLS_VEC3F_H
#define ZEF_TOOLS_VEC3F_H

#include <cmath>

namespace TARN_TOOL
{
// Single-precision vector of the renderer, relative to the centre of what is drawn: meshes of millions of
// vertices need half the memory, and large coordinates lose nothing.
struct Vec3f
{
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;

    Vec3f& operator+=(const Vec3f& o)
    {
        x += o.x;
        y += o.y;
        z += o.z;
        return *this;
    }
};

inline Vec3f operator+(const Vec3f& a, const Vec3f& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vec3f operator-(const Vec3f& a, const Vec3f& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vec3f operator*(float f, const Vec3f& a)
{
    return {f * a.x, f * a.y, f * a.z};
}
inline float dot(const Vec3f& a, const Vec3f& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vec3f cross(const Vec3f& a, const Vec3f& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float length(const Vec3f& a)
{
    return std::sqrt(dot(a, a));
}
// A null vector stays one.
inline Vec3f unit(const Vec3f& a)
{
    const float len = length(a);
    return len > 0.0f ? (1.0f / len) * a : a;
}

} // namespace TARN_TOOL

#endif
