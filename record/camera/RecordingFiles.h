// The files of one camera's recording, one after the other.
#ifndef ZEL_RECORDINGFILES_H
#define ZEL_RECORDINGFILES_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "record/RecordingWriter.h"

namespace zel::record {

inline double SecondsOf(std::int64_t nanoseconds) {
    return std::chrono::duration<double>(std::chrono::nanoseconds(nanoseconds)).count();
}

struct FileOptions {
    std::filesystem::path file;
    bool numbered = false;  // PATH_0001.ome.tif and so on, past those that are there
    Compression compression = Compression::kNone;
    std::uint64_t reserve = 0;  // bytes of disk space that are taken at once
    // A file gets no more than that, then comes the next one, numbered; 0: no such limit.
    std::uint64_t split_frames = 0;
    std::uint64_t split_bytes = 0;
    double split_seconds = 0.0;
};

// What did not come so far, by cause.
struct LossTally {
    std::uint64_t missing = 0;  // numbers that were not offered
    std::uint64_t lost_disk = 0;
    std::uint64_t passed_over = 0;
    std::uint64_t link_drops = 0;  // of those that are missing, as the transport counts them
};

struct RecordedFile {
    std::filesystem::path path;
    std::uint64_t bytes = 0;
    RecordingEnd end;
};

// What came and was lost in all of them; why the last one ended.
RecordingEnd SumOf(const std::vector<RecordedFile>& files);

// The path with a text before its extension: "run.ome.tif", "_0002" -> "run_0002.ome.tif".
std::filesystem::path WithSuffix(const std::filesystem::path& path, const std::string& suffix);

// One thread at a time.
class RecordingFiles {
  public:
    RecordingFiles(const RecordingFacts& facts, FileOptions options);
    ~RecordingFiles();

    // What follows goes into a new file. Throws RecordError.
    void Begin(const LossTally& tally);
    // Before the first frame of a file, with what that tells.
    void Describe(const RecordingFacts& facts);
    // Whether the file has what it may have: a frame at this time belongs into the next one.
    bool SplitBefore(std::int64_t host_ns) const;
    void Write(std::span<const std::byte> strip, const FrameFacts& frame);
    // Completes the file; one without a frame is removed. Throws RecordError.
    void End(const std::string& reason, const LossTally& tally);

    bool Open() const { return m_Writer != nullptr; }
    const RecordingFacts& Facts() const { return m_Facts; }
    const std::filesystem::path& Path() const { return m_Path; }
    // Of all files.
    std::uint64_t Bytes() const { return m_Bytes + (m_Writer ? m_Writer->Bytes() : 0); }
    const std::vector<RecordedFile>& Ended() const { return m_Ended; }

  private:
    bool Splits() const { return m_Options.split_frames + m_Options.split_bytes > 0 || m_Options.split_seconds > 0.0; }

    RecordingFacts m_Facts;
    FileOptions m_Options;
    std::unique_ptr<RecordingWriter> m_Writer;
    std::filesystem::path m_Path;
    unsigned m_Number = 0;
    std::uint64_t m_Bytes = 0;  // of the files that have ended
    std::int64_t m_FirstNs = 0;
    std::uint64_t m_LastStrip = 0;
    LossTally m_Before;  // at the beginning of the file
    std::vector<RecordedFile> m_Ended;
};

}  // namespace zel::record

#endif
