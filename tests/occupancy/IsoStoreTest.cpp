#include "occupancy/IsoStore.h"

#include "Mesh.h"
#include "api/Hal.h"
#include "core/CallScope.h"
#include "helpers/PipelineMesh.h"
#include "helpers/StreamCapture.h"
#include "lattice/Bundle.h"
#include "lattice/Calc.h"
#include "rmesh/RMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <set>

namespace TARN_ZEF
{
namespace
{
// Bundles at the centres of cells, and a store of them.
struct Cells
{
    Cells(const Calc* pCalc_, const std::set<CCD>& sCCD)
        : calc(*pCalc_)
        , store(pCalc_, vBundles)
    {
        for (const CCD ccd : sCCD)
        {
            dPoints.push_back(calc.getMid(ccd));
            dBundles.emplace_back(&dPoints.back());
            dBundles.back().ccd = ccd;
            vBundles.push_back(&dBundles.back());
            store.add(Iso::toUpperQuad(ccd), {ccd});
        }
    }
    [[nodiscard]] std::set<CCD> getCells() const
    {
        std::vector<CCD> vCCD;
        store.getAllCCD(vCCD);
        return {vCCD.begin(), vCCD.end()};
    }
    // A bundle is marked if and only if its cell is gone.
    void expectMarksMatch() const
    {
        const std::set<CCD> sCells = getCells();
        for (const Bundle* pBundle : vBundles)
            ASSERT_EQ(pBundle->forbiddenDirection >= 0, sCells.count(pBundle->ccd) == 1);
    }
    const Calc& calc;
    std::deque<Point3> dPoints;
    std::deque<Bundle> dBundles;
    std::vector<Bundle*> vBundles;
    IsoStore store;
};

// The passes again on a plain set of coordinates, as the judge of bits, blocks and their borders.
class PlainCells
{
public:
    PlainCells(const Calc& calc_, const std::set<CCD>& sCCD)
        : sCells(sCCD)
        , calc(calc_)
    {
    }
    bool tryKill(CCD ccd, int axis, int direction, bool bBundle)
    {
        if (sCells.count(ccd) == 0 || has(ccd, axis, direction) || !has(ccd, axis, -direction) ||
            (bBundle && has(ccd, axis, -2 * direction)))
            return false;
        for (const int b : {1, 2, 4})
            for (const int step : {1, -1})
                if (b != axis && has(move(ccd, axis, direction), b, step) && !has(ccd, b, step))
                    return false;
        return sCells.erase(ccd) == 1;
    }
    // Until a pass over all axes changes nothing; mForbidden gets -1 for cells that go.
    void run(std::map<CCD, int>& mForbidden, bool bBundle)
    {
        for (bool bChanged = true; bChanged;)
        {
            bChanged = false;
            for (const int axis : {1, 2, 4})
                for (auto& [ccd, mask] : mForbidden)
                    if (mask >= 0 && (mask & axis) == 0 &&
                        (tryKill(ccd, axis, 1, bBundle) || tryKill(ccd, axis, -1, bBundle)))
                    {
                        mask = -1;
                        bChanged = true;
                    }
        }
    }
    // Pieces that hang together over faces, edges and corners of cells.
    [[nodiscard]] static int countPieces(const Calc& calc, std::set<CCD> sTodo)
    {
        int num = 0;
        for (; !sTodo.empty(); ++num)
        {
            std::vector<CCD> vWork{*sTodo.begin()};
            sTodo.erase(sTodo.begin());
            while (!vWork.empty())
            {
                CCD array[27];
                calc.completeArray27(vWork.back(), array);
                vWork.pop_back();
                for (const CCD ccd : array)
                    if (sTodo.erase(ccd) == 1)
                        vWork.push_back(ccd);
            }
        }
        return num;
    }
    std::set<CCD> sCells;

private:
    [[nodiscard]] CCD move(CCD ccd, int axis, int steps) const
    {
        return calc.getOffVal(ccd, steps, static_cast<u64>(axis));
    }
    [[nodiscard]] bool has(CCD ccd, int axis, int steps) const
    {
        return sCells.count(move(ccd, axis, steps)) == 1;
    }

    const Calc& calc;
};

// A cloud of cells around the place where eight blocks meet.
std::set<CCD> randomCells(const Calc& calc, std::mt19937& rng, int width, double density)
{
    std::set<CCD> sCCD;
    for (int i = 0; i < width * width * width; ++i)
        if (std::uniform_real_distribution<double>()(rng) < density)
            sCCD.insert(
                calc.getCCD(Point3(32 - width / 2 + i % width + 0.5, 32 - width / 2 + i / width % width + 0.5,
                                   32 - width / 2 + i / width / width + 0.5)));
    return sCCD;
}
} // namespace

TEST(IsoStore, passesAgainstAPlainSet)
{
    const StreamCapture quiet;
    const Calc calc(0, 0, 0, 64, 64, 64, 6);
    std::mt19937 rng(5);
    for (int round = 0; round < 60; ++round)
    {
        const std::set<CCD> sCCD = randomCells(calc, rng, 3 + round % 8, 0.25 + 0.01 * round);
        Cells cells(&calc, sCCD);
        std::map<CCD, int> mForbidden;
        for (Bundle* pBundle : cells.vBundles)
            mForbidden[pBundle->ccd] = pBundle->forbiddenDirection =
                round % 2 == 0 ? 0 : static_cast<int>(rng() % 8);
        std::map<CCD, int> mInflates = mForbidden;

        PlainCells plain(calc, sCCD);
        plain.run(mForbidden, true);
        cells.store.simplify();
        ASSERT_EQ(cells.getCells(), plain.sCells) << "simplify, round " << round;
        cells.expectMarksMatch();

        Cells inflated(&calc, sCCD);
        PlainCells plainInflated(calc, sCCD);
        std::map<CCD, int> mPlainInflates = mInflates;
        plainInflated.run(mPlainInflates, false);
        inflated.store.simplifyInflates(mInflates);
        ASSERT_EQ(inflated.getCells(), plainInflated.sCells) << "simplifyInflates, round " << round;
        ASSERT_EQ(mInflates, mPlainInflates);
        ASSERT_EQ(inflated.store.getSize(), sCCD.size()); // cells added, not cells left

        cells.store.slide();
        cells.expectMarksMatch();
    }
}

// What is left must be one sheet wherever the input was one, whichever way its layers are doubled.
TEST(IsoStore, thinnedSurfacesStayInOnePiece)
{
    const StreamCapture quiet;
    std::vector<NamedCloud> vClouds = getClouds();
    std::reverse(vClouds.begin(), vClouds.end()); // the finest first: it sets what counts as a plane
    for (const NamedCloud& cloud : vClouds)
        for (const int thickAxis : {0, 1, 2, 4})
        {
            SCOPED_TRACE(cloud.name + ", doubled along axis " + std::to_string(thickAxis));
            const Extraction<Top> extraction(cloud.vPoints, -1.0, false);
            const Calc* pCalc = extraction.pCalc;
            std::set<CCD> sCCD;
            for (const Bundle* pBundle : extraction.vBundles)
            {
                sCCD.insert(pBundle->ccd);
                if (thickAxis != 0)
                    sCCD.insert(pCalc->getOffVal(pBundle->ccd, 1, static_cast<u64>(thickAxis)));
            }
            Cells cells(pCalc, sCCD);
            const int numPieces = PlainCells::countPieces(*pCalc, sCCD);
            cells.store.simplify();
            const std::size_t numAfterSimplify = cells.getCells().size();
            EXPECT_LT(numAfterSimplify, sCCD.size());
            EXPECT_EQ(PlainCells::countPieces(*pCalc, cells.getCells()), numPieces);
            for (Bundle* pBundle : cells.vBundles)
                for (const int axis : {1, 2, 4})
                    if (pBundle->forbiddenDirection >= 0)
                    {
                        ASSERT_FALSE(cells.store.tryKill(pBundle, pBundle->ccd, axis, 1) ||
                                     cells.store.tryKill(pBundle, pBundle->ccd, axis, -1));
                    }
            cells.store.slide();
            EXPECT_LE(cells.getCells().size(), numAfterSimplify);
            EXPECT_EQ(PlainCells::countPieces(*pCalc, cells.getCells()), numPieces);
            cells.expectMarksMatch();
        }
}

TEST(IsoStore, stageBeforeTheExtraction)
{
    const StreamCapture quiet;
    const std::vector<Point3> vPoints = makeCloud(3000, 0.0, 0.0);
    std::vector<std::size_t> vNumBundles;
    for (const bool bOn : {false, true})
    {
        const CallScope call;
        prepareProgress("Reconstruct");
        CloudMgr cloudMgr;
        cloudMgr.addPoints(vPoints, -1.0, 1.0, false, 361.0, false);
        Hal hal(&cloudMgr);
        hal.setOccupancyStage(bOn);
        const std::shared_ptr<Mesh> pMesh = hal.reconstruct();
        vNumBundles.push_back(hal.numBundles());
        ASSERT_TRUE(pMesh);
        for (const REdge* pRE : pMesh->getRMesh()->getAllRE()) // a closed surface either way
            EXPECT_TRUE(pRE->isInner() || !pRE->isAlive());
        finishProgress();
    }
    EXPECT_LT(vNumBundles[1], vNumBundles[0]);
}

} // namespace TARN_ZEF
