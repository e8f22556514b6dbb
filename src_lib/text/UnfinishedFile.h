#ifndef ZEF_UNFINISHEDFILE_H
#define ZEF_UNFINISHEDFILE_H

#include <filesystem>
#include <string>

namespace TARN_ZEF
{
// Removes a file that an exception leaves half written. Make it before the stream, so that it goes after it, and
// so that a cancelled call throws before the file is emptied.
//
// What is no regular file, as a device or a pipe, stays.
class UnfinishedFile
{
public:
    explicit UnfinishedFile(const std::string& name);
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

private:
    std::filesystem::path path; // made at the start: the end may come from a full memory
    int numExceptions;          // under way at the start
};

} // namespace TARN_ZEF

#endif
