#ifndef ZEF_BENCHMARKS_SILENCE_H
#define ZEF_BENCHMARKS_SILENCE_H

#include <iostream>

namespace TARN_ZEF
{
// The library talks on standard output; a benchmark's table stands there too.
struct Silence
{
    Silence() { std::cout.setstate(std::ios::failbit); }
    ~Silence() { std::cout.clear(); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
};

} // namespace TARN_ZEF

#endif
