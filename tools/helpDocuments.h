#ifndef ZEF_TOOLS_HELPDOCUMENTS_H
#define ZEF_TOOLS_HELPDOCUMENTS_H

#include <string>

namespace CLI
{
class App;
}

namespace TARN_TOOL
{
// Lays the help out: examples before the options, and of each option what it takes and does.
void setHelpForm(CLI::App& app);

// What is made from the help: "man" for the manual page, "bash", "zsh" or "fish" for the completion of that shell.
[[nodiscard]] std::string makeHelpDocument(const CLI::App& app, const std::string& kind,
                                           const std::string& version);

} // namespace TARN_TOOL

#endif
