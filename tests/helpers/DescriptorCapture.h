#ifndef ZEF_TESTS_DESCRIPTORCAPTURE_H
#define ZEF_TESTS_DESCRIPTORCAPTURE_H

#include "helpers/TempFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <string>

namespace TARN_ZEF
{
// Catches every byte that the process writes to standard output or standard error, by whatever way, while it
// lives.
class DescriptorCapture
{
public:
    DescriptorCapture() { turn(true); }
    ~DescriptorCapture() { turn(false); }
    DescriptorCapture(const DescriptorCapture&) = delete;
    DescriptorCapture& operator=(const DescriptorCapture&) = delete;

    [[nodiscard]] std::string getOut() const { return read(out); }
    [[nodiscard]] std::string getErr() const { return read(err); }

private:
    static void flush()
    {
        std::cout.flush();
        std::fflush(stdout);
        std::fflush(stderr);
    }
    [[nodiscard]] static std::string read(const TempFile& file)
    {
        flush();
        return file.read();
    }
    static void turnOne(int fd, const TempFile& file, int& saved, bool bAside)
    {
        if (bAside)
            saved = dup(fd);
        const int target = bAside ? open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600) : saved;
        dup2(target, fd);
        close(target);
    }
    void turn(bool bAside)
    {
        flush();
        turnOne(STDOUT_FILENO, out, savedOut, bAside);
        turnOne(STDERR_FILENO, err, savedErr, bAside);
    }

    TempFile out{".out"};
    TempFile err{".err"};
    int savedOut = -1;
    int savedErr = -1;
};

} // namespace TARN_ZEF

#endif
