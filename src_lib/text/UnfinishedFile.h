#ifndef ZEF_UNFINISHEDFILE_H
#define ZEF_UNFINISHEDFILE_H

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
    explicit UnfinishedFile(std::string name_);
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

private:
    std::string name;
    int numExceptions; // under way at the start
};

} // namespace TARN_ZEF

#endif
