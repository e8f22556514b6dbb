// How much memory a call will take, and calls that rather refuse than take too much.
//
//     const std::size_t bytes = estimateMemory(vPoints, 1.0, ForecastCall::RECONSTRUCT_AUTO);
//
//     const MemoryLimitScope scope(2'000'000'000);       // the calls of this thread, until the scope ends
//     try
//     {
//         auto pMesh = reconstruct_auto(vPoints, false, 1.0);
//     }
//     catch (const ZefOverMemoryLimit& refused)
//     {
//         auto pCoarse = reconstruct_abs(vPoints, false, refused.getFittingSpacing());
//     }
//
// The forecast looks at the points: how many cells they fill at that spacing, how many gaps there are to be closed
// between them, and how far these cells hang together. The true peak lies within about a quarter of it on both sides
// (docs/results.md has the table); but points that fill a body, and so make no surface, take up to two thirds more.
// Worker threads, a few megabytes, are part of it.
#ifndef ZEF_ESTIMATEMEMORY_H
#define ZEF_ESTIMATEMEMORY_H

#include "Point3.h"
#include "ZefRefusedException.h"
#include "zef_export.h"

#include <cstddef>
#include <string>
#include <vector>

namespace TARN_ZEF
{
// The call that a forecast is about; of reconstructions, smoothed or not.
enum class ForecastCall
{
    RECONSTRUCT_AUTO,
    RECONSTRUCT_AUTO_SMOOTHED,
    RECONSTRUCT_ABS,
    RECONSTRUCT_ABS_SMOOTHED,
    MELT,
    TO_CLOUD
};

// The most bytes that the call will hold at one time, beside the points that it is given; its result counts.
//
// vPoints   as the call gets them: points, or corners of triangles. Read, never changed
// spacing   as the call gets it: the factor of reconstruct_auto(), else the length
// Returns   0 if there is nothing to do: no points, or no finite ones
// Throws    what the call would for this input
// Cost      a tenth of the call; less memory than the call
[[nodiscard]] ZEF_API std::size_t estimateMemory(const std::vector<Point3>& vPoints, double spacing,
                                                 ForecastCall call);

// Lets the calls that this thread makes while the scope lives refuse what by the forecast would take more than so many
// bytes: reconstruct_auto(), reconstruct_abs(), melt(), toCloud(), and autoReconstruct() by its first mesh. They throw
// ZefOverMemoryLimit when the points are in and the spacing is found, before anything large is made.
//
// A scope inside another adds a limit: the lowest holds. Scopes end in the reverse order in which they began.
//
// Threads:    one; make and destroy it on the thread that calls, not while a call runs
// Cost        that of estimateMemory()
class ZEF_API MemoryLimitScope
{
public:
    explicit MemoryLimitScope(std::size_t numBytes) noexcept;
    ~MemoryLimitScope();
    MemoryLimitScope(const MemoryLimitScope&) = delete;
    MemoryLimitScope& operator=(const MemoryLimitScope&) = delete;

private:
    std::size_t outerLimit;
};

// A call would have taken more memory than its host allows. what() tells the figures.
class ZEF_API ZefOverMemoryLimit : public ZefRefusedException
{
public:
    ZefOverMemoryLimit(const std::string& reason, std::size_t forecast_, double fittingSpacing_);
    ~ZefOverMemoryLimit() override;

    [[nodiscard]] std::size_t getForecast() const noexcept { return forecast; } // bytes
    // A larger spacing that the forecast allows, in units of the points; 0.0 if none does.
    [[nodiscard]] double getFittingSpacing() const noexcept { return fittingSpacing; }

private:
    std::size_t forecast;
    double fittingSpacing;
};

} // namespace TARN_ZEF

#endif
