// What the fuzz targets share. Each lets libFuzzer choose bytes, and traps where a promise of the library is broken.
#ifndef ZEF_FUZZING_H
#define ZEF_FUZZING_H

#include "zef.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace TARN_ZEF
{
// A broken promise: libFuzzer keeps the input.
inline void require(bool bHolds)
{
    if (!bHolds)
        __builtin_trap();
}

inline void beSilent()
{
    static const bool bDone = (setMessageReceiver([](const Message&) {}), true);
    static_cast<void>(bDone);
}

// A name of this process's own in memory where there is such a folder.
inline std::string getFileName(const char* extension)
{
    const char* const folder = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : ".";
    return std::string(folder) + "/zef_fuzz_" + std::to_string(getpid()) + extension;
}

// Numbers from bytes; zeros where they end.
class Bytes
{
public:
    Bytes(const std::uint8_t* pData_, std::size_t num_)
        : pData(pData_)
        , num(num_)
    {
    }
    [[nodiscard]] bool isAtEnd() const { return place >= num; }
    std::uint8_t take() { return isAtEnd() ? std::uint8_t{0} : pData[place++]; }
    // A small number of sixteenths, so that points meet, line up and fill cells.
    double takeCoordinate() { return (take() - 128) / 16.0; }
    std::vector<Point3> takePoints(std::size_t mostPoints)
    {
        std::vector<Point3> v;
        while (!isAtEnd() && v.size() < mostPoints)
        {
            const double x = takeCoordinate();
            const double y = takeCoordinate();
            v.emplace_back(x, y, takeCoordinate());
        }
        return v;
    }

private:
    const std::uint8_t* pData;
    std::size_t num;
    std::size_t place = 0;
};

inline void requireSound(const std::shared_ptr<Mesh>& pMesh)
{
    require(pMesh == nullptr || checkMesh(*pMesh).isSound());
}

} // namespace TARN_ZEF

#endif
