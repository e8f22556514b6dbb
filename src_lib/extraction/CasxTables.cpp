#include "extraction/CasxTables.h"

#include <algorithm>

#include "lattice/cellCodes.h"

namespace TARN_ZEF
{
namespace
{
using Turn = std::array<int, 8>;
using Triple = std::array<CCD, 3>;

// The bit at position i goes to position turn[i].
constexpr Turn TURN_X = {4, 5, 1, 0, 7, 6, 2, 3};
constexpr Turn TURN_Y = {3, 0, 1, 2, 7, 4, 5, 6};
constexpr Turn TURN_Z = {1, 5, 6, 2, 0, 4, 7, 3};

// The corners as cells of a cube whose highest cell has the code 63.
constexpr std::array<CCD, 8> CORNER_CCD = {57, 61, 60, 56, 59, 63, 62, 58};

// Triangles by configuration; the corners stand behind each line.
constexpr std::array<CasxBaseCase, CASX_NUM_BASE_CASES> BASE_CASES = {{
    {0, {}, {}},
    {1, {}, {}},                                                            // 0
    {3, {}, {}},                                                            // 0 1
    {5, {}, {}},                                                            // 0 2
    {7, {{7, TUI}}, {}},                                                    // 0 1 2
    {15, {{11, TUT}, {14, TUT}}, {{11}, {14}}},                             // 0 1 2 3
    {20, {}, {}},                                                           // 2 4
    {21, {}, {}},                                                           // 0 2 4
    {23, {{19, TUT}, {7, TUT}}, {{7}, {19}}},                               // 0 1 2 4
    {26, {{26, TUT}}, {{26}}},                                              // 1 3 4
    {27, {{25, TUI}, {19, TUI}, {11, TUI}, {26, TUF}}, {{11}, {19}, {25}}}, // 0 1 3 4
    {29, {{13, TUT}, {25, TUT}}, {{13}, {25}}},                             // 0 2 3 4
    {30, {{14, TUT}, {26, TUT}}, {{14}, {26}}},                             // 1 2 3 4
    {31,                                                                    // 0 1 2 3 4
     {{11, TUT}, {14, TUT}, {19, TUI}, {25, TUI}, {22, TUF}, {28, TUF}},
     {{11}, {14}}},
    {60, {{44, TUT}, {56, TUT}}, {{44}, {56}}}, // 2 3 4 5
    {61,                                        // 0 2 3 4 5
     {{44, TUT}, {56, TUT}, {25, TUT}, {37, TUF}, {49, TUF}, {13, TUF}},
     {{25}, {44}, {56}}},
    {63, // 0 1 2 3 4 5
     {{11, TUT}, {14, TUT}, {35, TUT}, {49, TUT}, {25, TUI}, {38, TUI}, {28, TUF}, {52, TUF}},
     {{11}, {14}, {35}, {49}}},
    {90, {{88, TUT}, {26, TUT}, {74, TUT}, {82, TUT}}, {{26}, {74}, {82}, {88}}}, // 1 3 4 6
    {91,                                                                          // 0 1 3 4 6
     {{82, TUT}, {74, TUT}, {88, TUT}, {19, TUT}, {25, TUT}, {11, TUT}},
     {{26}, {74}}},
    {95, {{11, TUT}, {14, TUT}, {69, TUT}, {81, TUT}}, {{11}, {14}, {21}, {84}}}, // 0 1 2 3 4 6
    {125,                                                                         // 0 2 3 4 5 6
     {{13, TUT}, {21, TUT}, {84, TUT}, {112, TUT}, {49, TUI}, {25, TUI}, {100, TUI}},
     {{41}, {49}, {76}, {104}}},
    {127, // 0 1 2 3 4 5 6
     {{35, TUT},
      {49, TUT},
      {38, TUT},
      {100, TUT},
      {11, TUT},
      {14, TUT},
      {25, TUI},
      {76, TUI},
      {112, TUI},
      {88, TUF}},
     {{11}, {14}, {35}, {38}, {49}, {100}}},
    {255, {}, {}},
}};

constexpr int turnOnce(int cfg, const Turn& turn)
{
    int result = 0;
    for (int i = 0; i < 8; ++i)
        result |= (cfg >> i & 1) << turn[static_cast<std::size_t>(i)];
    return result;
}

constexpr int turnTimes(int cfg, const Turn& turn, int count)
{
    for (int i = 0; i < count; ++i)
        cfg = turnOnce(cfg, turn);
    return cfg;
}

constexpr int turnAll(int cfg, int countX, int countY, int countZ)
{
    return turnTimes(turnTimes(turnTimes(cfg, TURN_X, countX), TURN_Y, countY), TURN_Z, countZ);
}

[[noreturn]] void failTriple(const char* title, int mask)
{
    errorMessage(ZEF_HERE, title + std::to_string(mask));
    failAssertion(__FILE__, __LINE__, __PRETTY_FUNCTION__, "false");
}

constexpr Triple getCorners(int mask, const char* title)
{
    Triple corners{};
    std::size_t num = 0;
    for (std::size_t i = 0; i < 8; ++i)
    {
        if ((mask >> i & 1) == 0)
            continue;
        if (num < 3)
            corners[num] = CORNER_CCD[i];
        ++num;
    }
    if (num != 3)
        failTriple(title, mask);
    return corners;
}

// The configuration of the reference cube with exactly these cells.
constexpr int getConfig(const Triple& cells)
{
    int cfg = 0;
    for (std::size_t i = 0; i < 8; ++i)
        for (const CCD cell : cells)
            if (cell == CORNER_CCD[i])
                cfg |= 1 << i;
    return cfg;
}

// Moves the corner off the common edge to the front of both. False if there is no common edge.
constexpr bool alignAtCommonEdge(Triple& a, Triple& b)
{
    for (std::size_t i = 0; i < 3; ++i)
    {
        const CCD a1 = a[(i + 1) % 3];
        const CCD a2 = a[(i + 2) % 3];
        for (std::size_t j = 0; j < 3; ++j)
        {
            const CCD b1 = b[(j + 1) % 3];
            const CCD b2 = b[(j + 2) % 3];
            if ((a1 == b1 && a2 == b2) || (a1 == b2 && a2 == b1))
            {
                std::swap(a[0], a[i]);
                std::swap(b[0], b[j]);
                return true;
            }
        }
    }
    return false;
}

constexpr bool unify(int& maskA, int& maskB)
{
    if (maskA > 255 || maskB > 255)
        return false;
    Triple a = getCorners(maskA, "Ah, cfgA=");
    Triple b = getCorners(maskB, "Ah, cfgB=");
    if (!alignAtCommonEdge(a, b))
        return false;
    const CCD varying = (a[0] ^ a[1]) | (a[0] ^ a[2]) | (a[0] ^ b[0]);
    if ((varying & SPARSE_X) != 0 && (varying & SPARSE_Y) != 0 && (varying & SPARSE_Z) != 0)
        return false;
    if (std::min(a[1], a[2]) >= std::min(a[0], b[0]))
    {
        maskA = getConfig({a[0], a[1], b[0]});
        maskB = getConfig({a[0], a[2], b[0]});
    }
    return true;
}

using Row = std::array<int, CASX_NUM_SLOTS>;

constexpr Row getBaseRow(const CasxBaseCase& base, TriMode triMode)
{
    Row row{};
    for (std::size_t i = 0; i < row.size(); ++i)
        row[i] = triMode == TM_FAT ? base.fat[i].mask : base.thin[i].mask;
    return row;
}

constexpr void unifyRow(Row& row)
{
    for (std::size_t i = 0; i < row.size() && row[i] <= 255; ++i)
        for (std::size_t j = i + 1; j < row.size() && row[j] <= 255; ++j)
            unify(row[i], row[j]);
}

// Several turns of one base lead to the same configuration; the first one seen makes the row.
constexpr void expandBaseCase(const CasxBaseCase& base, TriMode triMode, CasxExpansion& expansion)
{
    const Row baseRow = getBaseRow(base, triMode);
    for (int turns = 0; turns < 64; ++turns)
    {
        const int a = turns / 16;
        const int c = turns / 4 % 4;
        const int d = turns % 4;
        const std::size_t cfg = static_cast<std::size_t>(turnAll(base.cfg, a, c, d));
        if (expansion.baseOf[cfg] >= 0)
            continue;
        expansion.baseOf[cfg] = base.cfg;
        Row row = baseRow;
        for (std::size_t i = 0; i < row.size() && row[i] <= 255; ++i)
            row[i] = turnAll(row[i], a, c, d);
        unifyRow(row);
        for (std::size_t i = 0; i < row.size(); ++i)
            expansion.rows[cfg * row.size() + i] = row[i];
    }
}

constexpr CasxExpansion expand(TriMode triMode)
{
    CasxExpansion expansion{};
    for (int& slot : expansion.rows)
        slot = CASX_END;
    for (int& base : expansion.baseOf)
        base = -1;
    for (const CasxBaseCase& base : BASE_CASES)
        expandBaseCase(base, triMode, expansion);
    return expansion;
}

constexpr CasxRows sortRows(CasxRows rows)
{
    for (auto it = rows.begin(); it != rows.end(); it += CASX_NUM_SLOTS)
        std::sort(it, it + CASX_NUM_SLOTS);
    return rows;
}

constexpr CasxRows FAT_ROWS = expand(TM_FAT).rows;
constexpr CasxRows THIN_ROWS = sortRows(expand(TM_THIN).rows);
} // namespace

constexpr std::array<CasxBaseCase, CASX_NUM_BASE_CASES> CASX_BASE_CASES = BASE_CASES;

int rotateConfigX(int cfg, int count)
{
    return turnTimes(cfg, TURN_X, count);
}

int rotateConfigY(int cfg, int count)
{
    return turnTimes(cfg, TURN_Y, count);
}

int rotateConfigZ(int cfg, int count)
{
    return turnTimes(cfg, TURN_Z, count);
}

bool samePlaneUnify(int& maskA, int& maskB)
{
    return unify(maskA, maskB);
}

CasxExpansion expandCasxRows(TriMode triMode)
{
    return expand(triMode);
}

const CasxRows& getConstantCasxRows(TriMode triMode)
{
    return triMode == TM_FAT ? FAT_ROWS : THIN_ROWS;
}

} // namespace TARN_ZEF
