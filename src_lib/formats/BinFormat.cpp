// BIN: int32 30 (or 20: no z), uint64 count, then the coordinates as doubles.
#include "formats/Format.h"

namespace TARN_ZEF
{
namespace
{
constexpr std::int32_t TYPE_3D = 30;
constexpr std::int32_t TYPE_2D = 20;
constexpr std::size_t HEAD_BYTES = 12;

[[nodiscard]] std::size_t pointBytes(std::int32_t type) noexcept
{
    return type == TYPE_3D ? 24 : type == TYPE_2D ? 16 : 0;
}

int sniffBin(std::string_view head, u64 fileBytes)
{
    if (head.size() < HEAD_BYTES)
        return 0;
    const std::size_t bytes = pointBytes(loadValue<std::int32_t>(head.data()));
    const auto num = loadValue<u64>(head.data() + 4);
    return bytes > 0 && (fileBytes - HEAD_BYTES) % bytes == 0 && (fileBytes - HEAD_BYTES) / bytes == num ? 2
                                                                                                         : 0;
}

void readBin(InputFile& file, const ReadOptions&, PointData& data)
{
    const char* p = file.take(HEAD_BYTES, "the head");
    const auto type = loadValue<std::int32_t>(p);
    const auto num = loadValue<u64>(p + 4);
    const std::size_t bytes = pointBytes(type);
    if (bytes == 0)
        failAtByte(0,
                   "30 or 20 is wanted, found " + std::to_string(type) + "; check that the file is a .bin");
    const std::size_t numThere = file.limitCount(num, bytes);
    if (numThere < num)
        failAtByte(4, "the file counts " + std::to_string(num) + " points and holds " +
                          std::to_string(numThere) + "; it was cut, get it anew");
    data.vPoints.reserve(numThere);
    for (u64 i = 0; i < num; ++i)
    {
        const char* pPoint = file.take(bytes, "a point");
        data.vPoints.emplace_back(loadValue<double>(pPoint), loadValue<double>(pPoint + 8),
                                  type == TYPE_3D ? loadValue<double>(pPoint + 16) : 0.0);
    }
}

void writeBin(OutputFile& file, const PointData& data, const WriteOptions&)
{
    file.value(TYPE_3D);
    file.value(u64{data.vPoints.size()});
    for (const Point3& point : data.vPoints)
    {
        file.value(point.x());
        file.value(point.y());
        file.value(point.z());
        file.step();
    }
}

} // namespace

const Format BIN_FORMAT = {
    .name = "BIN", .extensions = ".bin ", .sniff = sniffBin, .readPoints = readBin, .writePoints = writeBin};

} // namespace TARN_ZEF
