#include "tools/manual/Completion.h"
#include "tools/manual/ShellText.h"

namespace zel::manual {

namespace {

std::string Function(const CommandText& program) { return "_" + program.name; }

// How the words of an option's value, or of a word without a name, are offered.
std::string Offer(const OptionText& option, const Completions& completions, const std::string& function) {
    if (!option.choices.empty()) return function + "_offer " + Quoted(Joined(option.choices));
    const Completions::Source* const source = completions.Of(option);
    if (!source) return ":";
    switch (source->kind) {
        case Completions::Kind::kFile:
            return function + "_offer_files -f";
        case Completions::Kind::kFolder:
            return function + "_offer_files -d";
        case Completions::Kind::kWords:
            return function + "_offer " + Quoted(Joined(source->words));
        case Completions::Kind::kAssignments: {
            std::string words;
            for (const std::string& word : source->words) words += word + "= ";
            return function + "_offer " + Quoted(words) + "; compopt -o nospace 2>/dev/null";
        }
    }
    return ":";
}

// The patterns that an option is met as: 'capture:-f'|'capture:--format'
std::string Patterns(const CommandText& command, const OptionText& option) {
    std::string patterns;
    for (const std::string& name : option.names) {
        patterns += (patterns.empty() ? "" : "|") + Quoted(command.path + ":" + name);
    }
    return patterns;
}

std::string CommandSteps(const CommandText& program) {
    std::string steps;
    for (const CommandText* command : AllCommands(program)) {
        for (const CommandText& entry : command->commands) {
            steps +=
                "            " + Quoted(command->path + "/" + entry.name) + ") path=" + Quoted(entry.path) + " ;;\n";
        }
    }
    return steps;
}

std::string Values(const CommandText& program, const Completions& completions) {
    std::string rows;
    for (const CommandText* command : AllCommands(program)) {
        for (const OptionText& option : command->options) {
            if (option.names.empty() || option.value.empty()) continue;
            rows += "        " + Patterns(*command, option) + ") " + Offer(option, completions, Function(program)) +
                    "; return ;;\n";
        }
    }
    return rows;
}

std::string OptionNames(const CommandText& command) {
    std::vector<std::string> names;
    for (const OptionText& option : command.options)
        names.insert(names.end(), option.names.begin(), option.names.end());
    return Joined(names);
}

std::string WordsOf(const CommandText& command, const CommandText& program, const Completions& completions) {
    if (!command.commands.empty()) {
        const std::string help = command.path.empty() ? " help" : "";
        return Function(program) + "_offer " + Quoted(Joined(NamesBelow(command)) + help);
    }
    for (const OptionText& option : command.options) {
        if (option.names.empty()) return Offer(option, completions, Function(program));
    }
    return ":";
}

std::string Commands(const CommandText& program, const Completions& completions) {
    std::string rows;
    for (const CommandText* command : AllCommands(program)) {
        rows += "        " + Quoted(command->path) + ") if [[ $cur == -* ]]; then " + Function(program) + "_offer " +
                Quoted(OptionNames(*command)) + "; else " + WordsOf(*command, program, completions) + "; fi ;;\n";
    }
    return rows;
}

}  // namespace

std::string BashCompletion(const CommandText& program, const Completions& completions) {
    const std::string name = Function(program);
    return "# bash completion for " + program.name + "\n" + name +
           "_offer() { mapfile -t COMPREPLY < <(compgen -W \"$1\" -- \"$cur\"); }\n" + name +
           "_offer_files() { compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen \"$1\" -- \"$cur\"); "
           "}\n" +
           name + R"(() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} path= word
    COMPREPLY=()
    # The shell takes an equals sign for a word. Behind one that is not an option's stands any value.
    if [[ $prev == = ]]; then
        prev=${COMP_WORDS[COMP_CWORD-2]}
        [[ $prev == -* ]] || return
    elif [[ $cur == = ]]; then
        cur=
        [[ $prev == -* ]] || return
    fi
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case "$path/$word" in
)" + CommandSteps(program) +
           R"(        esac
    done
    case "$path:$prev" in
)" + Values(program, completions) +
           R"(    esac
    case "$path" in
)" + Commands(program, completions) +
           "    esac\n}\ncomplete -F " + name + " " + program.name + "\n";
}

}  // namespace zel::manual
