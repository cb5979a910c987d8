#include "devices/gige/LinkCounters.h"

namespace zel::gige {

namespace {

std::string Count(std::uint64_t count, const char* what) { return std::to_string(count) + " " + what; }

}  // namespace

std::string CountersText(const LinkCounters& c, const std::string& between) {
    std::string text = "frames: " + Count(c.whole, "whole, ") + Count(c.Lost(), "lost");
    text += " (" + Count(c.incomplete, "incomplete, ") + Count(c.late, "late, ") +
            Count(c.other_shape, "of another shape, ") + Count(c.broken_off, "broken off, ") +
            Count(c.unseen, "unseen") + ")";
    if (c.before_first > 0) text += ", " + Count(c.before_first, "before the run began");
    if (!c.last_shape.empty()) text += between + "the camera sends " + c.last_shape;
    return text + between + "packets: " + Count(c.packets, "received, ") + Count(c.missing_packets, "missing, ") +
           Count(c.resent_packets, "resent of ") + Count(c.resend_requests, "asked for again, ") +
           Count(c.bad_packets, "bad; ") + Count(c.without_buffer, "frames without a buffer");
}

}  // namespace zel::gige
