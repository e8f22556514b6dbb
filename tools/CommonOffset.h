#ifndef ZEF_TOOLS_COMMONOFFSET_H
#define ZEF_TOOLS_COMMONOFFSET_H

#include "Point3.h"

#include <vector>

namespace TARN_ZEF
{
class Mesh;
}

namespace TARN_TOOL
{
// What coordinates far from the origin have in common, taken off before computing and put back afterwards.
//
// Nothing is taken off where nothing would be gained: doubles tell a billionth of a part of a cloud that is a
// million times its extent away. Points then stay as they are, and so does what is made of them.
//
// Invariant:  taking off is exact, and so is putting back for what has not moved.
class CommonOffset
{
public:
    // None.
    CommonOffset() = default;
    // Of finite points; at least one.
    explicit CommonOffset(const std::vector<TARN_ZEF::Point3>& vPoints);

    [[nodiscard]] bool isNone() const { return offset == TARN_ZEF::Point3(); }
    void takeOff(std::vector<TARN_ZEF::Point3>& vPoints) const;
    void putBack(std::vector<TARN_ZEF::Point3>& vPoints) const;
    void putBack(const TARN_ZEF::Mesh& mesh) const;

private:
    TARN_ZEF::Point3 offset;
};

} // namespace TARN_TOOL

#endif
