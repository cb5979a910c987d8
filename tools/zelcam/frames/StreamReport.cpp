#include "tools/zelcam/frames/StreamReport.h"

#include <fmt/format.h>

#include <chrono>

#include "tools/zelcam/frames/PictureSaver.h"
#include "tools/zelcam/frames/Statistics.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

void StreamReport::Add(const zel::Frame& frame) {
    const ZelColorImage& image = *frame.native();
    ++frames;
    bytes += frame.color() ? image.color_size_in_bytes : image.size_in_bytes;
    m_QueueMs.push_back(image.queue_delay_ms);
    m_HandOverUs.push_back(std::chrono::duration<double, std::micro>(frame.hand_over()).count());
    m_Counter.frame(image.image_number, image.arrival_time_ms);
}

void StreamReport::Finish(std::uint64_t link_drops, std::uint64_t skipped) {
    m_Counter.set_skipped(skipped);
    m_Drops = m_Counter.count(link_drops);
}

double StreamReport::FramesPerSecond() const {
    return frames > 1 && seconds > 0.0 ? static_cast<double>(frames - 1) / seconds : 0.0;
}

double StreamReport::MegabytesPerSecond() const {
    return frames > 0 ? FramesPerSecond() * static_cast<double>(bytes) / static_cast<double>(frames) / 1e6 : 0.0;
}

std::string StreamReport::RateText() const {
    if (frames < 2) return Counted(frames, "frame");
    return fmt::format("{} frames, {:.1f} frames/s, {:.1f} MB/s", frames, FramesPerSecond(), MegabytesPerSecond());
}

std::string StreamReport::Text() const {
    std::string text = RateText();
    if (m_Counter.camera_rate() > 0.0) text += fmt::format(" (camera: {:.1f} frames/s)", m_Counter.camera_rate());
    text += fmt::format(" in {:.2f} s, mode {}, first frame after {:.2f} s{}\n", seconds, mode, first_frame_s,
                        interrupted ? ", ended by the user" : "");
    text += fmt::format("latency, arrival to hand-over: median {:.0f} ms, 99th percentile {:.0f} ms\n",
                        Percentile(m_QueueMs, 50), Percentile(m_QueueMs, 99));
    text += fmt::format("latency, notification to hand-over: median {:.1f} us, 99th percentile {:.1f} us\n",
                        Percentile(m_HandOverUs, 50), Percentile(m_HandOverUs, 99));
    text += fmt::format("dropped: {} lost on the link, {} without a free buffer", m_Drops.link, m_Drops.no_buffer);
    if (mode == "newest") text += fmt::format("; passed over for a newer one: {}", m_Drops.skipped);
    return text + "\n";
}

Json StreamReport::ToJson() const {
    Json json;
    json["mode"] = mode;
    if (!color.is_null()) json["color"] = color;
    json["first_frame_seconds"] = first_frame_s;
    json["seconds"] = seconds;
    json["frames"] = frames;
    const auto known = [](double rate) { return rate > 0.0 ? Json(rate) : Json(); };
    json["frames_per_second"] = known(FramesPerSecond());
    json["camera_frames_per_second"] = known(m_Counter.camera_rate());
    json["megabytes_per_second"] = known(MegabytesPerSecond());
    json["arrival_to_hand_over_ms"] = {
        {"median", Percentile(m_QueueMs, 50)}, {"percentile_99", Percentile(m_QueueMs, 99)}, {"clock", kFrameClock}};
    json["notification_to_hand_over_us"] = {{"median", Percentile(m_HandOverUs, 50)},
                                            {"percentile_99", Percentile(m_HandOverUs, 99)},
                                            {"clock", "steady clock of this program"}};
    json["dropped"] = {{"link", m_Drops.link}, {"no_free_buffer", m_Drops.no_buffer}, {"skipped", m_Drops.skipped}};
    json["interrupted"] = interrupted;
    return json;
}

}  // namespace zelcam
