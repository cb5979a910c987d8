// A new file that grows by large pieces for as long as there is room.
#ifndef PLATFORM_GROWINGFILE_H
#define PLATFORM_GROWINGFILE_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

namespace zel::platform {

// One thread at a time. What fails answers false and says why.
class GrowingFile {
  public:
    enum class Problem {
        kNone,
        kTaken,     // something stands there already
        kDiskFull,  // or the user's share of it is used up, or the file may grow no further
        kOther,
    };

    GrowingFile();
    ~GrowingFile();  // closes it
    GrowingFile(const GrowingFile&) = delete;
    GrowingFile& operator=(const GrowingFile&) = delete;

    // Makes the file with these first bytes. Of several programs that try at once one makes it. On Linux the file is
    // not there before its first bytes are, where the file system can do that.
    bool Create(const std::filesystem::path& path, std::span<const std::byte> head);
    // Takes space on the disk up to this size; the file does not become longer by it. False: the system has not that
    // much, or does not do it here; nothing is lost by that.
    bool Reserve(std::uint64_t size);
    bool Write(std::uint64_t offset, std::span<const std::byte> bytes);
    bool Read(std::uint64_t offset, std::span<std::byte> bytes) const;
    // Has the system begin with what was written before `offset`, and waits for what is far behind that, so that what
    // is not on the disk yet stays bounded: a system that lets it pile up stops the writer for seconds at a time.
    void WriteBehind(std::uint64_t offset);
    // Cuts off what was written or reserved beyond this size.
    bool Shrink(std::uint64_t size);
    bool Close();

    // Of the last operation.
    Problem LastProblem() const;
    std::string Why() const;

  private:
    struct State;
    std::unique_ptr<State> m_State;
};

}  // namespace zel::platform

#endif
