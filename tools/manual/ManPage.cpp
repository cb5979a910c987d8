#include "tools/manual/ManPage.h"

#include <algorithm>
#include <string_view>

namespace zel::manual {

namespace {

// Text that stands as it is: no hyphen becomes another sign, no line becomes a request.
std::string Roff(std::string_view text) {
    std::string roff;
    for (const char c : text) {
        switch (c) {
            case '\\':
                roff += "\\e";
                break;
            case '-':
                roff += "\\-";
                break;
            case '\'':
                roff += "\\(aq";
                break;
            case '`':
                roff += "\\(ga";
                break;
            case '^':
                roff += "\\(ha";
                break;
            case '~':
                roff += "\\(ti";
                break;
            default:
                roff += c;
        }
    }
    return roff.starts_with('.') ? "\\&" + roff : roff;
}

std::string Bold(std::string_view text) { return "\\fB" + Roff(text) + "\\fR"; }
std::string Italic(std::string_view text) { return "\\fI" + Roff(text) + "\\fR"; }

std::string UpperCase(std::string text) {
    for (char& c : text) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return text;
}

std::string PageName(const CommandText& command, const ManBook& book) {
    std::string name = command.path.empty() ? book.program : book.program + "-" + command.path;
    std::ranges::replace(name, ' ', '-');
    return name;
}

std::string CommandLine(const CommandText& command, const ManBook& book) {
    return command.path.empty() ? book.program : book.program + " " + command.path;
}

std::string Synopsis(const CommandText& command, const ManBook& book) {
    std::string line = Bold(CommandLine(command, book)) + " [" + Italic("OPTIONS") + "]";
    if (!command.commands.empty()) line += " " + Italic("COMMAND") + " [" + Italic("ARGUMENTS") + "]";
    for (const OptionText& option : command.options) {
        if (!option.names.empty()) continue;
        const std::string word = Italic(option.word) + (option.repeats ? " ..." : "");
        line += option.required ? " " + word : " [" + word + "]";
    }
    return line + "\n";
}

std::string ValueText(const OptionText& option) {
    if (option.choices.empty()) return Italic(option.value);
    std::string text;
    for (const std::string& choice : option.choices) text += (text.empty() ? "" : "|") + Bold(choice);
    return text;
}

std::string OptionEntry(const OptionText& option) {
    std::string head;
    for (const std::string& name : option.names) head += (head.empty() ? "" : ", ") + Bold(name);
    if (option.names.empty()) head = Italic(option.word);
    if (!option.value.empty() && (!option.names.empty() || !option.choices.empty())) head += " " + ValueText(option);
    if (option.repeats) head += " ...";
    std::string entry = ".TP\n" + head + "\n" + Roff(option.help);
    if (!option.range.empty()) entry += " (" + Roff(option.range) + ")";
    if (!option.by_default.empty()) entry += "; default: " + Roff(option.by_default);
    return entry + "\n";
}

std::string OptionEntries(const CommandText& command) {
    std::string entries;
    for (const bool words : {true, false}) {
        for (const OptionText& option : command.options) {
            if (option.names.empty() == words) entries += OptionEntry(option);
        }
    }
    return entries;
}

struct Footer {
    std::vector<std::string> examples;
    std::vector<std::string> lines;
};

Footer ReadFooter(const std::string& text) {
    constexpr std::string_view kExample = "Example: ";
    Footer footer;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::string line = text.substr(start, end - start);
        start = end + 1;
        if (line.starts_with(kExample)) footer.examples.push_back(line.substr(kExample.size()));
        if (!line.starts_with(kExample) && !line.empty()) footer.lines.push_back(line);
    }
    return footer;
}

std::string Paragraphs(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += ".PP\n" + Roff(line) + "\n";
    return text;
}

std::string Examples(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += ".PP\n.nf\n" + Bold(line) + "\n.fi\n";
    return text;
}

// Commands of a program have pages; what is below those is told in full.
std::string Below(const CommandText& command, const ManBook& book) {
    if (command.commands.empty()) return "";
    std::string text = ".SH COMMANDS\n";
    for (const CommandText& entry : command.commands) {
        if (command.path.empty()) {
            text += ".TP\n" + Bold(PageName(entry, book)) + "(1)\n" + Roff(entry.help) + "\n";
            continue;
        }
        const Footer footer = ReadFooter(entry.footer);
        text += ".SS " + Roff(entry.name) + "\n" + Synopsis(entry, book) + ".PP\n" + Roff(entry.help) + ".\n" +
                Paragraphs(footer.lines) + OptionEntries(entry) + Examples(footer.examples);
    }
    return text;
}

std::string SeeAlso(const CommandText& command, const ManBook& book) {
    std::vector<std::string> pages = book.see_also;
    if (!command.path.empty()) pages.insert(pages.begin(), book.program + "(1)");
    std::string text;
    for (const std::string& page : pages) {
        const std::size_t section = page.find('(');
        text += (text.empty() ? ".SH SEE ALSO\n" : ",\n") + Bold(page.substr(0, section)) + page.substr(section);
    }
    return text.empty() ? "" : text + "\n";
}

}  // namespace

std::string ManFileName(const CommandText& command, const ManBook& book) { return PageName(command, book) + ".1"; }

std::string ManPage(const CommandText& command, const ManBook& book, const std::vector<ManSection>& more) {
    const std::string name = PageName(command, book);
    const Footer footer = ReadFooter(command.footer);
    std::string help = command.help;
    if (help.ends_with('.')) help.pop_back();
    std::string page =
        ".TH " + Roff(UpperCase(name)) + " 1 \"\" \"ZEL Camera SDK " + Roff(book.version) + "\" \"User Commands\"\n";
    page += ".nh\n.ad l\n.SH NAME\n" + Roff(name) + " \\- " + Roff(help) + "\n";
    page += ".SH SYNOPSIS\n" + Synopsis(command, book);
    page += ".SH DESCRIPTION\n" + Roff(help) + ".\n";
    if (!command.path.empty()) page += Paragraphs(footer.lines);
    page += Below(command, book);
    page += ".SH OPTIONS\n" + OptionEntries(command);
    for (const ManSection& section : more) {
        page += ".SH " + Roff(UpperCase(section.title)) + "\n";
        for (const auto& [term, meaning] : section.terms) page += ".TP\n" + Bold(term) + "\n" + Roff(meaning) + "\n";
    }
    if (!footer.examples.empty()) page += ".SH EXAMPLES\n" + Examples(footer.examples);
    return page + SeeAlso(command, book);
}

}  // namespace zel::manual
