// The frames of a recording, one after the other as a camera sends them.
#ifndef SIM_RECORDEDFRAMES_H
#define SIM_RECORDEDFRAMES_H

#include <memory>
#include <string>
#include <vector>

#include "devices/sim/sensor/FrameSource.h"
#include "record/RecordingFacts.h"

namespace zel::record {
class RecordingReader;
}

namespace zel::sim {

// Of the first frame.
struct FirstFrame {
    std::uint32_t exposure_us = 0;
    std::int32_t gain = 0;
};

// How a recording is played, and what it is.
struct Recording {
    std::string file;  // UTF-8
    bool loop = true;
    double rate = 0.0;  // frames per second; 0: as recorded

    record::RecordingFacts facts{};
    // What only who plays it has to know.
    FirstFrame first{};
    std::size_t frames = 0;
    double frame_us = 0.0;  // from frame to frame, on average; 0: not known
};

// Looks at the file: at its facts, or at all there is to know. Throws record::RecordError with the reason why it can't
// be played.
void LookAtFacts(Recording& recording);
void LookAtFrames(Recording& recording);

// Keeps one frame in memory. The file is opened before the first frame.
class RecordedFrames final : public FrameSource {
  public:
    explicit RecordedFrames(const Recording& recording);
    ~RecordedFrames() override;

    unsigned Width() const override { return m_Recording.facts.width; }
    unsigned Height() const override { return m_Recording.facts.height; }
    void Prepare(const SensorSettings& settings, SensorFill fill) override;
    std::string Fetch(std::uint64_t frame) override;
    std::optional<std::int64_t> Pause(std::uint64_t frame) const override;
    void Begin(const SensorSettings& settings, SensorFill fill, std::uint64_t frame) override;
    std::span<const std::uint16_t> Row(unsigned y, std::span<std::uint16_t> room) override;

  private:
    const Recording m_Recording;
    std::unique_ptr<record::RecordingReader> m_Reader;
    std::vector<std::uint16_t> m_Samples;
    std::optional<std::size_t> m_InMemory;  // which frame of the recording
};

}  // namespace zel::sim

#endif
