#ifndef ZEF_GUARDEDCALL_H
#define ZEF_GUARDEDCALL_H

#include <functional>
#include <string>

namespace TARN_ZEF
{
// One public call that reads or writes a file: opens its scope and its progress, and throws a FileError on as a
// ZefBadFile with the name of the file.
void guardedCall(const char* progressName, const std::string& path, const std::function<void()>& work);

} // namespace TARN_ZEF

#endif
