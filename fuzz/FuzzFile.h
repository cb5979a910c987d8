// A file for inputs that the product reads from the disk: one for all inputs of this process.
#ifndef FUZZ_FUZZFILE_H
#define FUZZ_FUZZFILE_H

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>

namespace zel::fuzz {

class FuzzFile {
  public:
    FuzzFile()
        : m_Path(std::filesystem::temp_directory_path() /
                 ("zel-fuzz-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()))) {}
    ~FuzzFile() { Remove(); }
    FuzzFile(const FuzzFile&) = delete;
    FuzzFile& operator=(const FuzzFile&) = delete;

    const std::filesystem::path& Path() const { return m_Path; }
    std::string Name() const { return m_Path.string(); }
    void Write(std::span<const char> bytes) const {
        std::ofstream(m_Path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    std::string Read() const {
        std::ifstream file(m_Path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    // What others wrote, and makes room for more.
    std::string Take() const {
        const std::string bytes = Read();
        Remove();
        return bytes;
    }
    bool Remove() const {
        std::error_code ignored;
        return std::filesystem::remove(m_Path, ignored);
    }

  private:
    std::filesystem::path m_Path;
};

// Changes of a file that is whole: each is four bytes of the input, where, which of the places behind, and what. The
// first byte may cut it off.
inline std::string Changed(std::string bytes, std::span<const std::uint8_t> changes) {
    if (changes.empty()) return bytes;
    const std::size_t cut = changes[0];
    for (changes = changes.subspan(1); changes.size() >= 4 && !bytes.empty(); changes = changes.subspan(4)) {
        const std::size_t at = (changes[0] | std::size_t{changes[1]} << 8) + changes[2];
        bytes[at % bytes.size()] = static_cast<char>(changes[3]);
    }
    if (cut & 1) bytes.resize(bytes.size() * cut / 256);
    return bytes;
}

}  // namespace zel::fuzz

#endif
