#ifndef ZEF_BUNDLEMAP_H
#define ZEF_BUNDLEMAP_H

#include "core/definitions.h"

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
struct Bundle;

// Cell code to bundle, in ascending order of the code (the mCCDBundle of the driver).
//
// Nearly all entries come at once from the intake, a few are added or removed by the repair. So the first
// ones stand in one sorted vector and the later ones in a small tree beside it.
//
// Ownership:  none; the bundles belong to their makers.
// Invariant:  a code has at most one bundle; an entry never holds null.
// Cost:       find is a binary search; forEach is linear.
class BundleMap
{
public:
    using Entry = std::pair<u64, Bundle*>;

    // Takes strictly ascending entries in place of all earlier content.
    void assignSorted(std::vector<Entry> vEntries);
    void clear();

    [[nodiscard]] Bundle* find(u64 ccd) const; // null if absent
    bool insert(u64 ccd, Bundle* pBundle);     // false, and nothing changed, if the code has one
    bool erase(u64 ccd);                       // false if absent
    [[nodiscard]] std::size_t size() const noexcept { return vBase.size() - numErased + mLater.size(); }
    [[nodiscard]] bool empty() const noexcept { return size() == 0; }

    // f(ccd, pBundle) for each entry, ascending.
    template <typename F>
    void forEach(F&& f) const
    {
        auto itLater = mLater.begin();
        for (const Entry& e : vBase)
        {
            for (; itLater != mLater.end() && itLater->first < e.first; ++itLater)
                f(itLater->first, itLater->second);
            if (e.second != nullptr)
                f(e.first, e.second);
        }
        for (; itLater != mLater.end(); ++itLater)
            f(itLater->first, itLater->second);
    }

private:
    [[nodiscard]] std::size_t findBase(u64 ccd) const; // index in vBase, or its size

    std::vector<Entry> vBase; // sorted; a removed entry keeps its code and holds null
    std::size_t numErased = 0;
    std::map<u64, Bundle*> mLater;
};

} // namespace TARN_ZEF

#endif
