#include "choice/FactorLadder.h"

#include "core/numbers.h"
#include "core/refuse.h"

#include <cmath>

namespace TARN_ZEF
{
namespace
{
// Beyond 1, with the share of cells that a sixth factor of 1.8 leaves: a third.
constexpr double FACTORS[] = {1.15, 1.3, 1.45, 1.6, 1.8};
// From the largest of these on.
constexpr double STEP = 1.125;
constexpr double MANY_LAYERS = 0.1;         // share of points
constexpr double MANY_FAULTS = 1.0 / 400.0; // for each triangle

double nextFactor(double factor)
{
    for (const double candidate : FACTORS)
        if (candidate > factor)
            return candidate;
    return STEP * factor;
}

void checkOptions(const AutoOptions& options)
{
    if (!(options.largestFactor >= 1.0) || !std::isfinite(options.largestFactor))
        refuse<ZefBadArgument>("largestFactor>=1", "the largest factor is " + toText(options.largestFactor) +
                                                       "; give a finite one of at least 1");
    if (!(options.largestFactorOfOpen >= 1.0))
        refuse<ZefBadArgument>("largestFactorOfOpen>=1", "the largest factor of open surfaces is " +
                                                             toText(options.largestFactorOfOpen) +
                                                             "; give one of at least 1");
    if (!(options.leastNoiseToSmooth > 0.0))
        refuse<ZefBadArgument>("leastNoiseToSmooth>0", "the least noise to smooth is " +
                                                           toText(options.leastNoiseToSmooth) +
                                                           "; give one above 0, in spacings");
    if (!(options.mostFaultsLeft >= 0.0 && options.mostFaultsLeft <= 1.0))
        refuse<ZefBadArgument>("0<=mostFaultsLeft<=1", "the share of faults left is " +
                                                           toText(options.mostFaultsLeft) +
                                                           "; give one from 0 to 1");
}
} // namespace

FactorLadder::FactorLadder(const AutoOptions& options_)
    : options(options_)
{
    checkOptions(options);
}

bool FactorLadder::isBetter(const AutoTrial& trial, const AutoTrial& plain)
{
    return trial.getNumFaults() == 0 && trial.numBorderEdges <= plain.numBorderEdges &&
           trial.numBorderLoops <= plain.numBorderLoops && trial.numPieces <= plain.numPieces;
}

bool FactorLadder::isHopeless(const AutoTrial& second, const AutoTrial& plain) const
{
    const auto numFaults = static_cast<double>(second.getNumFaults());
    return numFaults > options.mostFaultsLeft * static_cast<double>(plain.getNumFaults()) &&
           numFaults > MANY_FAULTS * static_cast<double>(second.numTriangles);
}

void FactorLadder::climb(const AutoTrial& plain, const Try& makeTrial, AutoReport& report) const
{
    report.vTrials = {plain};
    const bool bNoisy = options.bMaySmooth && report.cloud.noise >= options.leastNoiseToSmooth;
    if (plain.getNumFaults() == 0 && !bNoisy)
    {
        report.reason = "plain defaults make a surface without holes, manifold everywhere";
        return;
    }
    for (double factor = nextFactor(1.0); factor <= options.largestFactor; factor = nextFactor(factor))
    {
        if (report.vTrials.back().numRims > 0 && factor > options.largestFactorOfOpen)
            break;
        AutoTrial trial;
        trial.factor = factor;
        trial.bSmooth = bNoisy;
        if (!makeTrial(trial))
            break;
        report.vTrials.push_back(trial);
        if (isBetter(trial, plain))
        {
            report.factor = factor;
            report.bSmooth = bNoisy;
            report.reason = std::string(bNoisy ? "the points scatter; smoothed, this is" : "this is") +
                            " the smallest factor whose surface has no holes and is manifold";
            return;
        }
        if (report.vTrials.size() == 2 && isHopeless(trial, plain))
            break;
    }
    report.reason = explainPlain(report);
}

std::string FactorLadder::explainPlain(const AutoReport& report) const
{
    if (report.vTrials.front().getNumFaults() == 0)
        return "plain defaults make a sound surface, and smoothing none";
    if (report.cloud.layers >= MANY_LAYERS)
        return "no factor makes a sound surface, as sheets lie too close together: plain defaults stay";
    return "no factor makes a better surface than plain defaults: they stay";
}

} // namespace TARN_ZEF
