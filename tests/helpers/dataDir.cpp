#include "helpers/dataDir.h"

#include <filesystem>

namespace TARN_ZEF
{
std::string dataDir()
{
    const std::filesystem::path dir = std::filesystem::path(ZEF_SOURCE_DIR) / ".." / "shared" / "data";
    std::error_code ec;
    return std::filesystem::is_directory(dir, ec) ? dir.lexically_normal().string() : std::string();
}

} // namespace TARN_ZEF
