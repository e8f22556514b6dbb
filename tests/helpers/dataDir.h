// Where the shared real-world data lies, if it is there.
#ifndef ZEF_TESTS_DATADIR_H
#define ZEF_TESTS_DATADIR_H

#include <string>

namespace TARN_ZEF
{
// The folder of real clouds and soups beside the checkout; "" if it is missing. Tests must pass without it.
std::string dataDir();

} // namespace TARN_ZEF

#endif
