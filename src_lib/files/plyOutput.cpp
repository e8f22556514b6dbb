#include "files/plyOutput.h"

#include "text/closeWhole.h"

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

bool writePlyFile(tinyply::PlyFile& file, const std::string& filename, bool bASCII)
{
    std::ofstream stream(filename, std::ios::binary);
    if (!stream)
        return false;
    // For a writer that formats through the stream: no loss, no commas.
    stream.imbue(std::locale::classic());
    stream.precision(std::numeric_limits<float>::max_digits10);
    file.write(stream, !bASCII);
    return closeWhole(stream);
}

} // namespace TARN_ZEF
