// Clouds and soups that no scanner should deliver, and that come all the same.
#ifndef ZEF_TESTS_ODDINPUT_H
#define ZEF_TESTS_ODDINPUT_H

#include "Point3.h"

#include <string>
#include <vector>

namespace TARN_ZEF
{
struct OddInput
{
    std::string name;
    std::vector<Point3> vPoints; // of a soup: three in a row are a triangle
};

[[nodiscard]] std::vector<OddInput> makeOddClouds();
[[nodiscard]] std::vector<OddInput> makeOddSoups();

} // namespace TARN_ZEF

#endif
