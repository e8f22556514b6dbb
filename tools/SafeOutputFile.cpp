#include "SafeOutputFile.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
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
std::array<char[MAX_NAME], 4> tempNames;

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

extern "C" void removeTempFiles(int signal)
{
    for (const char* pSlot : tempNames)
        if (pSlot[0] != 0)
            unlink(pSlot);
    std::signal(signal, SIG_DFL);
    raise(signal);
}

[[noreturn]] void refuse(const std::string& name, const std::string& reason)
{
    throw ToolError("cannot write " + name + ": " + reason);
}

std::string folderOf(const std::string& target)
{
    const std::string folder = fs::path(target).parent_path().string();
    return folder.empty() ? "." : folder;
}

std::string extensionOf(const std::string& name)
{
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos ? std::string() : name.substr(dot);
}
} // namespace

SafeOutputFile::SafeOutputFile(const std::string& name_)
    : name(name_)
    , target(name_)
{
    std::error_code ec;
    if (fs::is_symlink(name, ec))
        target = fs::weakly_canonical(name, ec).string();
    const fs::file_status status = fs::status(target, ec);
    if (fs::exists(status) && !fs::is_regular_file(status))
        refuse(name, "it is not a regular file; give the name of a file");
    if (fs::exists(status) && !mayWrite(target))
        refuse(name, std::string(std::strerror(errno)) + "; give another name");
    const std::string folder = folderOf(target);
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
        const std::string candidate =
            (fs::path(folderOf(target)) /
             (".zef-" + std::to_string(getpid()) + "-" + std::to_string(i) + extensionOf(name)))
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
    std::error_code ec;
    fs::rename(tempName, target, ec);
    if (ec)
        refuse(name, ec.message() + "; give another name");
    forget(tempName);
    tempName.clear();
}

void SafeOutputFile::installSignalHandlers()
{
    for (const int signal : endingSignals())
        if (std::signal(signal, removeTempFiles) == SIG_IGN)
            std::signal(signal, SIG_IGN);
}

} // namespace TARN_TOOL
