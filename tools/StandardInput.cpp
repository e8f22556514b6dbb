#include "StandardInput.h"

#include <array>
#include <cstdio>
#include <fstream>

#include "ToolError.h"
#include "platform.h"

namespace TARN_TOOL
{
namespace
{
constexpr std::size_t BLOCK = std::size_t{1} << 16;
}

StandardInput::StandardInput(const std::string& format)
    : file("-", "stdin." + format)
    , fileName(file.create())
{
    setBinaryMode(stdin);
    std::ofstream copy(fileName, std::ios::binary);
    std::array<char, BLOCK> block;
    while (const std::size_t num = std::fread(block.data(), 1, block.size(), stdin))
        copy.write(block.data(), static_cast<std::streamsize>(num));
    if (std::ferror(stdin) != 0)
        throw ToolError("cannot read standard input");
    if (!copy.flush())
        throw ToolError("cannot keep standard input in a temporary file; is the disk full?");
}

} // namespace TARN_TOOL
