#ifndef ZEF_TOOLS_COLORSCALE_H
#define ZEF_TOOLS_COLORSCALE_H

#include "Image.h"

#include <cstddef>

namespace TARN_TOOL
{
// From blue at 0 over green and yellow to red at 1; gray for what is not a number.
[[nodiscard]] Colour colorOf(double share);

// From blue at -1 over light gray at 0 to red at 1; gray for what is not a number.
[[nodiscard]] Colour signedColorOf(double share);

// Of the piece of this rank: neighbouring ranks look different, from some twenty on they come again.
[[nodiscard]] Colour colorOfPiece(std::size_t rank);

} // namespace TARN_TOOL

#endif
