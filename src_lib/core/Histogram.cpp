#include "core/Histogram.h"

#include "core/numbers.h"

#include <algorithm>
#include <iomanip>
#include <locale>
#include <sstream>

namespace TARN_ZEF
{
namespace
{
constexpr double CATCH_ALL = std::numeric_limits<double>::max();

// One line of the table. Fine bins lie below 1.0, hence the precision.
std::string getBinText(double lowerLimit, double upperLimit, u64 numValues)
{
    std::ostringstream os;
    os.imbue(std::locale::classic());
    os << std::fixed << std::setprecision(lowerLimit < 1.0 ? 3 : 1);
    os << "   " << std::setw(5) << lowerLimit << " - ";
    if (upperLimit == CATCH_ALL)
        os << "  max";
    else
        os << std::setw(5) << upperLimit;
    os << ": " << numValues;
    return os.str();
}
} // namespace

Histogram::Histogram(const std::string& name_)
    : name(name_)
    , mBins({{CATCH_ALL, 0}})
{
}

void Histogram::addBin(double upperLimit)
{
    ASSEX(!isNaN(upperLimit));
    mBins.try_emplace(std::min(upperLimit, CATCH_ALL), 0);
}

void Histogram::add(double value)
{
    vValues.push_back(value);
    ++count;
    sum += value;
    ++mBins.lower_bound(std::min(value, CATCH_ALL))->second;
    minVal = std::min(minVal, value);
    maxVal = std::max(maxVal, value);
}

void Histogram::print()
{
    if (count == 0)
    {
        printText("Empty histogram [ " + name + " ]\n");
        return;
    }
    std::string text = "   " + name + " (avg=" + toText(sum / static_cast<double>(count)) +
                       " , min=" + toText(minVal) + ", max=" + toText(maxVal) + ")\n";
    const double median = sortAndGetMedian();
    double lowerLimit = 0.0;
    for (const auto& [upperLimit, numValues] : mBins)
    {
        text += getBinText(lowerLimit, upperLimit, numValues);
        if (median >= lowerLimit && upperLimit > median)
            text += "   ( median is " + toText(median) + " )";
        text += '\n';
        lowerLimit = upperLimit;
    }
    printText(text);
}

double Histogram::sortAndGetMedian()
{
    std::sort(vValues.begin(), vValues.end(),
              [](double a, double b) { return isNaN(b) ? !isNaN(a) : a < b; });
    return vValues.empty() ? CATCH_ALL : vValues[vValues.size() / 2];
}

} // namespace TARN_ZEF
