#ifndef ZEF_HILBERTSORT3_H
#define ZEF_HILBERTSORT3_H

namespace TARN_ZEF
{
// Positions of points on a Hilbert curve through a box: points near in the order are near in space.
//
// In a box that is not a cube, y and z are compared with the halves of the x axis. The order is still a
// fixed one, of poorer locality.
//
// Threads:  immutable.
// Cost:     numBits / 3 steps a point.
// Errors:   a numBits that is no multiple of 3 from 3 to 30 prints and ends the process with status 1.
class HilbertSort3
{
public:
    // numBits is the length of the index, a third of it for each axis.
    HilbertSort3(double minX_, double minY_, double minZ_, double maxX_, double maxY_, double maxZ_,
                 int numBits_);

    // 0 to 2^numBits - 1. Points outside the box get an index too, of no use for locality.
    [[nodiscard]] unsigned int getIndex(double x, double y, double z) const;

private:
    int numBits;
    double minX;
    double minY;
    double minZ;
    double rangeX;
    double rangeY;
    double rangeZ;
};

} // namespace TARN_ZEF

#endif
