#include "platform.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace TARN_TOOL
{
bool openStandardStreams()
{
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd)
        if (fcntl(fd, F_GETFD) == -1)
            if (open("/dev/null", fd == STDIN_FILENO ? O_RDONLY : O_WRONLY) != fd)
                return false;
    return true;
}

void ignoreWriteSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

// There is no other.
void setBinaryMode(std::FILE*) {}

std::vector<int> endingSignals()
{
    return {SIGINT, SIGTERM, SIGHUP};
}

void setEnvironmentVariable(const char* pName, const std::string& value)
{
    setenv(pName, value.c_str(), 1);
}

double peakMegabytesOfProcess()
{
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

bool mayRead(const std::string& file)
{
    return access(file.c_str(), R_OK) == 0;
}

bool mayWrite(const std::string& file)
{
    return access(file.c_str(), W_OK) == 0;
}

bool mayWriteInto(const std::string& folder)
{
    return access(folder.c_str(), W_OK | X_OK) == 0;
}

bool createFile(const std::string& name, const std::string& like)
{
    const int fd = open(name.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
    if (fd < 0)
        return false;
    // Where the system forbids it, the usual permissions of a new file are as good.
    struct stat old;
    if (stat(like.c_str(), &old) == 0 && fchmod(fd, old.st_mode & 07777) != 0)
        errno = 0;
    close(fd);
    return true;
}

int duplicate(int fd)
{
    return fcntl(fd, F_DUPFD_CLOEXEC, 3);
}

} // namespace TARN_TOOL
