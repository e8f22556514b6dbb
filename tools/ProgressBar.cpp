#include "ProgressBar.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include <unistd.h>

#include "platform.h"

namespace TARN_TOOL
{
namespace
{
constexpr int BAR_WIDTH = 30;

// ", 12 s left", at the pace so far; empty as long as that would be a guess.
std::array<char, 24> timeLeft(double elapsed, double fraction)
{
    std::array<char, 24> text{};
    if (elapsed >= 2.0 && fraction >= 0.05 && fraction < 1.0)
        static_cast<void>(std::snprintf(text.data(), text.size(), ", %.0f s left",
                                        std::min(elapsed * (1.0 - fraction) / fraction, 1e6)));
    return text;
}

void writeText(int fd, const char* pText, std::size_t num)
{
    // A terminal that has gone is no reason to fail.
    [[maybe_unused]] const auto written = write(fd, pText, num);
}
} // namespace

ProgressBar::ProgressBar()
{
    if (isatty(STDERR_FILENO))
        terminal = duplicate(STDERR_FILENO);
}

ProgressBar::~ProgressBar()
{
    clear();
    if (terminal >= 0)
        close(terminal);
}

void ProgressBar::update(const std::string& name, double fraction)
{
    if (terminal < 0)
        return;
    const int percent = static_cast<int>(std::floor(100.0 * std::clamp(fraction, 0.0, 1.0)));
    if (percent == lastPercent && name == lastName)
        return;
    if (name != lastName)
        start = std::chrono::steady_clock::now();
    lastPercent = percent;
    lastName = name;

    std::array<char, BAR_WIDTH + 1> bar{};
    std::fill_n(bar.begin(), BAR_WIDTH, '.');
    std::fill_n(bar.begin(), percent * BAR_WIDTH / 100, '#');
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    std::array<char, 120> line;
    const int num =
        std::snprintf(line.data(), line.size(), "\r[%s] %3d %%  %5.1f s%s  %.24s\x1b[K", bar.data(), percent,
                      elapsed.count(), timeLeft(elapsed.count(), fraction).data(), name.c_str());
    writeText(terminal, line.data(), static_cast<std::size_t>(num));
}

void ProgressBar::clear()
{
    if (terminal < 0 || lastPercent < 0)
        return;
    writeText(terminal, "\r\x1b[K", 4);
    lastPercent = -1;
    lastName.clear();
}

} // namespace TARN_TOOL
