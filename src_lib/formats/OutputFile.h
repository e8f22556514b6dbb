#ifndef ZEF_OUTPUTFILE_H
#define ZEF_OUTPUTFILE_H

#include "core/Progress.h"
#include "text/TextWriter.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <fstream>
#include <string>
#include <type_traits>

namespace TARN_ZEF
{
// A file that is written once from its start to its end, as text or as little-endian values.
//
// Invariant:  unless finish() went well, nothing of it stays.
// Errors:     FileError.
class OutputFile
{
public:
    OutputFile(const std::string& path_, u64 numRecords);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    [[nodiscard]] const std::string& getPath() const noexcept { return path; }
    [[nodiscard]] TextWriter& getText() noexcept { return out; }
    [[nodiscard]] std::ostream& getStream();

    template <class T>
    void value(T number)
    {
        static_assert(std::is_arithmetic_v<T>);
        char aBytes[sizeof(T)];
        store(number, aBytes);
        out.text({aBytes, sizeof(T)});
    }
    // "x y z", the fewest digits that give back the same coordinates.
    void exactPoint(const Point3& point);
    void step() { pProgress->increment(); }

    void finish();

    // As value() writes it, sizeof(T) bytes.
    template <class T>
    static void store(T number, char* pBytes) noexcept;

private:
    std::string path;
    std::ofstream stream;
    TextWriter out;
    Progress* pProgress;
    bool bKeep = false;
};

// In little-endian order on every machine.
template <class T>
void OutputFile::store(T number, char* pBytes) noexcept
{
    std::memcpy(pBytes, &number, sizeof(T));
    if constexpr (std::endian::native == std::endian::big)
        std::reverse(pBytes, pBytes + sizeof(T));
}

} // namespace TARN_ZEF

#endif
