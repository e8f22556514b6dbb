#include "text/closeWhole.h"

#include <fstream>

namespace TARN_ZEF
{

bool closeWhole(std::ofstream& file)
{
    file.flush();
    const bool bWritten = file.is_open() && file.good();
    file.close();
    return bWritten && file.good();
}

} // namespace TARN_ZEF
