// Writes a recording.
#ifndef ZEL_RECORDINGWRITER_H
#define ZEL_RECORDINGWRITER_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

#include "record/RecordError.h"
#include "record/RecordingFacts.h"
#include "record/StripEncoder.h"

namespace zel::record {

struct WriterOptions {
    Compression compression = Compression::kNone;
    std::uint64_t reserve = 0;  // bytes of disk space that are taken ahead; what is not used is given back at the end
};

// One thread at a time. Killed at any moment, it leaves a file that opens with every frame but the last few.
class RecordingWriter {
  public:
    // Makes the file, which must not exist. Throws RecordError.
    RecordingWriter(const std::filesystem::path& path, const RecordingFacts& facts, const WriterOptions& options);
    // Without Finish() the file stays as it is.
    ~RecordingWriter();
    RecordingWriter(const RecordingWriter&) = delete;
    RecordingWriter& operator=(const RecordingWriter&) = delete;

    // Other facts than those of the start; before the first frame.
    void Describe(const RecordingFacts& facts);
    // Adds a frame of width * height samples. Throws RecordError when it can't be written; the frames before it stay.
    void Add(std::span<const std::uint16_t> samples, const FrameFacts& frame);
    // The same of a frame that a StripEncoder has encoded, so that several can be at work beside the writing.
    void AddStrip(std::span<const std::byte> strip, const FrameFacts& frame);
    // Completes the file, with what other programs read of it. Throws RecordError.
    void Finish(const RecordingEnd& end);

    std::uint64_t Frames() const;
    // Size of the file so far, without what is reserved.
    std::uint64_t Bytes() const;

  private:
    struct State;
    std::unique_ptr<State> m_State;
};

}  // namespace zel::record

#endif
