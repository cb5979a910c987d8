#include "bindings/gstreamer/Messages.h"

namespace zel::gst {

namespace {

int ResourceCode(ErrorKind kind) {
    switch (kind) {
        case ErrorKind::no_camera:
            return GST_RESOURCE_ERROR_NOT_FOUND;
        case ErrorKind::invalid_argument:
        case ErrorKind::refused:
            return GST_RESOURCE_ERROR_SETTINGS;
        case ErrorKind::timeout:
        case ErrorKind::link_lost:
            return GST_RESOURCE_ERROR_READ;
        default:
            return GST_RESOURCE_ERROR_FAILED;
    }
}

void Post(GstElement* element, GstMessageType type, const Error& error) {
    gst_element_message_full(element, type, GST_RESOURCE_ERROR, ResourceCode(error.kind()), g_strdup(error.what()),
                             nullptr, __FILE__, "zelsrc", __LINE__);
}

}  // namespace

void PostError(GstElement* element, const Error& error) { Post(element, GST_MESSAGE_ERROR, error); }

void PostWarning(GstElement* element, const Error& error) { Post(element, GST_MESSAGE_WARNING, error); }

void PostDrops(GstElement* element, std::uint64_t dropped, std::uint64_t frames, GstClockTime time,
               GstClockTime duration) {
    GstMessage* const message = gst_message_new_qos(GST_OBJECT(element), TRUE, time, time, time, duration);
    gst_message_set_qos_stats(message, GST_FORMAT_BUFFERS, frames, dropped);
    gst_element_post_message(element, message);
}

GstStructure* StatsOf(const Counts& counts) {
    const auto count = [](std::uint64_t number) { return static_cast<guint64>(number); };
    return gst_structure_new("application/x-zel-stats", "frames", G_TYPE_UINT64, count(counts.frames), "lost-on-link",
                             G_TYPE_UINT64, count(counts.drops.link), "no-free-buffer", G_TYPE_UINT64,
                             count(counts.drops.no_buffer), "skipped", G_TYPE_UINT64, count(counts.drops.skipped),
                             nullptr);
}

}  // namespace zel::gst
