#include "files/plyOutput.h"

#include "text/UnfinishedFile.h"
#include "text/closeWhole.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <locale>

namespace TARN_ZEF
{
namespace
{
void packFloat3(const Point3& p, float* pXYZ)
{
    pXYZ[0] = static_cast<float>(p.x());
    pXYZ[1] = static_cast<float>(p.y());
    pXYZ[2] = static_cast<float>(p.z());
}
} // namespace

std::vector<float> packFloats(const std::vector<Point3>& vPoints)
{
    std::vector<float> vXYZ(3 * vPoints.size());
    for (std::size_t i = 0; i < vPoints.size(); ++i)
        packFloat3(vPoints[i], vXYZ.data() + 3 * i);
    return vXYZ;
}

std::vector<float> packFloats(const std::vector<const Point3*>& vPoints)
{
    std::vector<float> vXYZ(3 * vPoints.size());
    for (std::size_t i = 0; i < vPoints.size(); ++i)
        packFloat3(*vPoints[i], vXYZ.data() + 3 * i);
    return vXYZ;
}

std::vector<double> packDoubles(const std::vector<const Point3*>& vPoints)
{
    std::vector<double> vXYZ;
    vXYZ.reserve(3 * vPoints.size());
    for (const Point3* pPoint : vPoints)
        vXYZ.insert(vXYZ.end(), {pPoint->x(), pPoint->y(), pPoint->z()});
    return vXYZ;
}

bool doFloatsTell(const std::vector<const Point3*>& vPoints, double distance)
{
    double largest = 0.0;
    for (const Point3* pPoint : vPoints)
        largest = std::max({largest, std::fabs(pPoint->x()), std::fabs(pPoint->y()), std::fabs(pPoint->z())});
    const auto stored = static_cast<float>(largest);
    const double step = std::nextafter(stored, std::numeric_limits<float>::infinity()) - stored;
    return step <= distance; // false as well where the step is not a number
}

bool writePlyFile(tinyply::PlyFile& file, const std::string& filename, bool bASCII, int numDigits)
{
    const UnfinishedFile unfinished(filename);
    std::ofstream stream(filename, std::ios::binary);
    if (!stream)
        return false;
    // For a writer that formats through the stream: no loss, no commas.
    stream.imbue(std::locale::classic());
    stream.precision(numDigits);
    file.write(stream, !bASCII);
    return closeWhole(stream);
}

} // namespace TARN_ZEF
