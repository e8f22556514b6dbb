#ifndef ZEF_TOOLS_PROGRESSBAR_H
#define ZEF_TOOLS_PROGRESSBAR_H

#include "ProgressBase.h"

#include <chrono>
#include <string>

namespace TARN_TOOL
{
// Draws the progress of library calls as one line on the error stream.
//
// Ownership:  keeps its own descriptor of the terminal, so that it still draws while the standard streams
//             are held back.
// Threads:    called by the library on the thread that runs the call.
class ProgressBar : public TARN_ZEF::ProgressBase
{
public:
    // Nothing is ever drawn if the error stream is no terminal.
    ProgressBar();
    ~ProgressBar() override;
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void update(const std::string& name, double fraction) override;

    // Takes the line off the terminal.
    void clear();

private:
    int terminal = -1; // -1 if there is none
    int lastPercent = -1;
    std::string lastName;
    std::chrono::steady_clock::time_point start;
};

} // namespace TARN_TOOL

#endif
