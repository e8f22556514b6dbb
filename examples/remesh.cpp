// Remeshes a triangle soup with even triangles, then thins the flat regions of the mesh.
#include "zef.h"

#include <exception>
#include <iostream>

int main()
{
    try
    {
        std::vector<TARN_ZEF::Point3> corners; // three consecutive entries are one triangle
        if (!TARN_ZEF::readSTL_ASCII("part.stl", corners))
            return 1;
        const double spacing = 0.5;    // in units of the file
        const double sharpFrom = 30.0; // degrees
        const std::shared_ptr<TARN_ZEF::Mesh> pMesh = TARN_ZEF::melt(corners, spacing, sharpFrom);
        if (!pMesh)
            return 1;
        TARN_ZEF::edgeFlips(pMesh);
        std::cout << TARN_ZEF::reduce(pMesh, 3.0 * spacing, 20.0, true) << " triangles collapsed\n";
        TARN_ZEF::edgeFlips(pMesh);
        return TARN_ZEF::writeMesh_auto("part.ply", pMesh, true) ? 0 : 1;
    }
    catch (const std::exception& error)
    {
        std::cerr << error.what() << "\n"; // refused input, or out of memory
        return 1;
    }
}
