#include "Options.h"

namespace TARN_TOOL
{
std::string Options::getInputText() const
{
    const std::string first = vInputs.front() == STANDARD_STREAM ? "standard input" : vInputs.front();
    return vInputs.size() == 1 ? first : first + " and " + std::to_string(vInputs.size() - 1) + " more";
}

} // namespace TARN_TOOL
