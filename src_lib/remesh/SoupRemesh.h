#ifndef ZEF_SOUPREMESH_H
#define ZEF_SOUPREMESH_H

#include "RemeshOptions.h"
#include "remesh/FlatSoup.h"

#include <functional>
#include <vector>

namespace TARN_ZEF
{
class SourceSurface;

// The way from loose triangles to an even mesh, with the choice of what was not told. run() may be called once.
class SoupRemesh
{
public:
    // options must be without fault.
    explicit SoupRemesh(const RemeshOptions& options_)
        : options(options_)
    {
    }

    // Puts another surface in place of the sound one that was made of the soup, before it is remeshed. The length is the one
    // in use; edges are scaled so that the extents are about 1. Closed and oriented, or empty.
    using Reshape = std::function<void(FlatSoup& soup, double length)>;

    // False if no triangle has a height, or reshape leaves none; then the result is empty. The corners are those of
    // whole triangles.
    [[nodiscard]] bool run(const std::vector<Point3>& vTriCorners,
                           const std::function<void(double)>& progress, const Reshape& reshape = {});

    [[nodiscard]] const FlatSoup& getResult() const { return result; }
    [[nodiscard]] const RemeshReport& getReport() const { return report; }

private:
    [[nodiscard]] bool runAtUnit(const std::vector<Point3>& vTriCorners,
                                 const std::function<void(double)>& progress, const Reshape& reshape);
    [[nodiscard]] bool replace(SourceSurface& source, const Reshape& reshape) const;
    [[nodiscard]] std::vector<Point3> takeFinite(const std::vector<Point3>& vTriCorners);
    [[nodiscard]] bool makeSound(const std::vector<Point3>& vTriCorners, FlatSoup& soup);
    [[nodiscard]] double findLength(SourceSurface& source) const; // marks features of its own
    [[nodiscard]] bool tryLength(SourceSurface& source, const std::function<void(double)>& progress);
    [[nodiscard]] bool needsTooMany(const SourceSurface& source) const;

    RemeshOptions options;
    RemeshReport report;
    FlatSoup result;
};

} // namespace TARN_ZEF

#endif
