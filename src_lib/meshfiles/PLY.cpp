#include "meshfiles/PLY.h"

#include "core/definitions.h"
#include "files/PointNumbering.h"
#include "files/plyOutput.h"
#include "rmesh/RMesh.h"
#include "rmesh/RTriangle.h"

#include <exception>
#include <new>
#include <vector>

namespace TARN_ZEF
{
namespace
{
const char* const TAG = "PLY::writePly";

void addVertices(tinyply::PlyFile& file, const std::vector<float>& vXYZ)
{
    file.add_properties_to_element("vertex", {"x", "y", "z"}, tinyply::Type::FLOAT32, vXYZ.size() / 3,
                                   reinterpret_cast<const std::uint8_t*>(vXYZ.data()), tinyply::Type::INVALID,
                                   0);
}

void addFaces(tinyply::PlyFile& file, const std::vector<unsigned int>& vIndices)
{
    file.add_properties_to_element("face", {"vertex_indices"}, tinyply::Type::UINT32, vIndices.size() / 3,
                                   reinterpret_cast<const std::uint8_t*>(vIndices.data()),
                                   tinyply::Type::UINT8, 3);
}

} // namespace

bool PLY::writePly(const RMesh* pRMesh, const std::string& name, bool bASCII)
{
    std::vector<RTriangle*> vRT;
    pRMesh->getAliveT(vRT);

    PointNumbering vertices;
    std::vector<unsigned int> vIndices;
    vIndices.reserve(3 * vRT.size());
    for (const RTriangle* pRT : vRT)
    {
        ASSEX(pRT->isAlive());
        for (int ici = 0; ici < 3; ++ici)
            vIndices.push_back(vertices.getNumber(pRT->getCorner(ici)));
    }

    try
    {
        const std::vector<float> vXYZ = packFloats(vertices.getPoints());
        tinyply::PlyFile file;
        addVertices(file, vXYZ);
        addFaces(file, vIndices);
        if (writePlyFile(file, name, bASCII))
            return true;
        errorMessage(TAG, "failed to write " + name);
    }
    catch (const std::bad_alloc&)
    {
        throw;
    }
    catch (const std::exception& e)
    {
        errorMessage(TAG, "failed to write " + name + ", " + e.what());
    }
    return false;
}

} // namespace TARN_ZEF
