// What the user tells this process as text: arguments, environment, names of files. All of this tree's texts are UTF-8;
// here they are turned into that, and back where a system's 8-bit encoding is wanted.
#ifndef PLATFORM_USERTEXTS_H
#define PLATFORM_USERTEXTS_H

#include <filesystem>
#include <string>
#include <vector>

namespace zel::platform {

// The arguments of this process, beginning with the program's name. They are those of main, which on Windows come in an
// encoding that lacks most characters.
std::vector<std::string> Arguments(int argc, const char* const* argv);

// The value of a variable of the environment; empty when it is not set.
std::string EnvironmentVariable(const char* name);
// Sets a variable for this process, every library in it and the processes it starts; null or an empty value removes it.
// No other thread may read the environment meanwhile.
void SetEnvironment(const char* name, const char* value);
// The names of all variables that begin so.
std::vector<std::string> EnvironmentVariables(const std::string& beginning);

// A text in the system's 8-bit encoding as UTF-8; null gives an empty one.
std::string Utf8FromSystem(const char* text);
// The path of a file that exists, in the system's 8-bit encoding, with the short name of its folder where the encoding
// lacks a character. Empty when it lacks one of the file's own name.
std::string SystemPath(const std::string& utf8);

// Between UTF-8 and the standard library's paths, whose plain constructor goes by another encoding on Windows.
inline std::filesystem::path Utf8Path(const std::string& utf8) { return std::u8string(utf8.begin(), utf8.end()); }
inline std::string Utf8Text(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

}  // namespace zel::platform

#endif
