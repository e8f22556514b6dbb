#ifndef ZEF_CORNERCYCLE_H
#define ZEF_CORNERCYCLE_H

namespace TARN_ZEF
{
// The corners 0, 1, 2 of a triangle follow each other in a cycle.
struct CornerCycle
{
    [[nodiscard]] static constexpr int getNext(int i) noexcept { return i == 2 ? 0 : i + 1; }
    [[nodiscard]] static constexpr int getPrev(int i) noexcept { return i == 0 ? 2 : i - 1; }
};

} // namespace TARN_ZEF

#endif
