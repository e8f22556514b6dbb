#ifndef ZEF_SOURCELOCATION_H
#define ZEF_SOURCELOCATION_H

#include <source_location>

namespace TARN_ZEF
{
#ifdef __cpp_lib_source_location
using SourceLocation = std::source_location;
#else
// Stands in where the header is there but empty, as for clang 14 with the standard library of g++. Tells the bare
// name of a function instead of its signature.
class SourceLocation
{
public:
    // To be called as a default argument: it then names the place of the call.
    static constexpr SourceLocation current(const char* pFile = __builtin_FILE(),
                                            const char* pFunction = __builtin_FUNCTION(),
                                            unsigned line = __builtin_LINE()) noexcept
    {
        return SourceLocation(pFile, pFunction, line);
    }

    [[nodiscard]] constexpr const char* file_name() const noexcept { return pFile; }
    [[nodiscard]] constexpr const char* function_name() const noexcept { return pFunction; }
    [[nodiscard]] constexpr unsigned line() const noexcept { return lineNumber; }

private:
    constexpr SourceLocation(const char* pFile_, const char* pFunction_, unsigned line_) noexcept
        : pFile(pFile_)
        , pFunction(pFunction_)
        , lineNumber(line_)
    {
    }

    const char* pFile;
    const char* pFunction;
    unsigned lineNumber;
};
#endif

} // namespace TARN_ZEF

#endif
