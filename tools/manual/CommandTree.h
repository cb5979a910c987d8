// A program's command line as its definitions give it, for texts that are made of it: manual pages, completions.
#ifndef TOOLS_MANUAL_COMMANDTREE_H
#define TOOLS_MANUAL_COMMANDTREE_H

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace zel::manual {

struct OptionText {
    std::vector<std::string> names;  // "-f", "--format"; empty for a word without a name
    std::string word;                // what it is called then
    std::string value;               // "TEXT", "INT"; empty for a flag
    std::string range;               // "1 to 1000000", or empty
    std::vector<std::string> choices;
    std::string by_default;
    std::string help;
    bool required = false;
    bool repeats = false;

    // The long name where there is one, else the short one or the word.
    const std::string& Name() const;
};

struct CommandText {
    std::string name;  // without the names above it
    std::string path;  // with them and without the program's: "calibrate show"; empty for the program
    std::string help;
    std::string footer;
    std::vector<OptionText> options;
    std::vector<CommandText> commands;
};

// What is hidden from the help is left out.
CommandText ReadCommand(const CLI::App& app);

// The command and all below it, in order.
std::vector<const CommandText*> AllCommands(const CommandText& top);

}  // namespace zel::manual

#endif
