#ifndef ZEF_CLOSEWHOLE_H
#define ZEF_CLOSEWHOLE_H

#include <iosfwd>

namespace TARN_ZEF
{
// Flushes and closes a file. True only if everything written since it was opened has been taken by the
// system: a full disk often shows in the last block alone.
[[nodiscard]] bool closeWhole(std::ofstream& file);

} // namespace TARN_ZEF

#endif
