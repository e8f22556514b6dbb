#ifndef ZEF_BODYSURFACE_H
#define ZEF_BODYSURFACE_H

#include "outer/DualSurface.h"
#include "sheets/FacingField.h"

#include <array>
#include <vector>

namespace TARN_ZEF
{
// The surface of a field where its values change their sign.
class BodySurface : public DualSurface
{
public:
    explicit BodySurface(const FacingField& field_)
        : DualSurface(field_.getLattice())
        , field(field_)
    {
    }

private:
    [[nodiscard]] HullVertex makeVertex(const Cell& cell,
                                        const std::vector<const Change*>& vLoop) const override;
    [[nodiscard]] bool isFirstDiagonalBetter(const std::array<int, 4>& ring,
                                             const Change& change) const override;
    [[nodiscard]] Point3 findCrossing(const Change& change) const;

    const FacingField& field;
};

} // namespace TARN_ZEF

#endif
