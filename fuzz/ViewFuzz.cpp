// What anybody can send to the viewer: targets, hosts and origins of requests, and messages of pages. The first byte
// chooses which.
#include "fuzz/Input.h"
#include "tools/zelcam/view/Access.h"
#include "tools/zelcam/view/FrameReducer.h"
#include "tools/zelcam/view/ViewMessages.h"

using namespace zelcam;

namespace {

// Three parts of the text, divided at line ends.
void JudgeRequest(std::string_view text) {
    static const Access access("abcdefghijklmnopqrstuv", "0.0.0.0", 8080);
    std::string_view parts[3];
    for (std::string_view& part : parts) {
        part = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(part.size() + 1, text.size()));
    }
    const RequestFacts facts{parts[0], parts[1], parts[2], true};
    if (access.Judge(facts) != Verdict::kGood) return;
    FuzzCheck(parts[0].starts_with("/abcdefghijklmnopqrstuv/"));
    FuzzCheck(parts[1].ends_with(":8080"));
    FuzzCheck(parts[2] == "http://" + std::string(parts[1]));
}

void Answer(std::string_view text) {
    // Exactly as many samples as the frame has, so that a sanitizer sees one too many.
    static const std::vector<std::uint16_t> values(17 * 9 * 3, 1000);
    const Samples frame{values, 17, 9, 3, 12};
    const Json message = ParseMessage(text);
    Json measured = Json::object();
    AddProbe(measured, ProbeIn(message), frame);
    FuzzCheck(MessageText(measured).size() > 1);
    const ReducedPicture picture = Reduce(frame, ViewIn(message));
    FuzzCheck(picture.area.x + picture.area.width <= 17 && picture.area.y + picture.area.height <= 9);
    FuzzCheck(picture.samples->size() == std::size_t{picture.columns} * picture.rows * 3);
    for (const std::uint16_t sample : *picture.samples) FuzzCheck(sample == 1000);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zel::fuzz::Input input(data, size);
    const bool request = input.Byte() & 1;
    const std::string_view text = input.RestText();
    if (request) {
        JudgeRequest(text);
        return 0;
    }
    try {
        Answer(text);
    } catch (const std::exception&) {
        // Refused, as most of it should be.
    }
    return 0;
}
