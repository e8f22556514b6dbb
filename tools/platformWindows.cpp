#include "platform.h"

#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>
// After windows.h, which it needs.
#include <psapi.h>

namespace TARN_TOOL
{
namespace
{
// The modes of _access; that a file may be executed cannot be asked.
constexpr int MODE_WRITE = 2;
constexpr int MODE_READ = 4;
} // namespace

// The system opens the standard streams of every process.
bool openStandardStreams()
{
    return true;
}

// There are no such signals.
void ignoreWriteSignals() {}

void setBinaryMode(std::FILE* pStream)
{
    _setmode(_fileno(pStream), _O_BINARY);
}

std::vector<int> endingSignals()
{
    return {SIGINT, SIGTERM};
}

void setEnvironmentVariable(const char* pName, const std::string& value)
{
    _putenv_s(pName, value.c_str());
}

double peakMegabytesOfProcess()
{
    PROCESS_MEMORY_COUNTERS counters;
    if (!GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters))
        return 0.0;
    return static_cast<double>(counters.PeakWorkingSetSize) / (1024.0 * 1024.0);
}

bool mayRead(const std::string& file)
{
    return _access(file.c_str(), MODE_READ) == 0;
}

bool mayWrite(const std::string& file)
{
    return _access(file.c_str(), MODE_WRITE) == 0;
}

bool mayWriteInto(const std::string& folder)
{
    return _access(folder.c_str(), MODE_WRITE) == 0;
}

// A new file inherits its permissions from the folder.
bool createFile(const std::string& name, const std::string&)
{
    const int fd = _open(name.c_str(), _O_CREAT | _O_EXCL | _O_WRONLY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
    if (fd < 0)
        return false;
    _close(fd);
    return true;
}

// A descriptor made by _dup is inherited, but the tool starts no other program.
int duplicate(int fd)
{
    return _dup(fd);
}

} // namespace TARN_TOOL
