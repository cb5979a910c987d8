#include "tools/zelcam/frames/StreamReport.h"

#include "include/ZelImage.h"
#include "tools/zelcam/frames/PictureSaver.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

void StreamReport::Add(const ZelColorImage& image, double hand_over_us) {
    ++frames;
    bytes += color.is_null() ? image.size_in_bytes : image.color_size_in_bytes;
    m_QueueMs.push_back(image.queue_delay_ms);
    m_HandOverUs.push_back(hand_over_us);
    m_Counter.Frame(image.image_number);
}

void StreamReport::Finish(std::uint64_t link_drops, std::uint64_t skipped) {
    m_Counter.SetSkipped(skipped);
    m_Drops = m_Counter.Count(link_drops);
}

double StreamReport::FramesPerSecond() const {
    return frames > 1 && seconds > 0.0 ? static_cast<double>(frames - 1) / seconds : 0.0;
}

double StreamReport::MegabytesPerSecond() const {
    return frames > 0 ? FramesPerSecond() * static_cast<double>(bytes) / static_cast<double>(frames) / 1e6 : 0.0;
}

std::string StreamReport::RateText() const {
    return std::to_string(frames) + " frames, " + FixedText(FramesPerSecond(), 1) + " frames/s, " +
           FixedText(MegabytesPerSecond(), 1) + " MB/s";
}

std::string StreamReport::Text() const {
    std::string text = RateText() + " in " + FixedText(seconds, 2) + " s, mode " + mode + ", first frame after " +
                       FixedText(first_frame_s, 2) + " s" + (interrupted ? ", ended by the user" : "") + "\n";
    text += "latency, arrival to hand-over: median " + FixedText(Percentile(m_QueueMs, 50), 0) +
            " ms, 99th percentile " + FixedText(Percentile(m_QueueMs, 99), 0) + " ms\n";
    text += "latency, notification to hand-over: median " + FixedText(Percentile(m_HandOverUs, 50), 1) +
            " us, 99th percentile " + FixedText(Percentile(m_HandOverUs, 99), 1) + " us\n";
    text += "dropped: " + std::to_string(m_Drops.link) + " lost on the link, " + std::to_string(m_Drops.no_buffer) +
            " without a free buffer";
    if (mode == "newest") text += "; passed over for a newer one: " + std::to_string(m_Drops.skipped);
    return text + "\n";
}

Json StreamReport::ToJson() const {
    Json json;
    json["mode"] = mode;
    if (!color.is_null()) json["color"] = color;
    json["first_frame_seconds"] = first_frame_s;
    json["seconds"] = seconds;
    json["frames"] = frames;
    json["frames_per_second"] = FramesPerSecond();
    json["megabytes_per_second"] = MegabytesPerSecond();
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
