#include "tools/manual/Completion.h"
#include "tools/manual/ShellText.h"

namespace zel::manual {

namespace {

std::string FishQuoted(const std::string& text) { return "'" + Escaped(text, "'\\") + "'"; }

std::string Values(const OptionText& option, const Completions& completions) {
    if (!option.choices.empty()) return " -x -a " + FishQuoted(Joined(option.choices));
    const Completions::Source* const source = completions.Of(option);
    if (!source) return " -x";
    switch (source->kind) {
        case Completions::Kind::kFile:
            return " -r -F";
        case Completions::Kind::kFolder:
            return " -x -a '(__fish_complete_directories)'";
        case Completions::Kind::kWords:
            return " -x -a " + FishQuoted(Joined(source->words));
        case Completions::Kind::kAssignments: {
            std::string words;
            for (const std::string& word : source->words) words += word + "= ";
            return " -x -a " + FishQuoted(words);
        }
    }
    return "";
}

std::string Names(const OptionText& option) {
    std::string text;
    for (const std::string& name : option.names) {
        text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    return text;
}

}  // namespace

std::string FishCompletion(const CommandText& program, const Completions& completions) {
    const std::string at = "__" + program.name + "_at";
    std::string paths, rows;
    for (const CommandText* command : AllCommands(program)) {
        const std::string begin = "complete -c " + program.name + " -n " + FishQuoted(at + " " + command->path);
        if (!command->path.empty()) paths += " " + FishQuoted(command->path);
        for (const CommandText& entry : command->commands) {
            rows += begin + " -a " + entry.name + " -d " + FishQuoted(entry.help) + "\n";
        }
        if (command->path.empty()) rows += begin + " -a help -d 'Show the options of a command'\n";
        for (const OptionText& option : command->options) {
            rows += begin + Names(option) + (option.value.empty() ? "" : Values(option, completions)) + " -d " +
                    FishQuoted(option.help) + "\n";
        }
    }
    return "# fish completion for " + program.name + "\n# Whether the words so far lead to this command.\nfunction " +
           at +
           R"(
    set -l path
    for word in (commandline -opc)[2..-1]
        set -l next (string trim -- "$path $word")
        contains -- "$next")" +
           paths + R"(
        and set path $next
    end
    test "$path" = "$argv"
end
complete -c )" +
           program.name + " -f\n" + rows;
}

}  // namespace zel::manual
