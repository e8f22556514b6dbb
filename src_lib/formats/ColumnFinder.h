#ifndef ZEF_COLUMNFINDER_H
#define ZEF_COLUMNFINDER_H

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace TARN_ZEF
{
// Which column of a text holds what.
//
// Invariant:  x, y and z have one each; normals, colors: all three columns or none.
struct Columns
{
    enum Role
    {
        X,
        Y,
        Z,
        INTENSITY,
        RED,
        GREEN,
        BLUE,
        NX,
        NY,
        NZ,
        NUM_ROLES
    };
    static constexpr std::size_t NONE = static_cast<std::size_t>(-1);

    std::array<std::size_t, NUM_ROLES> aColumn{};
    std::string why; // for the user: where that was found; empty if there is nothing to tell

    Columns() { aColumn.fill(NONE); }
    [[nodiscard]] bool has(Role role) const noexcept { return aColumn[role] != NONE; }
    // Of the coordinates, and of all roles.
    [[nodiscard]] std::size_t getLeast() const noexcept;
    [[nodiscard]] std::size_t getMost() const noexcept;
    // Drops what has not all of its three columns; whether x, y and z are there.
    [[nodiscard]] bool complete() noexcept;
};

// From an option such as "x,y,z,i,r,g,b". Throws FileError.
[[nodiscard]] Columns parseColumns(std::string_view option);
// From the names in a header line; nothing if they do not tell x, y and z.
[[nodiscard]] std::optional<Columns> findColumns(std::string_view header);
// From the first rows: the first three are x, y and z; further ones whole numbers up to 255, unit vectors, or a single
// measure.
[[nodiscard]] Columns guessColumns(const std::vector<std::vector<double>>& vRows);

} // namespace TARN_ZEF

#endif
