#include "formats/ColumnFinder.h"

#include "formats/FileError.h"
#include "formats/textRows.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
struct RoleName
{
    std::string_view name;
    Columns::Role role;
    bool bStart = false; // whether longer names that start so count too
};

// Map coordinates have x to the east. The first name that fits counts.
constexpr RoleName ROLE_NAMES[] = {
    {"x", Columns::X},
    {"y", Columns::Y},
    {"z", Columns::Z},
    {"i", Columns::INTENSITY},
    {"r", Columns::RED},
    {"g", Columns::GREEN},
    {"b", Columns::BLUE},
    {"nx", Columns::NX},
    {"ny", Columns::NY},
    {"nz", Columns::NZ},
    {"normal_x", Columns::NX},
    {"normal_y", Columns::NY},
    {"normal_z", Columns::NZ},
    {"red", Columns::RED},
    {"green", Columns::GREEN},
    {"blue", Columns::BLUE},
    {"intensity", Columns::INTENSITY},
    {"reflectance", Columns::INTENSITY},
    {"easting", Columns::X},
    {"northing", Columns::Y},
    {"longitude", Columns::X, true},
    {"latitude", Columns::Y, true},
    {"elevation", Columns::Z, true},
    {"height", Columns::Z},
    {"altitude", Columns::Z},
};

[[nodiscard]] std::optional<Columns::Role> roleOf(std::string_view name)
{
    for (const RoleName& known : ROLE_NAMES)
    {
        if (isWord(known.bStart ? name.substr(0, known.name.size()) : name, known.name))
            return known.role;
    }
    return std::nullopt;
}

[[nodiscard]] std::vector<std::string_view> splitNames(std::string_view text)
{
    constexpr std::string_view SEPARATORS = " \t,;\"";
    std::vector<std::string_view> vNames;
    for (std::size_t first = text.find_first_not_of(SEPARATORS); first != std::string_view::npos;)
    {
        const std::size_t end = std::min(text.find_first_of(SEPARATORS, first), text.size());
        vNames.push_back(text.substr(first, end - first));
        first = text.find_first_not_of(SEPARATORS, end);
    }
    return vNames;
}

using Rows = std::vector<std::vector<double>>;

[[nodiscard]] bool areBytes(const Rows& vRows, std::size_t first)
{
    return std::all_of(vRows.begin(), vRows.end(),
                       [first](const std::vector<double>& vRow)
                       {
                           return std::all_of(vRow.begin() + static_cast<std::ptrdiff_t>(first),
                                              vRow.begin() + static_cast<std::ptrdiff_t>(first + 3),
                                              [](double v)
                                              { return v >= 0.0 && v <= 255.0 && v == std::floor(v); });
                       });
}

// Zero vectors stand for normals that could not be found.
[[nodiscard]] bool areUnitVectors(const Rows& vRows, std::size_t first)
{
    constexpr double TOLERANCE = 0.02;
    bool bSome = false;
    for (const std::vector<double>& vRow : vRows)
    {
        const double sq =
            vRow[first] * vRow[first] + vRow[first + 1] * vRow[first + 1] + vRow[first + 2] * vRow[first + 2];
        if (sq != 0.0 && !(std::fabs(sq - 1.0) <= TOLERANCE))
            return false;
        bSome = bSome || sq != 0.0;
    }
    return bSome;
}

void setThree(Columns& columns, Columns::Role first, std::size_t column)
{
    for (std::size_t k = 0; k < 3; ++k)
        columns.aColumn[first + k] = column + k;
}

} // namespace

std::size_t Columns::getLeast() const noexcept
{
    return std::max({aColumn[X], aColumn[Y], aColumn[Z]}) + 1;
}

std::size_t Columns::getMost() const noexcept
{
    std::size_t most = 0;
    for (const std::size_t column : aColumn)
        most = column == NONE ? most : std::max(most, column + 1);
    return most;
}

bool Columns::complete() noexcept
{
    for (const Role first : {RED, NX})
    {
        const bool bAll = aColumn[first] != NONE && aColumn[first + 1] != NONE && aColumn[first + 2] != NONE;
        for (std::size_t k = 0; k < 3 && !bAll; ++k)
            aColumn[first + k] = NONE;
    }
    return has(X) && has(Y) && has(Z);
}

Columns parseColumns(std::string_view option)
{
    Columns columns;
    const std::vector<std::string_view> vNames = splitNames(option);
    for (std::size_t i = 0; i < vNames.size(); ++i)
    {
        if (vNames[i] == "-")
            continue;
        const std::optional<Columns::Role> role = roleOf(vNames[i]);
        if (!role || columns.has(*role))
            throw FileError("the columns " + quote(option) + " have " + quote(vNames[i]) +
                            (role ? " twice" : "") +
                            "; give each of x, y, z once, and of i, r, g, b, nx, ny, nz "
                            "what is there, and - for a column to pass over");
        columns.aColumn[*role] = i;
    }
    if (!columns.complete())
        throw FileError("the columns " + quote(option) + " lack one of x, y and z; give it too");
    return columns;
}

std::optional<Columns> findColumns(std::string_view header)
{
    while (!header.empty() && (header.front() == '#' || header.front() == '/' || isBlank(header.front())))
        header.remove_prefix(1);
    Columns columns;
    const std::vector<std::string_view> vNames = splitNames(header);
    for (std::size_t i = 0; i < vNames.size(); ++i)
    {
        const std::optional<Columns::Role> role = roleOf(vNames[i]);
        if (role && !columns.has(*role))
            columns.aColumn[*role] = i;
    }
    if (!columns.complete())
        return std::nullopt;
    if (columns.aColumn[Columns::X] != 0 || columns.aColumn[Columns::Y] != 1 ||
        columns.aColumn[Columns::Z] != 2)
        columns.why = "x, y, z are the columns " + std::string(vNames[columns.aColumn[Columns::X]]) + ", " +
                      std::string(vNames[columns.aColumn[Columns::Y]]) + ", " +
                      std::string(vNames[columns.aColumn[Columns::Z]]);
    return columns;
}

Columns guessColumns(const std::vector<std::vector<double>>& vRows)
{
    Columns columns;
    setThree(columns, Columns::X, 0);
    std::size_t num = vRows.empty() ? 0 : vRows[0].size();
    for (const std::vector<double>& vRow : vRows)
        num = std::min(num, vRow.size());
    if (num == 4)
        columns.aColumn[Columns::INTENSITY] = 3;
    std::size_t next = 3;
    while (next + 3 <= num)
    {
        if (!columns.has(Columns::RED) && areBytes(vRows, next))
            setThree(columns, Columns::RED, next);
        else if (!columns.has(Columns::NX) && areUnitVectors(vRows, next))
            setThree(columns, Columns::NX, next);
        else if (!columns.has(Columns::INTENSITY) && num % 3 == 1)
        {
            columns.aColumn[Columns::INTENSITY] = next;
            ++next;
            continue;
        }
        else
            break;
        next += 3;
    }
    return columns;
}

} // namespace TARN_ZEF
