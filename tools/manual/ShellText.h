// Pieces of shell scripts.
#ifndef TOOLS_MANUAL_SHELLTEXT_H
#define TOOLS_MANUAL_SHELLTEXT_H

#include <string>
#include <vector>

#include "tools/manual/CommandTree.h"

namespace zel::manual {

// Words with blanks between.
std::string Joined(const std::vector<std::string>& words);

// In single quotes, for bash and zsh.
std::string Quoted(const std::string& text);

// Of each command below: its name.
std::vector<std::string> NamesBelow(const CommandText& command);

// A text with each of `signs` behind a backslash.
std::string Escaped(const std::string& text, const char* signs);

}  // namespace zel::manual

#endif
