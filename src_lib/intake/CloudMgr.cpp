#include "intake/CloudMgr.h"

#include <algorithm>

#include "core/CallRecorder.h"
#include "parallel/sortMT2.h"

namespace TARN_ZEF
{
namespace
{
constexpr const char* NAME_OF_POINTS = "inputPointsViaMemory";
// Degrees. A file gives no say in it.
constexpr double FILE_FEATURE_ANGLE = 10.0;
} // namespace

double CloudMgr::addPoints(const std::vector<Point3>& vPoints, double spacingAbs_, double spacingFactor_,
                           bool bMelt_, double featureAngle, bool bSmooth, MemoryUse soupUse)
{
    spacingAbs = spacingAbs_;
    spacingFactor = spacingFactor_;
    bMelt = bMelt_;
    Cloud& cloud = addCloud(NAME_OF_POINTS);
    cloud.setPoints(vPoints);
    prepare(cloud, featureAngle, bSmooth, soupUse);
    return cloud.getSpacing();
}

void CloudMgr::readFiles(const std::vector<std::string>& vFiles, double spacingAbs_, double spacingFactor_,
                         bool bMelt_, bool bSmooth)
{
    if (vFiles.size() > 1)
    {
        printText("\nSorry, the current implementation state allows only one input file.\n"
                  "Multiple input point clouds will be supported in later versions\n");
        ASSEX(false);
    }
    vFileNames = vFiles;
    spacingAbs = spacingAbs_;
    spacingFactor = spacingFactor_;
    bMelt = bMelt_;
    for (const std::string& name : vFileNames)
    {
        Cloud& cloud = addCloud(name);
        // A failure has been reported, and leaves a cloud without points.
        (void)cloud.read();
        totalReadTime += cloud.getReadTime();
        prepare(cloud, FILE_FEATURE_ANGLE, bSmooth, MemoryUse::MELT);
    }
}

Cloud& CloudMgr::addCloud(const std::string& name)
{
    return *vClouds.emplace_back(std::make_unique<Cloud>(name, spacingAbs, spacingFactor, bMelt, spacingBy));
}

void CloudMgr::prepare(Cloud& cloud, double featureAngle, bool bSmooth, MemoryUse soupUse)
{
    if (cloud.isMelt())
        cloud.preparePixelsAndFeatures(featureAngle, soupUse);
    else
        cloud.prepareScanPoints(bSmooth);
}

const Cloud& CloudMgr::getFirstCloud() const
{
    ASSEX_TEXT(!vClouds.empty(), "!vClouds.empty()");
    return *vClouds.front();
}

void CloudMgr::getBundles(std::vector<Bundle*>& vBundles, Calc*& pCalc) const
{
    pCalc = getFirstCloud().getCalc();
    std::vector<std::pair<u64, Bundle*>> vCCD2Bundle;
    getBundles(vCCD2Bundle);
    vBundles.reserve(vBundles.size() + vCCD2Bundle.size());
    for (const auto& [ccd, pBundle] : vCCD2Bundle)
        vBundles.push_back(pBundle);
}

void CloudMgr::getBundles(std::vector<std::pair<u64, Bundle*>>& vCCD2Bundle) const
{
    vCCD2Bundle.clear();
    getFirstCloud().getBundles(vCCD2Bundle);
    // Stable: the bundle made first stays first in its cell.
    sortByFirstMT(vCCD2Bundle.begin(), vCCD2Bundle.end());
    const auto isSameCell = [](const auto& a, const auto& b) { return a.first == b.first; };
    const auto end = std::unique(vCCD2Bundle.begin(), vCCD2Bundle.end(), isSameCell);
    addToReport(&CallReport::numRemovedCells, static_cast<std::size_t>(vCCD2Bundle.end() - end));
    vCCD2Bundle.erase(end, vCCD2Bundle.end());
}

void CloudMgr::getFeatures(std::vector<std::pair<u64, u64>>& v) const
{
    v = getFirstCloud().getFeatures();
}

void CloudMgr::getBorders(std::vector<std::pair<u64, u64>>& v) const
{
    v = getFirstCloud().getBorders();
}

} // namespace TARN_ZEF
