#include "estimateMemory.h"

#include "core/CallScope.h"
#include "core/ProgressScope.h"
#include "intake/Cloud.h"

namespace TARN_ZEF
{
namespace
{
struct CallTraits
{
    MemoryUse use;
    SpacingBy spacingBy;
};

CallTraits traitsOf(ForecastCall call)
{
    switch (call)
    {
    case ForecastCall::RECONSTRUCT_AUTO:
        return {MemoryUse::SCAN, SpacingBy::FACTOR};
    case ForecastCall::RECONSTRUCT_AUTO_SMOOTHED:
        return {MemoryUse::SMOOTHED_SCAN, SpacingBy::FACTOR};
    case ForecastCall::RECONSTRUCT_ABS:
        return {MemoryUse::SCAN, SpacingBy::LENGTH};
    case ForecastCall::RECONSTRUCT_ABS_SMOOTHED:
        return {MemoryUse::SMOOTHED_SCAN, SpacingBy::LENGTH};
    case ForecastCall::MELT:
        return {MemoryUse::MELT, SpacingBy::LENGTH};
    case ForecastCall::TO_CLOUD:
        break;
    }
    return {MemoryUse::SAMPLES, SpacingBy::LENGTH};
}
} // namespace

std::size_t estimateMemory(const std::vector<Point3>& vPoints, double spacing, ForecastCall call)
{
    const CallScope scope;
    ProgressScope progress("Density Estimation");
    const CallTraits traits = traitsOf(call);
    const bool bFactor = traits.spacingBy == SpacingBy::FACTOR;
    const bool bMelt = traits.use == MemoryUse::MELT || traits.use == MemoryUse::SAMPLES;
    Cloud cloud("cloud of a forecast", bFactor ? -1.0 : spacing, bFactor ? spacing : -1.0, bMelt,
                traits.spacingBy);
    cloud.setPoints(vPoints);
    const std::size_t numBytes = cloud.forecastMemory(traits.use);
    progress.finish();
    return numBytes;
}

} // namespace TARN_ZEF
