#include <algorithm>

#include "tools/manual/Completion.h"
#include "tools/manual/ShellText.h"

namespace zel::manual {

namespace {

constexpr const char* kSpecial = "[]:\\";

std::string Function(const CommandText& program, const CommandText& command) {
    std::string name = "_" + program.name + (command.path.empty() ? "" : "_" + command.path);
    std::ranges::replace(name, ' ', '_');
    return name;
}

// What the words of a value come from: ":format:(tiff png)"
std::string Action(const OptionText& option, const Completions& completions) {
    std::string label = option.Name();
    label.erase(0, label.find_first_not_of('-'));
    label = ":" + label + ":";
    if (!option.choices.empty()) return label + "(" + Joined(option.choices) + ")";
    const Completions::Source* const source = completions.Of(option);
    if (!source) return label + " ";
    switch (source->kind) {
        case Completions::Kind::kFile:
            return label + "_files";
        case Completions::Kind::kFolder:
            return label + "_files -/";
        case Completions::Kind::kWords:
            return label + "(" + Joined(source->words) + ")";
        case Completions::Kind::kAssignments: {
            std::string words;
            for (const std::string& word : source->words) words += " " + word + "=";
            return label + "{compadd -S \"\" --" + words + "}";
        }
    }
    return label;
}

std::string Argument(const OptionText& option, const Completions& completions) {
    if (option.names.empty()) return Quoted((option.repeats ? "*" : "1") + Action(option, completions));
    std::string names;
    for (const std::string& name : option.names) {
        const char* const value = option.value.empty() ? "" : name.starts_with("--") ? "=" : "+";
        names += (names.empty() ? "" : ",") + name + value;
    }
    const std::string help =
        Quoted("[" + Escaped(option.help, kSpecial) + "]" + (option.value.empty() ? "" : Action(option, completions)));
    const std::string once = option.repeats ? "'*'" : Quoted("(" + Joined(option.names) + ")");
    return once + (option.names.size() > 1 ? "{" + names + "}" : names) + help;
}

std::string Arguments(const CommandText& command, const Completions& completions) {
    std::string text = "    _arguments -s";
    if (!command.commands.empty()) text += " -C";
    for (const OptionText& option : command.options) text += " \\\n        " + Argument(option, completions);
    return text;
}

std::string Body(const CommandText& program, const CommandText& command, const Completions& completions) {
    if (command.commands.empty()) return Arguments(command, completions) + "\n";
    std::string text =
        "    local curcontext=$curcontext context state state_descr line\n    typeset -A opt_args\n    local -a "
        "commands=(\n";
    std::string rows;
    for (const CommandText& entry : command.commands) {
        text += "        " + Quoted(entry.name + ":" + Escaped(entry.help, ":\\")) + "\n";
        rows += "                " + entry.name + ") " + Function(program, entry) + " ;;\n";
    }
    if (command.path.empty()) rows += "                help) _describe -t commands command commands ;;\n";
    if (command.path.empty()) text += "        'help:Show the options of a command'\n";
    text +=
        "    )\n" + Arguments(command, completions) + " \\\n        '1:command:->command' '*::argument:->argument'\n";
    return text + R"(    case $state in
        command) _describe -t commands command commands ;;
        argument)
            case $line[1] in
)" + rows + "            esac ;;\n    esac\n";
}

}  // namespace

std::string ZshCompletion(const CommandText& program, const Completions& completions) {
    std::string text = "#compdef " + program.name + "\n";
    for (const CommandText* command : AllCommands(program)) {
        text += Function(program, *command) + "() {\n" + Body(program, *command, completions) + "}\n";
    }
    // The file may be found by its name, or be read by the user's start-up file.
    const std::string name = Function(program, program);
    return text + "if [[ $funcstack[1] == " + name + " ]]; then\n    " + name + " \"$@\"\nelse\n    compdef " + name +
           " " + program.name + "\nfi\n";
}

}  // namespace zel::manual
