// Completion of command lines by shells, made of the same definitions that the program reads them by.
#ifndef TOOLS_MANUAL_COMPLETION_H
#define TOOLS_MANUAL_COMPLETION_H

#include <map>
#include <string>
#include <vector>

#include "tools/manual/CommandTree.h"

namespace zel::manual {

// What the value of an option is completed with, beside its choices.
struct Completions {
    enum class Kind { kFile, kFolder, kWords, kAssignments };  // kAssignments: words that "=VALUE" follows
    struct Source {
        Kind kind = Kind::kFile;
        std::vector<std::string> words;
    };
    // By the option's name, in every command: "--out", "files".
    std::map<std::string, Source> sources;

    // Null when nothing is known of its values.
    const Source* Of(const OptionText& option) const;
};

std::string BashCompletion(const CommandText& program, const Completions& completions);
std::string ZshCompletion(const CommandText& program, const Completions& completions);
std::string FishCompletion(const CommandText& program, const Completions& completions);

}  // namespace zel::manual

#endif
