#include "formats/Format.h"

#include <algorithm>
#include <array>

namespace TARN_ZEF
{
namespace
{
constexpr std::array FORMATS = {&PLY_FORMAT, &PCD_FORMAT, &LAS_FORMAT, &GLB_FORMAT, &BIN_FORMAT, &STL_FORMAT,
                                &OFF_FORMAT, &OBJ_FORMAT, &PTX_FORMAT, &PTS_FORMAT, &TEXT_FORMAT};

[[nodiscard]] char toLower(char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
} // namespace

bool Format::hasExtension(std::string_view extension) const
{
    return !extension.empty() && extensions.find(std::string(extension) + " ") != std::string_view::npos;
}

std::span<const Format* const> getFormats()
{
    return FORMATS;
}

std::string getExtension(const std::string& path)
{
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos || path.find_first_of("/\\", dot) != std::string::npos)
        return {};
    std::string extension = path.substr(dot);
    std::transform(extension.begin(), extension.end(), extension.begin(), toLower);
    return extension;
}

const Format* findFormat(const std::string& path)
{
    const std::string extension = getExtension(path);
    const auto it = std::find_if(FORMATS.begin(), FORMATS.end(),
                                 [&](const Format* pFormat) { return pFormat->hasExtension(extension); });
    return it == FORMATS.end() ? nullptr : *it;
}

const Format* findFormat(std::string_view head, u64 fileBytes)
{
    const auto it = std::max_element(FORMATS.begin(), FORMATS.end(),
                                     [&](const Format* pA, const Format* pB)
                                     { return pA->sniff(head, fileBytes) < pB->sniff(head, fileBytes); });
    return (*it)->sniff(head, fileBytes) == 0 ? nullptr : *it;
}

} // namespace TARN_ZEF
