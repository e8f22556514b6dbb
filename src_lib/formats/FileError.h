#ifndef ZEF_FILEERROR_H
#define ZEF_FILEERROR_H

#include "core/definitions.h"

#include <stdexcept>
#include <string>

namespace TARN_ZEF
{
// What is wrong with a file, without its name: the place, what was found there, and what to do.
class FileError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

[[noreturn]] inline void failAtLine(u64 line, const std::string& reason)
{
    throw FileError("line " + std::to_string(line) + ": " + reason);
}

[[noreturn]] inline void failAtByte(u64 offset, const std::string& reason)
{
    throw FileError("byte " + std::to_string(offset) + ": " + reason);
}

} // namespace TARN_ZEF

#endif
