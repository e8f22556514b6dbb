#include "SafeOutputFile.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

#include <unistd.h>

#include "ToolError.h"
#include "platform.h"

namespace TARN_TOOL
{
namespace
{
namespace fs = std::filesystem;

// What a signal handler may read: names in plain memory, an empty one is a free slot. A slot is filled
// from its second character on, the first one last, so that a handler never sees half a name.
constexpr std::size_t MAX_NAME = 4096;
std::array<char[MAX_NAME], 368> tempNames; // the pictures of a turntable, and some more

void remember(const std::string& tempName)
{
    for (char* pSlot : tempNames)
        if (pSlot[0] == 0 && tempName.size() < MAX_NAME)
        {
            std::memcpy(pSlot + 1, tempName.c_str() + 1, tempName.size());
            std::atomic_signal_fence(std::memory_order_seq_cst);
            pSlot[0] = tempName[0];
            return;
        }
}

void forget(const std::string& tempName)
{
    for (char* pSlot : tempNames)
        if (tempName == pSlot)
            pSlot[0] = 0;
}

[[noreturn]] void refuse(const std::string& name, const std::string& reason)
{
    throw ToolError("cannot write " + name + ": " + reason);
}

std::string extensionOf(const std::string& name)
{
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos ? std::string() : name.substr(dot);
}
} // namespace

SafeOutputFile::SafeOutputFile(const std::string& name_)
    : SafeOutputFile(name_, name_)
{
}

SafeOutputFile::SafeOutputFile(const std::string& name_, const std::string& formatName)
    : name(name_)
    , target(name_)
    , extension(extensionOf(formatName))
{
    if (name == "-")
    {
        name = "standard output";
        target.clear();
        return;
    }
    std::error_code ec;
    if (fs::is_symlink(name, ec))
        target = fs::weakly_canonical(name, ec).string();
    requireWritable();
}

void SafeOutputFile::requireWritable() const
{
    std::error_code ec;
    const fs::file_status status = fs::status(target, ec);
    if (fs::exists(status) && !fs::is_regular_file(status))
        refuse(name, "it is not a regular file; give the name of a file");
    if (fs::exists(status) && !mayWrite(target))
        refuse(name, std::string(std::strerror(errno)) + "; give another name");
    const std::string folder = getFolder();
    if (!fs::is_directory(folder, ec))
        refuse(name, "there is no folder " + folder + "; make it first");
    if (!mayWriteInto(folder))
        refuse(name, "folder " + folder + ": " + std::strerror(errno) + "; write to another one");
}

SafeOutputFile::~SafeOutputFile()
{
    if (tempName.empty())
        return;
    unlink(tempName.c_str());
    forget(tempName);
}

const std::string& SafeOutputFile::create()
{
    for (int i = 0; i < 1000; ++i)
    {
        const std::string candidate = (fs::path(getFolder()) / (".zef-" + std::to_string(getpid()) + "-" +
                                                                std::to_string(i) + extension))
                                          .string();
        if (createFile(candidate, target))
        {
            tempName = candidate;
            remember(tempName);
            return tempName;
        }
        if (errno != EEXIST)
            refuse(name, std::string(std::strerror(errno)) + "; write to another folder");
    }
    refuse(name, "its folder is full of files of broken-off runs (.zef-*); remove them");
}

void SafeOutputFile::commit()
{
    if (target.empty())
        return copyToStandardOutput();
    std::error_code ec;
    fs::rename(tempName, target, ec);
    if (ec)
        refuse(name, ec.message() + "; give another name");
    forget(tempName);
    tempName.clear();
}

void SafeOutputFile::removeTempFiles() noexcept
{
    for (const char* pSlot : tempNames)
        if (pSlot[0] != 0)
            unlink(pSlot);
}

std::string SafeOutputFile::getFolder() const
{
    if (target.empty())
        return fs::temp_directory_path().string();
    const std::string folder = fs::path(target).parent_path().string();
    return folder.empty() ? "." : folder;
}

void SafeOutputFile::copyToStandardOutput()
{
    std::ifstream file(tempName, std::ios::binary);
    setBinaryMode(stdout);
    // An empty file would set the state of the stream that takes it.
    if (file.peek() != std::ifstream::traits_type::eof())
        std::cout << file.rdbuf();
    if (!std::cout.flush())
        refuse(name, "its reader has gone, or its disk is full");
}

} // namespace TARN_TOOL
