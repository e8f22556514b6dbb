#include "lattice/BundleMap.h"
#include "core/zefRand.h"
#include "lattice/Bundle.h"

#include <gtest/gtest.h>

#include <map>
#include <vector>

namespace TARN_ZEF
{
// Codes of the first assignment come and go as well as others, beside a map from the standard library.
TEST(BundleMap, behavesAsAMap)
{
    ZefRandom random(5);
    Point3 point;
    std::vector<Bundle> vBundles(60, Bundle(&point));
    std::map<u64, Bundle*> mExpected;
    for (u64 ccd = 0; ccd < vBundles.size(); ccd += 2)
        mExpected.emplace(ccd, &vBundles[ccd]);
    BundleMap map;
    map.assignSorted({mExpected.begin(), mExpected.end()});
    for (int step = 0; step < 600; ++step)
    {
        const u64 ccd = static_cast<u64>(random.next()) % vBundles.size();
        Bundle* const pBundle = &vBundles[ccd];
        if (random.next() % 2 == 0)
            ASSERT_EQ(map.insert(ccd, pBundle), mExpected.emplace(ccd, pBundle).second);
        else
            ASSERT_EQ(map.erase(ccd), mExpected.erase(ccd) == 1);
        ASSERT_EQ(map.size(), mExpected.size());
        ASSERT_EQ(map.find(ccd), mExpected.count(ccd) == 1 ? pBundle : nullptr);
        std::vector<BundleMap::Entry> vFound;
        map.forEach([&vFound](u64 code, Bundle* p) { vFound.emplace_back(code, p); });
        ASSERT_EQ(vFound, std::vector<BundleMap::Entry>(mExpected.begin(), mExpected.end()));
    }
    map.clear();
    EXPECT_TRUE(map.empty());
}

} // namespace TARN_ZEF
