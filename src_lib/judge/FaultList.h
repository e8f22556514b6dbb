#ifndef ZEF_FAULTLIST_H
#define ZEF_FAULTLIST_H

#include "checkMesh.h"

#include <array>
#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// The first faults of each kind, up to a number.
class FaultList
{
public:
    explicit FaultList(std::size_t maxOfKind_ = 0)
        : maxOfKind(maxOfKind_)
    {
    }

    [[nodiscard]] bool hasRoom(MeshFaultKind kind) const
    {
        return vOfKind[static_cast<std::size_t>(kind)].size() < maxOfKind;
    }
    void add(const MeshFault& fault)
    {
        if (hasRoom(fault.kind))
            vOfKind[static_cast<std::size_t>(fault.kind)].push_back(fault);
    }
    void append(const FaultList& other)
    {
        for (const std::vector<MeshFault>& vFaults : other.vOfKind)
            for (const MeshFault& fault : vFaults)
                add(fault);
    }
    // Kind after kind.
    [[nodiscard]] std::vector<MeshFault> getAll() const
    {
        std::vector<MeshFault> vResult;
        for (const std::vector<MeshFault>& vFaults : vOfKind)
            vResult.insert(vResult.end(), vFaults.begin(), vFaults.end());
        return vResult;
    }

private:
    static constexpr std::size_t NUM_KINDS = static_cast<std::size_t>(MeshFaultKind::BORDER) + 1;

    std::size_t maxOfKind;
    std::array<std::vector<MeshFault>, NUM_KINDS> vOfKind;
};

} // namespace TARN_ZEF

#endif
