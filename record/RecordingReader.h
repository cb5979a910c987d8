// Reads recordings, and other programs' stacks of grey pictures.
#ifndef ZEL_RECORDINGREADER_H
#define ZEL_RECORDINGREADER_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "record/RecordError.h"
#include "record/RecordingFacts.h"

namespace zel::record {

// One thread at a time. Nothing in a file is believed: what does not fit throws RecordError.
class RecordingReader {
  public:
    // Looks at all frames, or at so many of them: the first one alone tells the facts, and at once. Throws RecordError
    // with the reason.
    explicit RecordingReader(const std::filesystem::path& path, std::size_t most_frames = SIZE_MAX);
    ~RecordingReader();
    RecordingReader(const RecordingReader&) = delete;
    RecordingReader& operator=(const RecordingReader&) = delete;

    // False: another program's file. Facts() has what can be known of it, and frames their number alone.
    bool IsRecording() const;
    const RecordingFacts& Facts() const;
    std::size_t Frames() const;
    FrameFacts Frame(std::size_t index) const;
    // Empty: the recording was cut off, or another program made the file.
    const std::optional<RecordingEnd>& End() const;
    // Why pages at the end were left out, as of a file that was cut off; empty: there are none.
    const std::string& CutOff() const;
    // Reads a frame: width * height samples, row after row, of which there must be room for all. Throws RecordError.
    void Read(std::size_t index, std::span<std::uint16_t> samples);

  private:
    struct State;
    std::unique_ptr<State> m_State;
};

}  // namespace zel::record

#endif
