// Where the shared real-world data lies, if it is there.
#ifndef ZEF_TESTS_DATADIR_H
#define ZEF_TESTS_DATADIR_H

#include <filesystem>
#include <string>

namespace TARN_ZEF
{
// The folder of real clouds and soups beside the checkout; "" if it is missing. Tests must pass without it.
inline std::string dataDir()
{
    const std::filesystem::path dir = std::filesystem::path(ZEF_SOURCE_DIR) / ".." / "shared" / "data";
    std::error_code ec;
    return std::filesystem::is_directory(dir, ec) ? dir.lexically_normal().string() : std::string();
}

} // namespace TARN_ZEF

#endif
