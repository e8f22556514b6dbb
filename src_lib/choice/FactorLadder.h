#ifndef ZEF_FACTORLADDER_H
#define ZEF_FACTORLADDER_H

#include "autoReconstruct.h"

#include <functional>
#include <string>
#include <vector>

namespace TARN_ZEF
{
// Goes up the factors until one makes a sound mesh.
//
// It knows neither meshes nor how they are made: a trial is a factor and smoothing that go out, and counts that come
// back. The rule is that of autoReconstruct().
class FactorLadder
{
public:
    // Fills in the counts for factor and smoothing; false if no mesh came out.
    using Try = std::function<bool(AutoTrial& trial)>;

    // Refuses options out of their range.
    explicit FactorLadder(const AutoOptions& options_);

    // plain  the trial of plain defaults, which was made
    // Leaves trials, choice and reason in the report, whose figures of the cloud must be there.
    void climb(const AutoTrial& plain, const Try& makeTrial, AutoReport& report) const;

private:
    [[nodiscard]] static bool isBetter(const AutoTrial& trial, const AutoTrial& plain);
    [[nodiscard]] bool isHopeless(const AutoTrial& second, const AutoTrial& plain) const;
    [[nodiscard]] std::string explainPlain(const AutoReport& report) const;

    AutoOptions options;
};

} // namespace TARN_ZEF

#endif
