#ifndef ZEF_HISTOGRAM_H
#define ZEF_HISTOGRAM_H

#include "core/definitions.h"

#include <limits>
#include <map>
#include <string>
#include <vector>

namespace TARN_ZEF
{
// Counts values in bins and prints them with mean, range and median.
//
// Invariant:  the bins' limits are the keys; a catch-all bin at the largest double takes what is above all
//             others, so that the counts of all bins sum up to the number of values.
// Cost:       keeps every value, for the median; meant for debug output.
class Histogram
{
public:
    explicit Histogram(const std::string& name_);

    // A bin holds the values up to its limit, the limit included, from the limit below. Bins sort only the
    // values that are added after them. A NaN limit is fatal.
    void addBin(double upperLimit);
    // Infinity lands in the catch-all bin, NaN in the lowest.
    void add(double value);
    // To standard output, whose format settings stay as they are.
    void print();

private:
    [[nodiscard]] double sortAndGetMedian();

    std::string name;
    double minVal = std::numeric_limits<double>::max();
    double maxVal = LOWEST_DBL;
    double sum = 0.0;
    u64 count = 0;
    std::map<double, u64> mBins;
    std::vector<double> vValues;
};

} // namespace TARN_ZEF

#endif
