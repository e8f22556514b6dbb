#include "core/counters.h"

#include "core/definitions.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t NUM_NAME_DIGITS = 5;

struct Counters
{
    std::mutex mutex;
    std::map<std::string, int> mCounts;
};

Counters& getStore()
{
    static Counters store;
    return store;
}

std::string listCounters(const std::map<std::string, int>& mCounts)
{
    std::string text = "Benchmark: \n";
    for (const auto& [name, num] : mCounts)
        text += name + "\t" + std::to_string(num) + "\n";
    return text;
}
} // namespace

bool getCounters(const std::string& key)
{
    Counters& store = getStore();
    const std::scoped_lock lock(store.mutex);
    if (key == "GETCOUNTERS")
        printText(listCounters(store.mCounts));
    else
        ++store.mCounts[key];
    return true;
}

int incDebugCounter() noexcept
{
    static std::atomic<int> counter = 0;
    return ++counter;
}

std::string getDebugName()
{
    const std::string digits = std::to_string(incDebugCounter());
    const std::size_t numZeros = NUM_NAME_DIGITS - std::min(digits.size(), NUM_NAME_DIGITS);
    return std::string(numZeros, '0') + digits + "_";
}

} // namespace TARN_ZEF
