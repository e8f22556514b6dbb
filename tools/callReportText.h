#ifndef ZEF_TOOLS_CALLREPORTTEXT_H
#define ZEF_TOOLS_CALLREPORTTEXT_H

#include <string>

#include "JsonLine.h"
#include "zef.h"

namespace TARN_TOOL
{
// What one call of the library tells of itself: some lines for people, an object for programs.
[[nodiscard]] std::string callReportText(const TARN_ZEF::CallReport& report);
[[nodiscard]] JsonLine callReportJson(const TARN_ZEF::CallReport& report);

} // namespace TARN_TOOL

#endif
