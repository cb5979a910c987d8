#include "tools/manual/CommandTree.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace zel::manual {

namespace {

std::vector<std::string> Split(const std::string& list) {
    std::vector<std::string> words;
    for (std::size_t start = 0; start < list.size();) {
        const std::size_t end = std::min(list.find(',', start), list.size());
        words.push_back(list.substr(start, end - start));
        start = end + 1;
    }
    return words;
}

// "INT:INT in [1 - 1000]" and "FLOAT:0.001 to 86400" have a range, "TEXT:{a,b}" choices.
void ReadType(const std::string& type, OptionText& text) {
    const std::size_t colon = type.find(':');
    text.value = type.substr(0, colon);
    if (colon == std::string::npos) return;
    const std::string rest = type.substr(colon + 1);
    const std::size_t open = rest.find('{'), in = rest.find(" in [");
    if (open != std::string::npos) {
        text.choices = Split(rest.substr(open + 1, rest.find('}', open) - open - 1));
    } else if (in != std::string::npos) {
        text.range = rest.substr(in + 5, rest.size() - in - 6);
        const std::size_t dash = text.range.find(" - ");
        if (dash != std::string::npos) text.range.replace(dash, 3, " to ");
    } else {
        text.range = rest;
    }
}

OptionText ReadOption(const CLI::Option& option) {
    OptionText text;
    for (const std::string& name : option.get_snames()) text.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) text.names.push_back("--" + name);
    if (text.names.empty()) text.word = option.get_name(true);
    if (option.get_items_expected_max() > 0) ReadType(option.get_type_name(), text);
    text.by_default = option.get_default_str();
    text.help = option.get_description();
    text.required = option.get_required();
    text.repeats = option.get_items_expected_max() > 1;
    return text;
}

CommandText ReadBelow(const CLI::App& app, const std::string& path) {
    CommandText text;
    text.name = app.get_name();
    text.path = path;
    text.help = app.get_description();
    text.footer = app.get_footer();
    for (const CLI::Option* option : app.get_options()) {
        if (!option->get_group().empty()) text.options.push_back(ReadOption(*option));
    }
    for (const CLI::App* entry : app.get_subcommands({})) {
        const std::string below = path.empty() ? entry->get_name() : path + " " + entry->get_name();
        if (!entry->get_group().empty()) text.commands.push_back(ReadBelow(*entry, below));
    }
    return text;
}

void Collect(const CommandText& top, std::vector<const CommandText*>& all) {
    all.push_back(&top);
    for (const CommandText& command : top.commands) Collect(command, all);
}

}  // namespace

const std::string& OptionText::Name() const { return names.empty() ? word : names.back(); }

CommandText ReadCommand(const CLI::App& app) { return ReadBelow(app, ""); }

std::vector<const CommandText*> AllCommands(const CommandText& top) {
    std::vector<const CommandText*> all;
    Collect(top, all);
    return all;
}

}  // namespace zel::manual
