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

    // False if no triangle has a height; then the result is empty. The corners are those of whole triangles.
    [[nodiscard]] bool run(const std::vector<Point3>& vTriCorners,
                           const std::function<void(double)>& progress);

    [[nodiscard]] const FlatSoup& getResult() const { return result; }
    [[nodiscard]] const RemeshReport& getReport() const { return report; }

private:
    [[nodiscard]] bool runAtUnit(const std::vector<Point3>& vTriCorners,
                                 const std::function<void(double)>& progress);
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
