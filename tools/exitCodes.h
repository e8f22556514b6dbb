#ifndef ZEF_TOOLS_EXITCODES_H
#define ZEF_TOOLS_EXITCODES_H

namespace TARN_TOOL
{
// The statuses that the tool ends with. After a signal it is Interruption::getStatus().
constexpr int EXIT_UNUSABLE = 1; // input or result
constexpr int EXIT_USAGE = 2;
constexpr int EXIT_UNSOUND = 3; // --check has found faults

} // namespace TARN_TOOL

#endif
