#include "OutputCapture.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include <fcntl.h>
#include <unistd.h>

namespace TARN_TOOL
{
namespace
{
void flushAll()
{
    std::cout.flush();
    std::cerr.flush();
    std::fflush(stdout);
    std::fflush(stderr);
}

// An open file that no folder shows; -1 if none can be made.
int openHoldFile()
{
    const char* pFolder = std::getenv("TMPDIR");
    std::string name = std::string(pFolder && *pFolder ? pFolder : "/tmp") + "/zef-messages-XXXXXX";
    const int fd = mkostemp(name.data(), O_CLOEXEC);
    if (fd >= 0)
        unlink(name.c_str());
    return fd;
}

// Makes fd mean target and returns what it meant before; -1 if that failed and fd is unchanged.
int redirect(int fd, int target)
{
    const int saved = fcntl(fd, F_DUPFD_CLOEXEC, 3);
    if (saved >= 0 && dup2(target, fd) < 0)
    {
        close(saved);
        return -1;
    }
    return saved;
}

void putBack(int fd, int& saved)
{
    if (saved < 0)
        return;
    dup2(saved, fd);
    close(saved);
    saved = -1;
}
} // namespace

OutputCapture::OutputCapture(Mode mode_)
    : mode(mode_)
{
    if (mode == Mode::PASS)
        return;
    flushAll();
    if (mode == Mode::TO_ERROR_STREAM)
    {
        savedOut = redirect(STDOUT_FILENO, STDERR_FILENO);
        return;
    }
    holdFile = openHoldFile();
    // Without a temporary file the messages are lost rather than mixed into the output.
    const int target = holdFile >= 0 ? holdFile : open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (target < 0)
        return;
    savedOut = redirect(STDOUT_FILENO, target);
    savedErr = redirect(STDERR_FILENO, target);
    if (holdFile < 0)
        close(target);
}

OutputCapture::~OutputCapture()
{
    restore();
    if (holdFile >= 0)
        close(holdFile);
}

std::string OutputCapture::finish()
{
    restore();
    std::string held;
    if (holdFile < 0)
        return held;
    lseek(holdFile, 0, SEEK_SET);
    std::array<char, 4096> buffer;
    ssize_t num = 0;
    while ((num = read(holdFile, buffer.data(), buffer.size())) > 0)
        held.append(buffer.data(), static_cast<std::size_t>(num));
    close(holdFile);
    holdFile = -1;
    return held;
}

void OutputCapture::restore()
{
    if (savedOut < 0 && savedErr < 0)
        return;
    flushAll();
    putBack(STDOUT_FILENO, savedOut);
    putBack(STDERR_FILENO, savedErr);
    // A full temporary folder must not spoil the tool's own output.
    std::cout.clear();
    std::cerr.clear();
}

} // namespace TARN_TOOL
