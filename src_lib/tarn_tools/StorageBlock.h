#ifndef ZEF_STORAGEBLOCK_H
#define ZEF_STORAGEBLOCK_H

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Raw memory from std::malloc on its way from one pool to the next. Memory that was in use already is mapped
// and costs no page faults, which are dear for large meshes.
class StorageBlock
{
public:
    StorageBlock() = default;
    StorageBlock(void* pMemory_, std::size_t numBytes_) noexcept
        : pMemory(pMemory_)
        , numBytes(numBytes_)
    {
    }
    [[nodiscard]] std::size_t size() const noexcept { return numBytes; } // bytes
    [[nodiscard]] void* release() noexcept
    {
        numBytes = 0;
        return pMemory.release();
    }

private:
    struct Free
    {
        void operator()(void* p) const noexcept { std::free(p); }
    };
    std::unique_ptr<void, Free> pMemory;
    std::size_t numBytes = 0;
};

// Takes out the largest block that is neither much more than wantedBytes nor a small part of them; an empty
// one if there is none.
[[nodiscard]] inline StorageBlock takeFitting(std::vector<StorageBlock>& vBlocks, std::size_t wantedBytes)
{
    StorageBlock* pBest = nullptr;
    for (StorageBlock& block : vBlocks)
        if (block.size() >= wantedBytes / 2 && block.size() <= wantedBytes + wantedBytes / 4 &&
            (pBest == nullptr || block.size() > pBest->size()))
            pBest = &block;
    return pBest != nullptr ? std::exchange(*pBest, StorageBlock()) : StorageBlock();
}

} // namespace TARN_ZEF

#endif
