#ifndef ZEF_APPENDNEW_H
#define ZEF_APPENDNEW_H

#include <memory>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Makes an object that the owner of v owns from then on. Nothing is lost if there is no room for it in v.
template <typename T, typename... Args>
T* appendNew(std::vector<T*>& v, Args&&... args)
{
    auto pNew = std::make_unique<T>(std::forward<Args>(args)...);
    v.push_back(pNew.get());
    return pNew.release();
}

} // namespace TARN_ZEF

#endif
