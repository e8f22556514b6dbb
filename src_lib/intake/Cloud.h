#ifndef ZEF_CLOUD_H
#define ZEF_CLOUD_H

#include "Point3.h"
#include "core/SourceLocation.h"
#include "geometry/NearFrame.h"
#include "intake/MemoryForecast.h"
#include "lattice/Bundle.h"
#include "lattice/Calc.h"
#include "tarn_tools/SimplePool.h"

#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
class SNode;
class Smooth;

// Which of the two the caller has chosen; refusals name it.
enum class SpacingBy
{
    LENGTH, // a spacing in units of the points
    FACTOR  // a factor on the detected spacing
};

// One input cloud on its way from points to occupied cells: the spacing of its points, the lattice, and one
// bundle for each cell.
//
//     Cloud cloud("name", spacingAbs, spacingFactor, bMelt);
//     cloud.setPoints(vPoints);          // or read()
//     cloud.prepareScanPoints(bSmooth);  // or preparePixelsAndFeatures() for a triangle soup
//
// Ownership:  owns copies of the points, the lattice, the bundles and the bundles' points. The points of a
//             scan go as soon as they are reduced to nodes; those of a soup are replaced by the points of
//             the cells, and bundles refer to them.
// Invariant:  the coordinates of all points are finite, and in the frame near them.
// Threads:    one caller; sorts and passes over the points use the pool.
// Errors:     input that cannot be worked with is refused by a ZefRefusedException.
// Cost:       n log n by radix sorts. Without bundles and lattice if the input is empty.
class Cloud
{
public:
    // spacingAbs_     in units of the points; counts only if above 0.0
    // spacingFactor_  otherwise, the factor on the detected spacing
    // bMelt_          the points are corners of triangles, three in a row each
    Cloud(const std::string& name_, double spacingAbs_, double spacingFactor_, bool bMelt_,
          SpacingBy spacingBy_ = SpacingBy::LENGTH);
    ~Cloud();
    Cloud(const Cloud&) = delete;
    Cloud& operator=(const Cloud&) = delete;

    // --- Input (Cloud.cpp, CloudFiles.cpp) -----------------------------------------------------------------

    // Copies the points; those that are not finite, or triangles with such a corner, are left out with a
    // warning. Refuses more than 2^31 - 1, and parts of triangles if it is a soup.
    void setPoints(const std::vector<Point3>& v);
    // Takes the points of the file that gave the cloud its name, with the same checks. False, with a
    // message, if it could not be read.
    [[nodiscard]] bool read();
    // Appends the points of a file. STL must be melted with a given spacing: asserted.
    [[nodiscard]] bool readPoints(const std::string& filename, std::vector<Point3>& v);

    // --- Intake (Cloud.cpp, CloudSpacing.cpp) --------------------------------------------------------------

    // Both need a named progress tree, and warn and do nothing if there are no points.
    void prepareScanPoints(bool bSmooth);
    // featureAngle  degrees above which an edge is a feature
    // use           MELT or SAMPLES, for the limit on memory
    void preparePixelsAndFeatures(double featureAngle, MemoryUse use = MemoryUse::MELT);
    // In their place: how many bytes a call will take; 0, with a warning, if there are no points.
    [[nodiscard]] std::size_t forecastMemory(MemoryUse use);

    // Finds the spacing. Refuses points that cannot be told apart on a lattice of 2^20 cells along their
    // extent, unless a spacing is given.
    void estimateResolution();
    // Chooses the cube of 2^n cells around the points and a frame of 4.5 cells. Refuses a spacing that is not
    // above 0, or that MAXLEVELS levels are not enough for.
    void createCalc();
    // One bundle per cell with a usable node, ascending by the node's cell. The nodes go.
    void createBundles(Smooth* pSmooth);

    // --- Results -------------------------------------------------------------------------------------------

    // Appends (ccd, bundle) of every bundle in the order of making. Projected points may share a cell.
    void getBundles(std::vector<std::pair<u64, Bundle*>>& v) const;
    // Pairs of cells along feature and border edges of a soup.
    [[nodiscard]] const std::vector<std::pair<u64, u64>>& getFeatures() const noexcept { return vFeatures; }
    [[nodiscard]] const std::vector<std::pair<u64, u64>>& getBorders() const noexcept { return vBorders; }

    // The detected spacing; -1.0 if none was detected because one was given.
    [[nodiscard]] double getSpacing() const noexcept { return detectedSpacing; }
    // The one in force, and edge of the cells; -1.0 before estimateResolution().
    [[nodiscard]] double getUsedSpacing() const noexcept { return usedSpacing; }
    // In which all that is told of places, the lattice and the bundles' points, is given.
    [[nodiscard]] const NearFrame& getFrame() const noexcept { return frame; }
    // Null before createCalc().
    [[nodiscard]] Calc* getCalc() const noexcept { return pCalc.get(); }
    [[nodiscard]] bool isMelt() const noexcept { return bMelt; }
    // Seconds.
    [[nodiscard]] double getReadTime() const noexcept { return readTime; }
    [[nodiscard]] std::size_t getNumInputPoints() const noexcept { return numInputPoints; }
    void printStatistics() const;

    // Refuses more points than can be numbered.
    static void requireNumber(std::size_t num, const SourceLocation& where = SourceLocation::current());

private:
    static constexpr std::size_t MAX_POINTS = std::numeric_limits<std::int32_t>::max();

    // --- Refusals (CloudRefusals.cpp), and a reason (CloudOutliers.cpp) ---
    // condition is what does not hold; where is for the place that asks.
    using Place = SourceLocation;
    void requireTriangles(std::size_t num, const Place& where = Place::current()) const;
    void requireCells(std::size_t num, const Place& where = Place::current()) const;
    void requireArea(const Place& where = Place::current()) const; // of a soup, in cells
    // Warns of points that are the reason why none of these nodes has a surface around it.
    void tellOutliers(const std::vector<SNode>& vNodes) const;
    void requireMemory(MemoryUse use, const Place& where = Place::current()) const; // if there is a limit
    [[noreturn]] void refuseExtent(const char* condition, const Place& where) const;
    [[noreturn]] void refuseCrowd(const char* condition, const Place& where = Place::current()) const;
    [[noreturn]] void refuseSpacing(const char* condition, const Place& where = Place::current()) const;
    [[noreturn]] void refuseLattice(const char* condition, const Place& where = Place::current()) const;
    // Of the finest lattice around these points.
    [[nodiscard]] double getSmallestSpacing() const;

    template <typename T>
    void initPool(SimplePool<T>& pool, std::size_t num);
    void takePoints(std::vector<Point3> v);
    void computeBoundingBox();
    [[nodiscard]] double getMaxExtent() const;
    [[nodiscard]] bool isEmpty() const;
    [[nodiscard]] bool readByType(const std::string& filename, std::vector<Point3>& v) const;
    struct CellPoint
    {
        Point3 point;
        u64 ccd = 0; // the cell that it stands for
    };
    [[nodiscard]] std::vector<CellPoint> makeBundlePoints(const Smooth& smooth) const;
    [[nodiscard]] CellPoint makeBundlePoint(const Smooth& smooth, std::uint32_t node, u64 ccd) const;
    [[nodiscard]] std::vector<Point3*> weld();
    void makeBundle(Point3* pPoint, u64 ccd);

    double readTime = 0.0;
    std::string name; // the file's, or a word for points from memory
    double spacingAbs;
    double spacingFactor;
    bool bMelt;
    SpacingBy spacingBy;
    std::size_t numInputPoints = 0; // kept ones
    double detectedSpacing = -1.0;
    double usedSpacing = -1.0;
    double cellEdge = -1.0;
    std::unique_ptr<Calc> pCalc;
    NearFrame frame;
    std::vector<Point3> vPoints;
    SimplePool<Bundle> bundlePool;
    SimplePool<Point3> pointPool; // of a scan's bundles
    double bbMin[3] = {DBL_MAX, DBL_MAX, DBL_MAX};
    double bbMax[3] = {-DBL_MAX, -DBL_MAX, -DBL_MAX};
    std::vector<std::pair<u64, u64>> vFeatures;
    std::vector<std::pair<u64, u64>> vBorders;
};

} // namespace TARN_ZEF

#endif
