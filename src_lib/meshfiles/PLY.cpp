#include "meshfiles/PLY.h"

#include "core/cancel.h"
#include "core/definitions.h"
#include "files/PointNumbering.h"
#include "files/plyOutput.h"
#include "rmesh/RMesh.h"
#include "rmesh/RTriangle.h"

#include <exception>
#include <limits>
#include <new>
#include <vector>

namespace TARN_ZEF
{
namespace
{
const char* const TAG = "PLY::writePly";

// Floats must tell this share of a cell; if they do not, the coordinates are written as doubles.
constexpr double LEAST_DETAIL = 1e-3;

template <typename Number>
void addVertices(tinyply::PlyFile& file, tinyply::Type type, const std::vector<Number>& vXYZ)
{
    file.add_properties_to_element("vertex", {"x", "y", "z"}, type, vXYZ.size() / 3,
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
        const bool bFloat = doFloatsTell(vertices.getPoints(), LEAST_DETAIL * pRMesh->getCellSize());
        const std::vector<float> vFloats = bFloat ? packFloats(vertices.getPoints()) : std::vector<float>();
        const std::vector<double> vDoubles =
            bFloat ? std::vector<double>() : packDoubles(vertices.getPoints());
        tinyply::PlyFile file;
        if (bFloat)
            addVertices(file, tinyply::Type::FLOAT32, vFloats);
        else
            addVertices(file, tinyply::Type::FLOAT64, vDoubles);
        addFaces(file, vIndices);
        const int numDigits =
            bFloat ? std::numeric_limits<float>::max_digits10 : std::numeric_limits<double>::max_digits10;
        if (writePlyFile(file, name, bASCII, numDigits))
            return true;
        errorMessage(TAG, "failed to write " + name);
    }
    catch (const std::bad_alloc&)
    {
        throw;
    }
    catch (const std::exception& e)
    {
        checkCancelled(); // which is no fault of the file
        errorMessage(TAG, "failed to write " + name + ", " + e.what());
    }
    return false;
}

} // namespace TARN_ZEF
