#ifndef ZEF_TOOLS_PLATFORM_H
#define ZEF_TOOLS_PLATFORM_H

#include <cstdio>
#include <string>
#include <vector>

// What the tool wants from the operating system where POSIX systems and Windows go different ways. What
// both have in <unistd.h> and <fcntl.h>, the descriptors of files first of all, is used directly.
// Threads: none; called from the main thread.
namespace TARN_TOOL
{
// A standard stream that the caller closed would lend its number to the next file opened: opens it on the
// device that swallows everything. False if that fails.
[[nodiscard]] bool openStandardStreams();

// Writing to a closed pipe or past the file size limit is then an error like others.
void ignoreWriteSignals();

// No translation of line ends on a standard stream that carries a file.
void setBinaryMode(std::FILE* pStream);

// The signals by which a user ends a program.
[[nodiscard]] std::vector<int> endingSignals();

void setEnvironmentVariable(const char* pName, const std::string& value);

[[nodiscard]] double peakMegabytesOfProcess();

// Whether this process may; the reason is in errno if not.
[[nodiscard]] bool mayRead(const std::string& file);
[[nodiscard]] bool mayWrite(const std::string& file);
[[nodiscard]] bool mayWriteInto(const std::string& folder);

// Creates an empty file that was not there before; with the permissions of the file like if that exists.
// False, with the reason in errno, if that fails.
[[nodiscard]] bool createFile(const std::string& name, const std::string& like);

// A second descriptor of an open file that no child process inherits, or -1 on failure.
[[nodiscard]] int duplicate(int fd);

} // namespace TARN_TOOL

#endif
