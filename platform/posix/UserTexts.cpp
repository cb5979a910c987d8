#include "platform/UserTexts.h"

#include <stdlib.h>
#include <unistd.h>

namespace zel::platform {

std::vector<std::string> Arguments(int argc, const char* const* argv) { return {argv, argv + argc}; }

std::string EnvironmentVariable(const char* name) { return Utf8FromSystem(getenv(name)); }

void SetEnvironment(const char* name, const char* value) { value&&* value ? setenv(name, value, 1) : unsetenv(name); }

std::vector<std::string> EnvironmentVariables(const std::string& beginning) {
    std::vector<std::string> names;
    for (char** entry = environ; entry && *entry; ++entry) {
        const std::string text = *entry;
        if (text.starts_with(beginning)) names.push_back(text.substr(0, text.find('=')));
    }
    return names;
}

std::string Utf8FromSystem(const char* text) { return text ? text : ""; }
std::string SystemPath(const std::string& utf8) { return utf8; }

}  // namespace zel::platform
