#include "judge/BoxTree.h"

#include "parallel/parallelFor.h"

#include <algorithm>
#include <utility>

namespace TARN_ZEF
{
void FloatBox::include(const FloatBox& other)
{
    for (std::size_t i = 0; i < 3; ++i)
    {
        low[i] = std::min(low[i], other.low[i]);
        high[i] = std::max(high[i], other.high[i]);
    }
}

BoxTree::BoxTree(std::vector<FloatBox> vBoxes)
{
    if (vBoxes.empty())
        return;
    vLevels.push_back(std::move(vBoxes));
    do
    {
        const std::vector<FloatBox>& vBelow = vLevels.back();
        std::vector<FloatBox> vLevel((vBelow.size() + WIDTH - 1) / WIDTH);
        parallelFor(vLevel.size(), 1000,
                    [&](std::size_t from, std::size_t to)
                    {
                        for (std::size_t i = from; i < to; ++i)
                        {
                            vLevel[i] = vBelow[i * WIDTH];
                            for (std::size_t k = i * WIDTH + 1; k < getEnd(i, vBelow); ++k)
                                vLevel[i].include(vBelow[k]);
                        }
                    });
        vLevels.push_back(std::move(vLevel));
    } while (vLevels.back().size() > 1);
}

std::size_t BoxTree::getEnd(std::size_t index, const std::vector<FloatBox>& vBelow)
{
    return std::min((index + 1) * WIDTH, vBelow.size());
}

} // namespace TARN_ZEF
