#ifndef ZEF_RESIDENTBYTES_H
#define ZEF_RESIDENTBYTES_H

#include <cstddef>

namespace TARN_ZEF
{
// Memory of this process that is resident now; 0 where the system does not tell. Some microseconds; no heap.
[[nodiscard]] std::size_t getResidentBytes() noexcept;

} // namespace TARN_ZEF

#endif
