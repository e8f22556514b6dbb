#include "extraction/Casx.h"

#include "helpers/StreamCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <map>
#include <set>

using namespace TARN_ZEF;

namespace
{
constexpr CCD INDICES[8] = {0, 1, 2, 3, 4, 5, 6, 7};

// Masks of a row in the order of getTriangles().
std::vector<int> getMasks(const Casx& casx, int cfg, TriUse tu)
{
    std::vector<CCD> vCorners;
    casx.getTriangles(cfg, INDICES, vCorners, tu);
    std::vector<int> vMasks;
    for (std::size_t i = 0; i < vCorners.size(); i += 3)
        vMasks.push_back(1 << vCorners[i] | 1 << vCorners[i + 1] | 1 << vCorners[i + 2]);
    return vMasks;
}

int bitCount(int mask)
{
    return std::popcount(static_cast<unsigned>(mask));
}

struct Face
{
    int cfg;
    int diagonal; // the two corners of the kept diagonal, as a mask
};
constexpr Face FACES[6] = {
    {15, 1 << 1 | 1 << 3},  {51, 1 << 0 | 1 << 5},  {102, 1 << 2 | 1 << 5},
    {153, 1 << 3 | 1 << 4}, {204, 1 << 3 | 1 << 6}, {240, 1 << 5 | 1 << 7},
};
} // namespace

TEST(CasxRows, numbersOfSurfaceTriangles)
{
    const Casx casx(TM_FAT, false);
    std::map<std::size_t, int> mCount;
    for (int cfg = 0; cfg < 256; ++cfg)
        ++mCount[getMasks(casx, cfg, TUT).size()];
    const std::map<std::size_t, int> expected = {{0, 94}, {1, 8}, {2, 84}, {3, 24}, {4, 30}, {6, 16}};
    EXPECT_EQ(mCount, expected);
}

TEST(CasxRows, baseCasesCoverAllConfigurationsOnce)
{
    std::set<int> sSeen;
    for (const CasxBaseCase& base : CASX_BASE_CASES)
    {
        std::set<int> sClass;
        for (int turns = 0; turns < 64; ++turns)
            sClass.insert(
                rotateConfigZ(rotateConfigY(rotateConfigX(base.cfg, turns / 16), turns / 4 % 4), turns % 4));
        for (const int cfg : sClass)
        {
            EXPECT_EQ(bitCount(cfg), bitCount(base.cfg));
            EXPECT_TRUE(sSeen.insert(cfg).second) << cfg << " belongs to two classes";
        }
    }
    EXPECT_EQ(sSeen.size(), 256u);
}

TEST(CasxRows, cornersAreOccupiedAndFacesKeepOneDiagonal)
{
    for (const TriMode mode : {TM_THIN, TM_FAT})
    {
        const Casx casx(mode, false);
        for (int cfg = 0; cfg < 256; ++cfg)
        {
            SCOPED_TRACE(cfg);
            const std::vector<int> vMasks = getMasks(casx, cfg, TUU);
            const std::set<int> sMasks(vMasks.begin(), vMasks.end());
            ASSERT_EQ(sMasks.size(), vMasks.size());
            for (const int mask : vMasks)
                ASSERT_EQ(mask & ~cfg, 0);
            for (const Face& face : FACES)
            {
                std::vector<int> vOnFace;
                for (const int mask : vMasks)
                    if ((mask & ~face.cfg) == 0)
                        vOnFace.push_back(mask);
                // Two triangles that cover a whole face share the face's own diagonal.
                if (vOnFace.size() == 2 && (vOnFace[0] | vOnFace[1]) == face.cfg)
                {
                    ASSERT_EQ(vOnFace[0] & vOnFace[1], face.diagonal);
                }
            }
        }
    }
}

TEST(CasxRows, computedTableAndFastRowsEqualTheConstant)
{
    for (const TriMode mode : {TM_THIN, TM_FAT})
    {
        const StreamCapture quiet;
        const Casx computed(mode, true);
        const Casx constant(mode, false);
        for (int cfg = 0; cfg < 256; ++cfg)
        {
            std::vector<CCD> vCorners;
            constant.getTriangles(cfg, INDICES, vCorners, TUT);
            const Casx::TutRow& row = constant.getTutTriangles(cfg);
            ASSERT_TRUE(
                std::equal(vCorners.begin(), vCorners.end(), row.corners, row.corners + 3 * row.numTriangles))
                << cfg;
            std::vector<int> vComputed = getMasks(computed, cfg, TUU);
            if (mode == TM_THIN) // the constant has these in rising order
                std::sort(vComputed.begin(), vComputed.end());
            ASSERT_EQ(vComputed, getMasks(constant, cfg, TUU)) << cfg;
        }
    }
}

TEST(CasxMasks, borderFixMasks)
{
    for (int cfg = 0; cfg < 256; ++cfg)
    {
        const int extra = Casx::getExtraMask(cfg);
        const int remove = Casx::getRemoveMask(cfg);
        if (extra != 0)
        {
            EXPECT_EQ(extra, 255 - cfg);
        }
        if (remove == 0)
            continue;
        // Opposite cells of the missing ones: as many, all occupied.
        EXPECT_EQ(bitCount(remove), 8 - bitCount(cfg));
        EXPECT_EQ(remove & ~cfg, 0);
    }
    EXPECT_EQ(Casx::getRemoveMask(127), 2);
    EXPECT_EQ(Casx::getRemoveMask(63), 3);
    EXPECT_EQ(Casx::getRemoveMask(95), 0);
}
