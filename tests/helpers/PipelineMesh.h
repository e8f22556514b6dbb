// The combinatorial mesh of a cloud, as the pipeline makes it: raw, or repaired.
#ifndef ZEF_TESTS_PIPELINEMESH_H
#define ZEF_TESTS_PIPELINEMESH_H

#include "cmesh/CMesh.h"
#include "cmesh/CPatch.h"
#include "core/CallScope.h"
#include "core/Progress.h"
#include "extraction/Voro.h"
#include "helpers/dataDir.h"
#include "intake/CloudMgr.h"
#include "lattice/Bundle.h"
#include "lattice/BundleMap.h"
#include "lattice/Calc.h"
#include "repair/Top.h"
#include "zef_api_functions.h"

#include <cmath>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// num evenly spread points on a sphere of radius 10, or on a torus of radii 10 and small above 0; off by up to
// noise on each axis.
inline std::vector<Point3> makeCloud(std::size_t num, double small, double noise)
{
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::vector<Point3> vPoints;
    for (std::size_t i = 0; i < num; ++i)
    {
        const double t = (static_cast<double>(i) + 0.5) / static_cast<double>(num);
        const double a = 6.28318530717959 * std::fmod(0.618033988749895 * static_cast<double>(i), 1.0);
        const double b = 6.28318530717959 * t;
        const double z = small > 0.0 ? small * std::sin(b) : 10.0 * (2.0 * t - 1.0);
        const double rho = small > 0.0 ? 10.0 + small * std::cos(b) : std::sqrt(100.0 - z * z);
        vPoints.emplace_back(rho * std::cos(a) + noise * unit(rng), rho * std::sin(a) + noise * unit(rng),
                             z + noise * unit(rng));
    }
    return vPoints;
}

// Sphere, torus and noisy sphere, and real scans if they are there.
struct NamedCloud
{
    std::string name;
    std::vector<Point3> vPoints;
    bool bClosed; // the repaired surface is closed and manifold
};
inline std::vector<NamedCloud> getClouds()
{
    std::vector<NamedCloud> vClouds = {{"sphere", makeCloud(3000, 0.0, 0.0), true},
                                       {"torus", makeCloud(4000, 3.0, 0.0), true},
                                       {"noisy sphere", makeCloud(3000, 0.0, 0.6), false}};
    if (dataDir().empty())
        return vClouds;
    for (const char* name : {"kitten.xyz", "lamppost.xyz"})
    {
        NamedCloud cloud{name, {}, false};
        std::string path = dataDir() + "/" + name;
        if (readPoints_auto(path, cloud.vPoints))
            vClouds.push_back(cloud);
    }
    return vClouds;
}

// The patches of the whole mesh, each oriented in itself as far as that can be done; the mesh owns them.
inline std::vector<CPatch*> cutOriented(CMesh& mesh)
{
    std::vector<CPatch*> vPatches;
    std::map<u64, CPatch*> mBorderCCD2Patch;
    std::vector<CEdge*> vBorderME;
    mesh.createPatches(nullptr, vPatches, mBorderCCD2Patch, vBorderME);
    for (CPatch* pPatch : vPatches)
        pPatch->orient();
    return vPatches;
}

// The raw extraction of a cloud (spacing -1.0: the detected one) or a soup, and the class that repairs it. A call
// of its own: what another test left behind does not matter.
template <typename Repair>
struct Extraction
{
    Extraction(const std::vector<Point3>& vPoints, double spacing, bool bMelt)
    {
        prepareProgress(bMelt ? "Melt" : "Reconstruct");
        cloudMgr.addPoints(vPoints, spacing, 1.0, bMelt, bMelt ? 30.0 : 361.0, false);
        cloudMgr.getBundles(vBundles, pCalc);
        std::vector<BundleMap::Entry> vEntries;
        for (Bundle* pBundle : vBundles)
            vEntries.emplace_back(pBundle->ccd, pBundle);
        map.assignSorted(std::move(vEntries));
        pVoro = std::make_unique<Voro>(pCalc, &map, TM_FAT);
        pVoro->fatExtractTriangles();
        pTop = std::make_unique<Repair>(pVoro->getCMesh(), pCalc);
    }
    [[nodiscard]] CMesh& mesh() { return *pTop->getCMesh(); }
    [[nodiscard]] Repair& top() { return *pTop; }

    CallScope call;
    CloudMgr cloudMgr;
    Calc* pCalc = nullptr;
    std::vector<Bundle*> vBundles;
    BundleMap map;
    std::unique_ptr<Voro> pVoro;
    std::unique_ptr<Repair> pTop;
};

// The mesh of a cloud: raw but for the diagonals of its squares, or repaired.
struct PipelineMesh : Extraction<Top>
{
    PipelineMesh(const std::vector<Point3>& vPoints, bool bRepair)
        : Extraction(vPoints, -1.0, false)
    {
        if (bRepair)
            pTop->run(pVoro.get());
        else
            pTop->unifyDiagonals();
    }
};

} // namespace TARN_ZEF

#endif
