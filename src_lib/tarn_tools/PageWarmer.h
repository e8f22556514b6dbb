#ifndef ZEF_TARN_TOOLS_PAGEWARMER_H
#define ZEF_TARN_TOOLS_PAGEWARMER_H

#include "parallel/JobGroup.h"

#include <cstddef>

namespace TARN_ZEF
{
// Has the pages of a fresh block of memory mapped by the workers of the pool, a few steps ahead of a caller that
// fills the block from front to back.
//
// The first touch of a page costs a trap and the zeroing of the page, which adds up to a large part of the time
// of a serial loop that fills gigabytes, while the other cores have nothing to do. The contents of the memory do
// not change, and what was not mapped in time is mapped at its use as always.
//
// Ownership:  none; the block must live until finish() or the end of the warmer.
// Threads:    one caller.
// Cancelling: never ends a job, as blocks are asked for within steps that must not be left half done.
// Cost:       a job for each 4 MB; nothing with one thread, inside a job, for small blocks, and where the system
//             has no call for it. Memory in use grows by at most 20 MB before its time.
class PageWarmer
{
public:
    // Turns to a block. What is under way for the last one is waited for.
    void begin(void* pMemory, std::size_t numBytes_);
    // How many bytes from the start of the block the caller may fill before it asks again: more at each call,
    // in the end the whole block. Lets the workers go ahead of that.
    [[nodiscard]] std::size_t advance();
    void finish(); // waits for what is under way

private:
    JobGroup jobs;
    char* pBlock = nullptr;
    std::size_t numBytes = 0;
    std::size_t released = 0; // bytes that the caller was allowed to fill
    std::size_t ordered = 0;  // bytes that jobs were made for
};

} // namespace TARN_ZEF

#endif
