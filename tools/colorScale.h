#ifndef ZEF_TOOLS_COLORSCALE_H
#define ZEF_TOOLS_COLORSCALE_H

#include "Image.h"

#include <vector>

namespace TARN_TOOL
{
// From blue at 0 over green and yellow to red at 1; gray for what is not a number.
[[nodiscard]] Colour colorOf(double share);

// One for each value, from blue at 0 to red at highest.
[[nodiscard]] std::vector<Colour> paintByScale(const std::vector<double>& vValues, double highest);

} // namespace TARN_TOOL

#endif
