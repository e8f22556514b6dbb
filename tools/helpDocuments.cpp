#include "helpDocuments.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <CLI/CLI.hpp>

namespace TARN_TOOL
{
namespace
{
class HelpForm : public CLI::Formatter
{
public:
    std::string make_help(const CLI::App* pApp, std::string name, CLI::AppFormatMode mode) const override
    {
        return make_description(pApp) + make_usage(pApp, name) + "\n" + make_footer(pApp) + "\n" +
               make_groups(pApp, mode);
    }
    std::string make_usage(const CLI::App*, std::string name) const override
    {
        return "Usage: " + name + " IN... OUT [OPTIONS]\n";
    }
    // Which options exclude each other is told when they meet.
    std::string make_option_opts(const CLI::Option* pOption) const override
    {
        const std::string type = typeOf(*pOption);
        return type.empty() ? "" : " " + type;
    }

    [[nodiscard]] static std::string typeOf(const CLI::Option& option)
    {
        return option.get_type_size() == 0
                   ? ""
                   : option.get_type_name().substr(0, option.get_type_name().find(':'));
    }
};

// The options that the help shows.
std::vector<const CLI::Option*> shownOptions(const CLI::App& app)
{
    return app.get_options([](const CLI::Option* p)
                           { return !p->get_group().empty() && p->nonpositional(); });
}

// "-" and "--" before them.
std::vector<std::string> namesOf(const CLI::Option& option)
{
    std::vector<std::string> vNames;
    for (const std::string& name : option.get_snames())
        vNames.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        vNames.push_back("--" + name);
    return vNames;
}

std::string replaced(std::string text, const std::string& from, const std::string& to)
{
    for (std::size_t i = text.find(from); i != std::string::npos; i = text.find(from, i + to.size()))
        text.replace(i, from.size(), to);
    return text;
}

// --- Manual page ------------------------------------------------------------------------------------------

std::string escapedForMan(const std::string& text)
{
    const std::string dashes = replaced(replaced(text, "\\", "\\e"), "-", "\\-");
    // A line must not begin as a request does.
    return replaced(dashes, "\n.", "\n\\&.");
}

std::string manOption(const CLI::Option& option)
{
    std::string names;
    for (const std::string& name : namesOf(option))
        names += (names.empty() ? "\\fB" : ", \\fB") + escapedForMan(name) + "\\fR";
    const std::string type = HelpForm::typeOf(option);
    return ".TP\n" + names + (type.empty() ? "" : " \\fI" + escapedForMan(type) + "\\fR") + "\n" +
           escapedForMan(option.get_description()) + "\n";
}

std::string manPage(const CLI::App& app, const std::string& version)
{
    std::string text =
        ".TH ZEF 1 \"\" \"" + version + "\" \"User Commands\"\n.SH NAME\nzef \\- " +
        escapedForMan(app.get_description()) +
        "\n.SH SYNOPSIS\n.B zef\n\\fIIN\\fR... \\fIOUT\\fR [\\fIOPTIONS\\fR]\n.SH DESCRIPTION\n.nf\n" +
        escapedForMan(app.get_footer()) + "\n.fi\n.SH OPTIONS\n";
    std::string group;
    for (const CLI::Option* pOption : shownOptions(app))
    {
        if (pOption->get_group() != group)
            text += ".SS " + escapedForMan(pOption->get_group()) + "\n";
        group = pOption->get_group();
        text += manOption(*pOption);
    }
    return text;
}

// --- Completion -------------------------------------------------------------------------------------------

std::string bashCompletion(const CLI::App& app)
{
    std::string names;
    std::string withValue;
    for (const CLI::Option* pOption : shownOptions(app))
        for (const std::string& name : namesOf(*pOption))
        {
            names += " " + name;
            if (!HelpForm::typeOf(*pOption).empty())
                withValue += (withValue.empty() ? "" : "|") + name;
        }
    return "# bash completion for zef\n"
           "_zef()\n{\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n"
           "    case $before in\n"
           "        --color) COMPREPLY=($(compgen -W 'auto always never' -- \"$word\")); return ;;\n"
           "        --batch) COMPREPLY=($(compgen -d -- \"$word\")); return ;;\n"
           "        --png|--png-cloud|--html) COMPREPLY=($(compgen -f -- \"$word\")); return ;;\n"
           "        " +
           withValue +
           ") return ;;\n"
           "    esac\n"
           "    case $word in\n"
           "        -*) COMPREPLY=($(compgen -W '" +
           names.substr(1) +
           "' -- \"$word\")) ;;\n"
           "        *) COMPREPLY=($(compgen -f -- \"$word\")) ;;\n"
           "    esac\n}\n"
           "complete -o filenames -F _zef zef\n";
}

// Of a text within single quotes and, for zsh, brackets.
std::string escapedForShell(std::string text)
{
    return replaced(replaced(replaced(replaced(std::move(text), "'", "'\\''"), "[", "("), "]", ")"), ":",
                    ",");
}

std::string zshCompletion(const CLI::App& app)
{
    std::string text = "#compdef zef\n_arguments \\\n";
    for (const CLI::Option* pOption : shownOptions(app))
        for (const std::string& name : namesOf(*pOption))
        {
            const std::string type = escapedForShell(HelpForm::typeOf(*pOption));
            const bool bFile = type == "FILE" || type == "DIR";
            text += "  '*" + name + "[" + escapedForShell(pOption->get_description()) + "]" +
                    (type.empty() ? "" : ":" + type + ":" + (bFile ? "_files" : "")) + "' \\\n";
        }
    return text + "  '*:file:_files'\n";
}

std::string fishCompletion(const CLI::App& app)
{
    std::string text = "# fish completion for zef\n";
    for (const CLI::Option* pOption : shownOptions(app))
    {
        text += "complete -c zef";
        for (const std::string& name : pOption->get_snames())
            text += " -s " + name;
        for (const std::string& name : pOption->get_lnames())
            text += " -l " + name;
        const std::string type = HelpForm::typeOf(*pOption);
        const bool bFile = type == "FILE" || type == "DIR";
        text += (type.empty() ? "" : bFile ? " -r" : " -x");
        // There a quote within quotes takes a backslash.
        text += " -d '" + replaced(replaced(pOption->get_description(), "\\", "\\\\"), "'", "\\'") + "'\n";
    }
    return text;
}
} // namespace

void setHelpForm(CLI::App& app)
{
    app.formatter(std::make_shared<HelpForm>());
}

std::string makeHelpDocument(const CLI::App& app, const std::string& kind, const std::string& version)
{
    if (kind == "man")
        return manPage(app, version);
    if (kind == "bash")
        return bashCompletion(app);
    return kind == "zsh" ? zshCompletion(app) : fishCompletion(app);
}

} // namespace TARN_TOOL
