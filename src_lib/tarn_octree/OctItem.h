#ifndef ZEF_OCTREE_OCTITEM_H
#define ZEF_OCTREE_OCTITEM_H

namespace TARN_OCTREE
{
// An object of the caller's with its place.
struct OctItem
{
    void* pObject;
    double x;
    double y;
    double z;
};

} // namespace TARN_OCTREE

#endif
