#include "writePng.h"

namespace TARN_TOOL
{
bool canWritePng()
{
    return false;
}

std::string writePng(const std::string&, int, int, const std::vector<std::uint8_t>&)
{
    return "this build draws no pictures";
}

} // namespace TARN_TOOL
