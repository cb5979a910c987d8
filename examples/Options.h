// The command line of the examples: "--name value", each with a default.
#ifndef EXAMPLES_OPTIONS_H
#define EXAMPLES_OPTIONS_H

#include <charconv>
#include <map>
#include <stdexcept>
#include <string>

class Options {
  public:
    // Throws std::runtime_error, which lists the options, for anything that is none.
    Options(int argc, char** argv, std::map<std::string, std::string> defaults) : m_Values(std::move(defaults)) {
        for (int i = 1; i < argc; i += 2) {
            const auto value = m_Values.find(argv[i]);
            if (value == m_Values.end() || i + 1 == argc) throw std::runtime_error(usage(argv[i]));
            value->second = argv[i + 1];
        }
    }

    const std::string& text(const std::string& name) const { return m_Values.at(name); }
    // A whole number that is not negative.
    int number(const std::string& name) const {
        const std::string& value = text(name);
        int result = -1;
        const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), result);
        if (error != std::errc() || end != value.data() + value.size() || result < 0) {
            throw std::runtime_error("'" + name + " " + value + "' is no whole number");
        }
        return result;
    }

  private:
    std::string usage(const std::string& wrong) const {
        std::string result = "'" + wrong + "' is not understood; options and their defaults are";
        for (const auto& [name, value] : m_Values) result += " " + name + " " + (value.empty() ? "''" : value);
        return result;
    }

    std::map<std::string, std::string> m_Values;
};

#endif
