// Clouds, and what the pipeline makes of them up to the combinatorial mesh.
#ifndef ZEF_TESTS_REPAIREDMESH_H
#define ZEF_TESTS_REPAIREDMESH_H

#include "Bundle.h"
#include "BundleMap.h"
#include "CMesh.h"
#include "CloudMgr.h"
#include "Progress.h"
#include "Top.h"
#include "Voro.h"
#include "dataDir.h"
#include "zef_api_functions.h"

#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
inline std::vector<Point3> sphereCloud(std::size_t num, double noise)
{
    std::mt19937 rng(11);
    std::normal_distribution<double> normal;
    std::vector<Point3> v;
    while (v.size() < num)
    {
        const Vector3 dir = normalize(Vector3(normal(rng), normal(rng), normal(rng)));
        const double r = 1.0 + noise * normal(rng);
        v.emplace_back(r * dir.x(), r * dir.y(), r * dir.z());
    }
    return v;
}

inline std::vector<Point3> torusCloud(std::size_t num)
{
    std::mt19937 rng(12);
    std::uniform_real_distribution<double> turn(0.0, 6.283185307179586);
    std::vector<Point3> v;
    while (v.size() < num)
    {
        const double a = turn(rng), b = turn(rng);
        const double rho = 2.0 + 0.8 * std::cos(b);
        v.emplace_back(rho * std::cos(a), rho * std::sin(a), 0.8 * std::sin(b));
    }
    return v;
}

// By name: three made ones and, if the folder of real clouds is there, two of these.
inline std::vector<std::pair<std::string, std::vector<Point3>>> sampleClouds()
{
    std::vector<std::pair<std::string, std::vector<Point3>>> vClouds{
        {"sphere", sphereCloud(3000, 0.0)},
        {"torus", torusCloud(4000)},
        {"noisy sphere", sphereCloud(3000, 0.02)},
    };
    for (const char* name : {"kitten.xyz", "lamppost.xyz"})
    {
        std::vector<Point3> vPoints;
        std::string path = dataDir() + "/" + name;
        if (!dataDir().empty() && readPoints_auto(path, vPoints))
            vClouds.emplace_back(name, std::move(vPoints));
    }
    return vClouds;
}

// The raw extraction of a cloud (spacing -1.0: the detected one) or a soup, and the class that repairs it.
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
    CMesh& mesh() { return *pTop->getCMesh(); }

    CloudMgr cloudMgr;
    Calc* pCalc = nullptr;
    std::vector<Bundle*> vBundles;
    BundleMap map;
    std::unique_ptr<Voro> pVoro;
    std::unique_ptr<Repair> pTop;
};

// The mesh of a cloud after the repair.
struct RepairedMesh : Extraction<Top>
{
    explicit RepairedMesh(const std::vector<Point3>& vPoints)
        : Extraction(vPoints, -1.0, false)
    {
        pTop->run(pVoro.get());
    }
};

} // namespace TARN_ZEF

#endif
