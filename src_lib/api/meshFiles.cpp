// Finished meshes into files.
#include "Mesh.h"
#include "api/requireMesh.h"
#include "core/definitions.h"
#include "files/Visualizer3.h"
#include "meshfiles/PLY.h"
#include "meshfiles/writeSTL.h"
#include "rmesh/RMesh.h"
#include "rmesh/RTriangle.h"
#include "text/UnfinishedFile.h"
#include "zef_api_functions.h"

namespace TARN_ZEF
{

// The two PLY names are crossed, see Mesh.h.
bool Mesh::writePly_ASCII(const std::string& name) const
{
    return PLY::writePly(pRMesh, name, false);
}

bool Mesh::writePly_BIN(const std::string& name) const
{
    return PLY::writePly(pRMesh, name, true);
}

bool Mesh::writeStl_ASCII(const std::string& name) const
{
    return writeSTL(pRMesh, name);
}

bool Mesh::writeGeomview_ASCII(const std::string& name) const
{
    const UnfinishedFile unfinished(name);
    Visualizer3 scene(name, nullptr, true);
    if (!scene.isOpen())
        return false;
    std::vector<RTriangle*> vRT;
    pRMesh->getAliveT(vRT);
    scene.writeTriangles(vRT, CGREEN);
    return scene.finish();
}

bool writeMesh_auto(const std::string& name, std::shared_ptr<Mesh> pMesh, bool bASCII)
{
    const FileType type = getFileType(name);
    requireMesh(pMesh);
    switch (type)
    {
    case FT_STL:
        return pMesh->writeStl_ASCII(name);
    case FT_PLY:
        return bASCII ? pMesh->writePly_ASCII(name) : pMesh->writePly_BIN(name);
    case FT_LIST:
        return pMesh->writeGeomview_ASCII(name);
    default:
        break;
    }
    printErrorText("Filename [" + name + "] is not valid, using [zef_output.ply] instead\n");
    return pMesh->writePly_BIN(name);
}

} // namespace TARN_ZEF
