#include "devices/sim/sensor/RecordedFrames.h"

#include <algorithm>
#include <cmath>

#include "platform/UserTexts.h"
#include "record/RecordingReader.h"

namespace zel::sim {

namespace {

constexpr unsigned kLargestSide = 8192;
constexpr double kLongestPause = 3600.0e6;  // microseconds

// The mean, from the first frame to the last one; without times, what the camera was set to.
double MicrosecondsPerFrame(const record::RecordingReader& reader) {
    const auto last = reader.Frames() - 1;
    const auto passed = static_cast<double>(reader.Frame(last).host_ns) - static_cast<double>(reader.Frame(0).host_ns);
    if (last > 0 && passed > 0.0) return passed / 1000.0 / static_cast<double>(last);
    const double rate = reader.Facts().frames_per_second;
    return rate > 0.0 ? 1.0e6 / rate : 0.0;
}

}  // namespace

void LookAtFacts(Recording& recording) {
    recording.facts = record::RecordingReader(platform::Utf8Path(recording.file), 1).Facts();
    if (recording.facts.width > kLargestSide || recording.facts.height > kLargestSide) {
        throw record::RecordError("a camera has up to " + std::to_string(kLargestSide) + " pixels a side");
    }
}

void LookAtFrames(Recording& recording) {
    const record::RecordingReader reader(platform::Utf8Path(recording.file));
    recording.first = {reader.Frame(0).exposure_us, reader.Frame(0).gain};
    recording.frames = reader.Frames();
    const double recorded_us = std::min(MicrosecondsPerFrame(reader), kLongestPause);
    recording.frame_us = recording.rate > 0.0 ? 1.0e6 / recording.rate : recorded_us;
}

RecordedFrames::RecordedFrames(const Recording& recording) : m_Recording(recording) {}
RecordedFrames::~RecordedFrames() = default;

// What goes wrong is told when the frame is due.
void RecordedFrames::Prepare(const SensorSettings&, SensorFill) { Fetch(0); }

std::string RecordedFrames::Fetch(std::uint64_t frame) {
    const auto index = static_cast<std::size_t>(frame % m_Recording.frames);
    if (m_InMemory == index) return {};
    m_InMemory.reset();
    try {
        if (!m_Reader) m_Reader = std::make_unique<record::RecordingReader>(platform::Utf8Path(m_Recording.file));
        const record::RecordingFacts& facts = m_Reader->Facts();
        if (facts.width != Width() || facts.height != Height()) throw record::RecordError("the file has changed");
        m_Samples.resize(std::size_t{Width()} * Height());
        m_Reader->Read(index, m_Samples);
        m_InMemory = index;
        return {};
    } catch (const std::exception& error) {
        m_Reader.reset();
        return error.what();
    }
}

std::optional<std::int64_t> RecordedFrames::Pause(std::uint64_t frame) const {
    if (m_Recording.frame_us <= 0.0) return std::nullopt;
    const auto index = static_cast<std::size_t>(frame % m_Recording.frames);
    const bool recorded = m_Recording.rate <= 0.0 && m_Reader && index + 1 < m_Reader->Frames();
    double pause = m_Recording.frame_us;
    if (recorded && m_Reader->Frame(m_Reader->Frames() - 1).host_ns > m_Reader->Frame(0).host_ns) {
        const auto now = static_cast<double>(m_Reader->Frame(index).host_ns);
        pause = (static_cast<double>(m_Reader->Frame(index + 1).host_ns) - now) / 1000.0;
    }
    return std::llround(std::clamp(pause, 0.0, kLongestPause));
}

void RecordedFrames::Begin(const SensorSettings&, SensorFill, std::uint64_t frame) { Fetch(frame); }

std::span<const std::uint16_t> RecordedFrames::Row(unsigned y, std::span<std::uint16_t> room) {
    if (!m_InMemory || y >= Height()) return room;
    return std::span(m_Samples).subspan(std::size_t{y} * Width(), Width());
}

}  // namespace zel::sim
