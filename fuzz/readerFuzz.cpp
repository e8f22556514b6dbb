// A file of one format: it is read or not, without harm, and no reader forgets what it was given before.
#include "fuzzing.h"

using namespace TARN_ZEF;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t num)
{
    beSilent();
    std::string name = getFileName(ZEF_FUZZ_EXTENSION);
    std::FILE* const pFile = std::fopen(name.c_str(), "wb");
    require(pFile != nullptr && std::fwrite(pData, 1, num, pFile) == num);
    std::fclose(pFile);
    std::vector<Point3> v = {Point3(7, 7, 7)};
    const bool bRead =
        getFileType(name) == FT_STL ? readSTL_ASCII(name.c_str(), v) : readPoints_auto(name, v);
    require(!v.empty() && v.front() == Point3(7, 7, 7));
    require(bRead || v.size() == 1);
    std::remove(name.c_str());
    return 0;
}
