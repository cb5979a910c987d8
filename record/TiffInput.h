// A TIFF file that is read. libtiff gets its bytes from here and tells its complaints here: its handlers for the whole
// process, which may be somebody else's, are left alone.
#ifndef ZEL_TIFFINPUT_H
#define ZEL_TIFFINPUT_H

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

struct tiff;

namespace zel::record {

class TiffInput {
  public:
    // Reads the header alone. Throws RecordError.
    explicit TiffInput(const std::filesystem::path& path);
    ~TiffInput();
    TiffInput(const TiffInput&) = delete;
    TiffInput& operator=(const TiffInput&) = delete;

    tiff* Handle() const { return m_Tiff; }
    std::uint64_t Size() const { return m_Size; }
    // Throws RecordError with what libtiff said last, or `otherwise` when that was nothing.
    [[noreturn]] void Fail(const std::string& otherwise) const;

    // The text in a private tag of the current directory; empty when there is none.
    std::string Text(std::uint32_t tag) const;

  private:
    struct Procedures;

    std::ifstream m_Stream;
    std::uint64_t m_Size = 0;
    std::string m_Complaint;
    tiff* m_Tiff = nullptr;
};

}  // namespace zel::record

#endif
