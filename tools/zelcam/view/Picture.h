// What a page looks at, and what is sent to it.
#ifndef ZELCAM_PICTURE_H
#define ZELCAM_PICTURE_H

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace zelcam {

// Samples of a frame, row after row. Three channels are blue, green, red, as the SDK's color pictures have them.
struct Samples {
    std::span<const std::uint16_t> values;
    unsigned width = 0;
    unsigned height = 0;
    unsigned channels = 1;
    unsigned bits = 0;
};

// A rectangle in pixels of a frame.
struct Area {
    unsigned x = 0;
    unsigned y = 0;
    unsigned width = 0;
    unsigned height = 0;

    bool operator==(const Area&) const = default;
};

// What a page wants to see: a part of the frame, on so many pixels of its screen.
struct ViewRequest {
    std::uint32_t number = 0;
    Area area;
    unsigned columns = 0;
    unsigned rows = 0;
};

using SampleMemory = std::shared_ptr<const std::vector<std::uint16_t>>;

// A part of a frame with as many samples as are worth sending; three channels are red, green, blue.
struct ReducedPicture {
    Area area;
    unsigned columns = 0;
    unsigned rows = 0;
    SampleMemory samples;
};

inline constexpr std::size_t kPictureHeaderSize = 72;

// One binary message: the header (docs/viewer-protocol.md), then the samples.
struct PictureMessage {
    std::array<std::uint8_t, kPictureHeaderSize> header{};
    SampleMemory samples;
};

}  // namespace zelcam

#endif
