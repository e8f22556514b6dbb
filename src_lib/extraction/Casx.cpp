#include "extraction/Casx.h"

#include <bit>
#include <string>

#include "files/Visualizer3.h"

namespace TARN_ZEF
{
namespace
{
// The corner across the cube.
constexpr int ANTIPODES[8] = {6, 7, 4, 5, 2, 3, 0, 1};

// Bit j of entry i: a cube edge joins the corners i and j.
constexpr int NEIGHBOURS[8] = {
    1 << 1 | 1 << 3 | 1 << 4, 1 << 0 | 1 << 2 | 1 << 5, 1 << 1 | 1 << 3 | 1 << 6, 1 << 0 | 1 << 2 | 1 << 7,
    1 << 0 | 1 << 5 | 1 << 7, 1 << 1 | 1 << 4 | 1 << 6, 1 << 2 | 1 << 5 | 1 << 7, 1 << 3 | 1 << 4 | 1 << 6,
};

constexpr std::size_t NUM_SLOTS = CASX_NUM_SLOTS;

std::size_t getRowStart(int cfg)
{
    return static_cast<std::size_t>(cfg) * NUM_SLOTS;
}

// Whether the table speaks for this number of occupied cells.
bool hasRow(int cfg)
{
    const int num = Calc::getNumSet8(cfg);
    return num >= 3 && num <= 7;
}

void printRow(int cfg, const int* pMasks, int baseCfg)
{
    std::string row = "addTriConfig(" + std::to_string(cfg);
    for (int i = 0; i < CASX_NUM_SLOTS; ++i)
        row += ", " + std::to_string(pMasks[i]);
    row += ");\r\t\t\t\t\t\t\t\t\t\t// ";
    row += cfg == baseCfg ? "BASE CASE" : "RotCase (from base " + std::to_string(baseCfg) + ")";
    printText(row + "\n");
}
} // namespace

Casx::Casx(TriMode triMode_, bool bExperimental)
    : vTriVec(static_cast<std::size_t>(CASX_NUM_CONFIGS) * NUM_SLOTS, CASX_END)
    , vTriUse(static_cast<std::size_t>(CASX_NUM_CONFIGS) * NUM_SLOTS, TUU)
    , triMode(triMode_)
{
    if (triMode != TM_THIN && triMode != TM_FAT)
    {
        errorMessage(ZEF_HERE, "unknown TriMode");
        ASSEX(false);
    }
    for (const CasxBaseCase& base : CASX_BASE_CASES)
        addTriUse(base.cfg, base.fat);
    if (bExperimental)
    {
        printText("Casx::Casx, bExperimental=true - using base cases\n");
        expandBaseCases();
    }
    else
        initAllCases();
    initTutRows();
    if (DEBUG_SCENES && bExperimental)
        showAllConfigs();
}

void Casx::getTriangles(int cfg, const CCD* array, std::vector<CCD>& vTriCCD, TriUse tu) const
{
    ASSEX(cfg >= 0);
    if (!hasRow(cfg))
        return;
    const std::size_t start = getRowStart(cfg);
    for (std::size_t slot = start; slot < start + NUM_SLOTS; ++slot)
    {
        if (tu != TUU && vTriUse[slot] != tu)
            continue;
        if (vTriVec[slot] > 255)
            break;
        for (unsigned mask = static_cast<unsigned>(vTriVec[slot]); mask != 0; mask &= mask - 1)
            vTriCCD.push_back(array[std::countr_zero(mask)]);
    }
    if (vTriCCD.size() % 3 != 0)
        warningMessage(ZEF_HERE, "Uh, config=" + std::to_string(cfg));
    ASSEX(vTriCCD.size() % 3 == 0);
}

int Casx::getExtraMask(int cfg)
{
    ASSEX(cfg >= 0);
    const int num = Calc::getNumSet8(cfg);
    return num == 6 || num == 7 ? ~cfg & 255 : 0;
}

int Casx::getRemoveMask(int cfg)
{
    const int missing = getExtraMask(cfg);
    if (missing == 0)
        return 0;
    const int low = std::countr_zero(static_cast<unsigned>(missing));
    const int others = missing & (missing - 1);
    if (others == 0)
        return 1 << ANTIPODES[low];
    if ((others & NEIGHBOURS[low]) == 0)
        return 0;
    const int high = std::countr_zero(static_cast<unsigned>(others));
    return 1 << ANTIPODES[low] | 1 << ANTIPODES[high];
}

void Casx::showConfig(int cfg, Visualizer3* pVis, const std::string& title, const std::string& color) const
{
    ASSEX(cfg >= 0 && cfg < CASX_NUM_CONFIGS);
    // Three cells from the start of one cube to the start of the next.
    const Calc calc = getDrawingLattice();
    CCD cube[8] = {};
    cube[5] = calc.numberToSparse(2 + 3 * static_cast<u64>(cfg % 16), AXTRIBIT_X) |
              calc.numberToSparse(2 + 3 * static_cast<u64>(cfg / 16), AXTRIBIT_Y) |
              calc.numberToSparse(2, AXTRIBIT_Z);
    calc.completeArray8Down(cube);
    std::vector<CCD> vCells;
    for (int i = 0; i < 8; ++i)
        if (cfg >> i & 1)
            vCells.push_back(cube[i]);
    *pVis << "\n# " << title << "\n";
    if (!vCells.empty())
        pVis->writePoints(vCells, 6, color);
    for (const TriUse use : {TUT, TUF, TUI})
    {
        std::vector<CCD> vCorners;
        getTriangles(cfg, cube, vCorners, use);
        if (!vCorners.empty())
            pVis->writeTriangles(vCorners, use == TUT ? color : CGRAY);
    }
}

Calc Casx::getDrawingLattice()
{
    return Calc(0.0, 0.0, 0.0, 1000.0, 1000.0, 1000.0, 12);
}

void Casx::showAllConfigs() const
{
    const Calc calc = getDrawingLattice();
    const std::string sceneName = triMode == TM_FAT ? "fatConfigs.list" : "thinConfigs.list";
    Visualizer3 allConfigs(sceneName, &calc, DEBUG_SCENES);
    for (int cfg = 0; cfg < CASX_NUM_CONFIGS; ++cfg)
        showConfig(cfg, &allConfigs, "config " + std::to_string(cfg), Visualizer3::getNextColor());
    for (const CasxBaseCase& base : CASX_BASE_CASES)
    {
        const std::string title = "baseConfig_" + std::to_string(base.cfg);
        Visualizer3 baseConfig(title + ".list", &calc, DEBUG_SCENES);
        showConfig(base.cfg, &baseConfig, title, CGREEN);
    }
}

void Casx::initAllCases()
{
    const CasxRows& rows = getConstantCasxRows(triMode);
    vTriVec.assign(rows.begin(), rows.end());
}

void Casx::expandBaseCases()
{
    const CasxExpansion expansion = expandCasxRows(triMode);
    for (int cfg = 0; cfg < CASX_NUM_CONFIGS; ++cfg)
    {
        const int* pMasks = expansion.rows.data() + getRowStart(cfg);
        addTriConfig(cfg, pMasks);
        printRow(cfg, pMasks, expansion.baseOf[static_cast<std::size_t>(cfg)]);
    }
}

void Casx::initTutRows()
{
    // Corner indices come out of getTriangles() when they go in for the cells.
    constexpr CCD INDICES[8] = {0, 1, 2, 3, 4, 5, 6, 7};
    std::vector<CCD> vCorners;
    for (int cfg = 0; cfg < CASX_NUM_CONFIGS; ++cfg)
    {
        vCorners.clear();
        getTriangles(cfg, INDICES, vCorners, TUT);
        TutRow& row = tutRows[static_cast<std::size_t>(cfg)];
        row.numTriangles = static_cast<unsigned char>(vCorners.size() / 3);
        for (std::size_t i = 0; i < vCorners.size(); ++i)
            row.corners[i] = static_cast<unsigned char>(vCorners[i]);
    }
}

void Casx::addTriConfig(int cfg, const int* pMasks)
{
    const std::size_t start = getRowStart(cfg);
    for (std::size_t i = 0; i < NUM_SLOTS; ++i)
        vTriVec[start + i] = pMasks[i];
}

void Casx::addTriUse(int cfg, const CasxSlot* pSlots)
{
    for (int turns = 0; turns < 64; ++turns)
    {
        const int turned =
            rotateConfigZ(rotateConfigY(rotateConfigX(cfg, turns / 16), turns / 4 % 4), turns % 4);
        const std::size_t start = getRowStart(turned);
        for (std::size_t i = 0; i < NUM_SLOTS; ++i)
            vTriUse[start + i] = pSlots[i].use;
    }
}

} // namespace TARN_ZEF
