// What the writers of PLY files share.
#ifndef ZEF_PLYOUTPUT_H
#define ZEF_PLYOUTPUT_H

#include "Point3.h"

#include <tinyply.h>

#include <limits>
#include <string>
#include <vector>

namespace TARN_ZEF
{
// The coordinates, narrowed to float, three in a row.
[[nodiscard]] std::vector<float> packFloats(const std::vector<Point3>& vPoints);
[[nodiscard]] std::vector<float> packFloats(const std::vector<const Point3*>& vPoints);
[[nodiscard]] std::vector<double> packDoubles(const std::vector<const Point3*>& vPoints);
// Whether floats tell places so far apart everywhere among the points.
[[nodiscard]] bool doFloatsTell(const std::vector<const Point3*>& vPoints, double distance);

// Writes file under the given name; false if that was not possible as a whole.
// numDigits  of numbers in ASCII; the default tells all floats apart
[[nodiscard]] bool writePlyFile(tinyply::PlyFile& file, const std::string& filename, bool bASCII,
                                int numDigits = std::numeric_limits<float>::max_digits10);

} // namespace TARN_ZEF

#endif
