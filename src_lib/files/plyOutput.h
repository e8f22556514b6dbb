// What the writers of PLY files share.
#ifndef ZEF_PLYOUTPUT_H
#define ZEF_PLYOUTPUT_H

#include "Point3.h"

#include <tinyply.h>

#include <string>
#include <vector>

namespace TARN_ZEF
{
// The coordinates, narrowed to float, three in a row.
[[nodiscard]] std::vector<float> packFloats(const std::vector<Point3>& vPoints);
[[nodiscard]] std::vector<float> packFloats(const std::vector<const Point3*>& vPoints);

// Writes file under the given name; false if that was not possible as a whole.
[[nodiscard]] bool writePlyFile(tinyply::PlyFile& file, const std::string& filename, bool bASCII);

} // namespace TARN_ZEF

#endif
