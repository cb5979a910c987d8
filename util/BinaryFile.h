// A file that was opened for writing, closed with the object. Write errors are not noticed.
#ifndef UTIL_BINARYFILE_H
#define UTIL_BINARYFILE_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>

namespace zel {

class BinaryFile {
  public:
    explicit BinaryFile(std::FILE* file) : m_File(file) {}

    explicit operator bool() const { return m_File != nullptr; }
    void Write(std::span<const std::uint8_t> bytes) {
        if (bytes.empty()) return;
        // The result is of no use: a partial file is left as it is.
        [[maybe_unused]] const std::size_t written = std::fwrite(bytes.data(), 1, bytes.size(), m_File.get());
    }

  private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Closer> m_File;
};

}  // namespace zel

#endif
