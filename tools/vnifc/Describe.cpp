#include "Describe.h"

#include "Commands.h"
#include "Messages.h"

#include <fmt/format.h>
#include <vnifc/version.h>

#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace vnifc::tool {

namespace {

/// Commands in no group are for builds and not for people.
std::vector<const CLI::App*> commandsOf(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

/// "--name" and "-n", of an option that is one.
std::vector<std::string> flagsOf(const CLI::Option& option) {
    std::vector<std::string> flags;
    for (const std::string& name : option.get_lnames())
        flags.push_back("--" + name);
    for (const std::string& name : option.get_snames())
        flags.push_back("-" + name);
    return flags;
}

bool takesValue(const CLI::Option& option) { return option.get_expected_max() > 0; }

/// What the value may be, where the definition lists it: the check of membership says so in braces.
std::vector<std::string> choicesOf(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const std::size_t open = type.find('{');
    const std::size_t close = type.find('}', open);
    if (open == std::string::npos || close == std::string::npos)
        return {};
    return CLI::detail::split(type.substr(open + 1, close - open - 1), ',');
}

std::string flat(std::string text) {
    for (char& c : text)
        if (c == '\n')
            c = ' ';
    return text;
}

/// A word between apostrophes, as shells read it.
std::string quoted(std::string_view text, std::string_view apostrophe) {
    std::string result = "'";
    for (const char c : text)
        c == '\'' ? result.append(apostrophe) : result.append(1, c);
    return result + '\'';
}

constexpr std::string_view kShellApostrophe = "'\\''";
constexpr std::string_view kFishApostrophe = "\\'";

std::string bashFlags(const CLI::App& command) {
    std::string words;
    for (const CLI::Option* option : command.get_options())
        for (const std::string& flag : flagsOf(*option))
            words += (words.empty() ? "" : " ") + flag;
    return words;
}

/// What follows an option that has a value: one of a list, or a file.
std::string bashValues(const CLI::App& command) {
    std::string text;
    for (const CLI::Option* option : command.get_options()) {
        const std::vector<std::string> flags = flagsOf(*option);
        if (flags.empty() || !takesValue(*option))
            continue;
        text += fmt::format("        {}.{})", command.get_name(),
                            fmt::join(flags, fmt::format("|{}.", command.get_name())));
        const std::vector<std::string> choices = choicesOf(*option);
        text += choices.empty() ? " COMPREPLY=($(compgen -f -- \"$word\"))"
                                : fmt::format(" COMPREPLY=($(compgen -W '{}' -- \"$word\"))", fmt::join(choices, " "));
        text += "; return ;;\n";
    }
    return text;
}

std::string bashCompletion(const CLI::App& app) {
    std::string names = "help";
    std::string flags;
    std::string values;
    for (const CLI::App* command : commandsOf(app)) {
        names += ' ' + command->get_name();
        flags += fmt::format("        {}) words='{}' ;;\n", command->get_name(), bashFlags(*command));
        values += bashValues(*command);
    }
    return fmt::format(R"(# Completion of vnifc for bash; made from the definitions of the commands.
_vnifc() {{
    local word=${{COMP_WORDS[COMP_CWORD]}} command=${{COMP_WORDS[1]}} words=
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        words='{} {}'
        COMPREPLY=($(compgen -W "$words" -- "$word"))
        return
    fi
    case "$command.${{COMP_WORDS[COMP_CWORD - 1]}}" in
        help.*) COMPREPLY=($(compgen -W '{}' -- "$word")); return ;;
{}    esac
    case "$command" in
{}    esac
    if [ "${{word#-}}" != "$word" ]; then
        COMPREPLY=($(compgen -W "$words" -- "$word"))
    else
        COMPREPLY=($(compgen -f -- "$word"))
    fi
}}
complete -o filenames -F _vnifc vnifc
)",
                       names, bashFlags(app), names, values, flags);
}

/// One line for _arguments: what is offered, what it is for, and what follows.
std::string zshArgument(const CLI::Option& option, const std::string& flag) {
    std::string description;
    for (const char c : flat(option.get_description())) {
        if (c == '[' || c == ']' || c == ':' || c == '\\')
            description += '\\';
        description += c;
    }
    std::string text = (option.get_items_expected_max() > 1 ? "*" : "") + flag + '[' + description + ']';
    if (!takesValue(option))
        return text;
    const std::vector<std::string> choices = choicesOf(option);
    return text + (choices.empty() ? ":value:_files" : fmt::format(":value:({})", fmt::join(choices, " ")));
}

std::string zshArguments(const CLI::App& command) {
    std::string text;
    for (const CLI::Option* option : command.get_options())
        for (const std::string& flag : flagsOf(*option))
            text += " \\\n                " + quoted(zshArgument(*option, flag), kShellApostrophe);
    return text;
}

std::string zshCompletion(const CLI::App& app) {
    std::string names;
    std::string arguments;
    for (const CLI::App* command : commandsOf(app)) {
        names +=
            "        " + quoted(command->get_name() + ':' + flat(command->get_description()), kShellApostrophe) + '\n';
        arguments += fmt::format("        {})\n            _arguments{} \\\n                '*:file:_files' ;;\n",
                                 command->get_name(), zshArguments(*command));
    }
    return fmt::format(R"(#compdef vnifc
# Completion of vnifc for zsh; made from the definitions of the commands.
_vnifc() {{
    local -a commands
    commands=(
        'help:Tell how a command is used'
{}    )
    if (( CURRENT == 2 )); then
        if [[ $words[2] == -* ]]; then
            compadd -- {}
        else
            _describe -t commands command commands
        fi
        return
    fi
    local command=$words[2]
    shift words
    (( CURRENT-- ))
    case $command in
        help) _describe -t commands command commands ;;
{}    esac
}}
_vnifc "$@"
)",
                       names, bashFlags(app), arguments);
}

std::string fishOption(const CLI::Option& option, const std::string& condition) {
    std::string text = "complete -c vnifc -n " + quoted(condition, kFishApostrophe);
    for (const std::string& name : option.get_lnames())
        text += " -l " + name;
    for (const std::string& name : option.get_snames())
        text += " -s " + name;
    if (takesValue(option)) {
        text += " -r";
        if (const std::vector<std::string> choices = choicesOf(option); !choices.empty())
            text += fmt::format(" -f -a '{}'", fmt::join(choices, " "));
    }
    return text + " -d " + quoted(flat(option.get_description()), kFishApostrophe) + '\n';
}

std::string fishOptions(const CLI::App& command, const std::string& condition) {
    std::string text;
    for (const CLI::Option* option : command.get_options())
        if (!flagsOf(*option).empty())
            text += fishOption(*option, condition);
    return text;
}

std::string fishCompletion(const CLI::App& app) {
    std::string text = "# Completion of vnifc for fish; made from the definitions of the commands.\n";
    const std::string isFirst = "__fish_use_subcommand";
    const auto offer = [&](const std::string& condition, const CLI::App& command) {
        text += fmt::format("complete -c vnifc -f -n '{}' -a {} -d {}\n", condition, command.get_name(),
                            quoted(flat(command.get_description()), kFishApostrophe));
    };
    text += fishOptions(app, isFirst);
    text += "complete -c vnifc -f -n '" + isFirst + "' -a help -d 'Tell how a command is used'\n";
    for (const CLI::App* command : commandsOf(app)) {
        offer(isFirst, *command);
        offer("__fish_seen_subcommand_from help", *command);
        text += fishOptions(*command, "__fish_seen_subcommand_from " + command->get_name());
    }
    return text;
}

/// Text for the formatter of manual pages: lines that begin with a full stop are its commands.
std::string manualText(std::string_view text) {
    std::string result;
    bool isLineStart = true;
    for (const char c : text) {
        if (isLineStart && (c == '.' || c == '\''))
            result += "\\&";
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else if (c == '\'')
            result += "\\(aq";
        else
            result += c;
        isLineStart = c == '\n';
    }
    return result;
}

std::string manualOption(const CLI::Option& option) {
    std::string name = fmt::format("{}", fmt::join(flagsOf(option), ", "));
    const std::string value = option.get_option_text();
    const std::vector<std::string> choices = choicesOf(option);
    std::string head = ".TP\n\\fB" + manualText(name.empty() ? option.get_name() : name) + "\\fR";
    if (!name.empty() && takesValue(option))
        head += " \\fI" +
                manualText(!choices.empty() ? fmt::format("{}", fmt::join(choices, "|"))
                           : !value.empty() ? value
                                            : "VALUE") +
                "\\fR";
    return head + '\n' + manualText(option.get_description()) + '\n';
}

std::string synopsis(const CLI::App& command, bool isTool) {
    std::string text = isTool ? "\\fBvnifc\\fR" : "\\fBvnifc " + manualText(command.get_name()) + "\\fR";
    text += " [\\fIOPTIONS\\fR]";
    if (isTool)
        return text + " \\fICOMMAND\\fR ...";
    for (const CLI::Option* option : command.get_options())
        if (flagsOf(*option).empty()) {
            const std::string name = "\\fI" + manualText(option->get_name()) + "\\fR";
            text += option->get_required() ? ' ' + name : " [" + name + ']';
        }
    return text;
}

std::string manualOf(const CLI::App& app, const CLI::App& command) {
    const bool isTool = &app == &command;
    const std::string name = isTool ? "vnifc" : "vnifc-" + command.get_name();
    std::string text = fmt::format(".TH \"{}\" 1 \"\" \"vnifc {}\" \"vnifc\"\n.SH NAME\n{} \\- {}\n", name, version(),
                                   manualText(name), manualText(flat(command.get_description())));
    text += ".SH SYNOPSIS\n" + synopsis(command, isTool) + "\n.SH OPTIONS\n";
    for (const CLI::Option* option : command.get_options())
        text += manualOption(*option);
    if (isTool) {
        text += ".SH COMMANDS\n";
        for (const CLI::App* each : commandsOf(app))
            text += fmt::format(".TP\n\\fBvnifc\\-{}\\fR(1)\n{}\n", manualText(each->get_name()),
                                manualText(each->get_description()));
    }
    text += ".SH NOTES\n.nf\n" + manualText(command.get_footer()) + "\n.fi\n";
    return text + (isTool ? "" : ".SH SEE ALSO\n\\fBvnifc\\fR(1)\n");
}

void writeFile(const std::filesystem::path& file, const std::string& text) {
    std::ofstream out(file, std::ios::binary);
    if (!(out << text).flush())
        throw Failure(kFileFailure, fmt::format("cannot write {}", file.string()));
}

} // namespace

void describeCommands(const CLI::App& app, const std::filesystem::path& directory) {
    std::filesystem::create_directories(directory);
    writeFile(directory / "vnifc.1", manualOf(app, app));
    for (const CLI::App* command : commandsOf(app))
        writeFile(directory / ("vnifc-" + command->get_name() + ".1"), manualOf(app, *command));
    writeFile(directory / "vnifc", bashCompletion(app));
    writeFile(directory / "_vnifc", zshCompletion(app));
    writeFile(directory / "vnifc.fish", fishCompletion(app));
}

} // namespace vnifc::tool
