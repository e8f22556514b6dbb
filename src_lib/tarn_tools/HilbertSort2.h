#ifndef ZEF_HILBERTSORT2_H
#define ZEF_HILBERTSORT2_H

namespace TARN_ZEF
{
// Positions of points on a Hilbert curve through a rectangle.
//
// Threads:  immutable.
// Cost:     numBits / 2 steps a point.
// Errors:   a numBits that is not even or not from 2 to 32 prints and ends the process with status 1.
class HilbertSort2
{
public:
    // numBits is the length of the index, half of it for each axis.
    HilbertSort2(double minX_, double minY_, double maxX_, double maxY_, int numBits_);

    // 0 to 2^numBits - 1. Points outside the rectangle get an index too, of no use for locality.
    [[nodiscard]] unsigned int getIndex(double x, double y) const;

private:
    int numBits;
    double minX;
    double minY;
    double rangeX;
    double rangeY;
};

} // namespace TARN_ZEF

#endif
