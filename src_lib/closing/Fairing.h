#ifndef ZEF_FAIRING_H
#define ZEF_FAIRING_H

#include "Vector3.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// Moves the free ones of linked points so that the sum of squares of their differences to the means of their
// neighbours, those of the held ones included, gets as small as it can: a plate that bends as little as possible.
// By conjugate gradients; a limit on their steps leaves very large plates a little tighter than they could be.
//
// Lengths of any unit; the caller brings the origin near.
class Fairing
{
public:
    // Returns the number of the point. Only those with a weight count in the sum, and need all their links.
    std::size_t add(const Vector3& place, bool bFree, bool bCounts);
    void link(std::size_t from, std::size_t to) { vLinks[from].push_back(to); }

    void run();
    [[nodiscard]] const Vector3& get(std::size_t i) const { return vPlaces[i]; }

private:
    using Field = std::vector<Vector3>;

    // For each point that counts: mean of its neighbours minus itself.
    [[nodiscard]] Field getUmbrellas(const Field& field) const;
    // Half the gradient of the sum: what a field of umbrellas pulls each free point by.
    [[nodiscard]] Field getPull(const Field& umbrellas) const;

    std::vector<Vector3> vPlaces;
    std::vector<char> vIsFree;
    std::vector<char> vCounts;
    std::vector<std::vector<std::size_t>> vLinks;
};

} // namespace TARN_ZEF

#endif
