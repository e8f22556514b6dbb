#ifndef ZEF_CLOUDMGR_H
#define ZEF_CLOUDMGR_H

#include "intake/Cloud.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// The input of one call: takes points or files in, and hands out the occupied cells and their lattice.
//
// Ownership:  owns the clouds, and through them lattice, bundles and their points; all of these are valid as
//             long as it lives. At present there is one cloud at most.
// Threads:    one call, one thread.
class CloudMgr
{
public:
    // spacingBy_  what addPoints() is given of the two
    explicit CloudMgr(SpacingBy spacingBy_ = SpacingBy::LENGTH)
        : spacingBy(spacingBy_)
    {
    }
    CloudMgr(const CloudMgr&) = delete;
    CloudMgr& operator=(const CloudMgr&) = delete;

    // The intake of points in memory, which are copied. Needs a named progress tree; errors as of Cloud.
    //
    // spacingAbs    in units of the points; counts only if above 0.0
    // spacingFactor otherwise, the factor on the detected spacing
    // bMelt         the points are corners of triangles, three in a row each
    // featureAngle  degrees above which an edge of a soup is a feature
    // bSmooth       whether a cloud's nodes are smoothed
    // soupUse       of a soup, what is made of it: MELT or SAMPLES
    // Returns       the detected spacing, -1.0 if none was detected
    double addPoints(const std::vector<Point3>& vPoints, double spacingAbs_, double spacingFactor_,
                     bool bMelt_, double featureAngle, bool bSmooth, MemoryUse soupUse = MemoryUse::MELT);

    // The intake of one file; more are an assertion failure. A soup's feature angle is 10 degrees.
    void readFiles(const std::vector<std::string>& vFiles, double spacingAbs_, double spacingFactor_,
                   bool bMelt_, bool bSmooth);

    // Appends one bundle per cell, strictly ascending by cell. Of several bundles in a cell it is the one
    // made first. pCalc becomes null if the input was empty. Asserts that there is a cloud.
    void getBundles(std::vector<Bundle*>& vBundles, Calc*& pCalc) const;
    // The same bundles with their cells, in place of the earlier content.
    void getBundles(std::vector<std::pair<u64, Bundle*>>& vCCD2Bundle) const;

    // In which the bundles' points and the lattice are given. Asserts that there is a cloud.
    [[nodiscard]] const NearFrame& getFrame() const { return getFirstCloud().getFrame(); }

    // Copies the pairs of cells along feature and border edges of a soup. Assert that there is a cloud.
    void getFeatures(std::vector<std::pair<u64, u64>>& v) const;
    void getBorders(std::vector<std::pair<u64, u64>>& v) const;

    // Seconds.
    [[nodiscard]] double getTotalReadTime() const noexcept { return totalReadTime; }
    // In order of intake.
    [[nodiscard]] const std::vector<std::unique_ptr<Cloud>>& getClouds() const noexcept { return vClouds; }

private:
    [[nodiscard]] const Cloud& getFirstCloud() const;
    Cloud& addCloud(const std::string& name);
    static void prepare(Cloud& cloud, double featureAngle, bool bSmooth, MemoryUse soupUse);

    SpacingBy spacingBy;
    double totalReadTime = 0.0;
    std::vector<std::string> vFileNames;
    std::vector<std::unique_ptr<Cloud>> vClouds;
    double spacingAbs = -1.0;
    double spacingFactor = -1.0;
    bool bMelt = false;
};

} // namespace TARN_ZEF

#endif
