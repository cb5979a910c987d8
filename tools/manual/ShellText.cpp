#include "tools/manual/ShellText.h"

#include <cstring>

#include "tools/manual/Completion.h"

namespace zel::manual {

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::vector<std::string> NamesBelow(const CommandText& command) {
    std::vector<std::string> names;
    for (const CommandText& entry : command.commands) names.push_back(entry.name);
    return names;
}

std::string Escaped(const std::string& text, const char* signs) {
    std::string escaped;
    for (const char c : text) {
        if (std::strchr(signs, c)) escaped += '\\';
        escaped += c;
    }
    return escaped;
}

const Completions::Source* Completions::Of(const OptionText& option) const {
    for (const std::string& name : option.names) {
        const auto found = sources.find(name);
        if (found != sources.end()) return &found->second;
    }
    const auto found = sources.find(option.word);
    return found == sources.end() ? nullptr : &found->second;
}

}  // namespace zel::manual
