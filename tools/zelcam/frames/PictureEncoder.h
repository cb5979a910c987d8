// Frames as the bytes of picture files.
#ifndef ZELCAM_PICTUREENCODER_H
#define ZELCAM_PICTUREENCODER_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/Mutex.h"
#include "util/PngWriter.h"

class ZelColorImage;

namespace zelcam {

class PictureSaver;

// How many pictures may be compressed at a time.
class CompressionSlots {
  public:
    explicit CompressionSlots(std::size_t count) : m_Free(count) {}
    void Acquire();
    void Release();

  private:
    zel::platform::Mutex m_Mutex;
    zel::platform::Condition m_Released;
    std::size_t m_Free ZEL_GUARDED_BY(m_Mutex);
};

// The bytes of a file: the head, then the body, which is the frame's own samples or lies in the encoder's memory.
struct EncodedPicture {
    std::vector<std::uint8_t> head;
    std::span<const std::uint8_t> body;
    unsigned scaled_by = 0;  // bits
};

// One object serves one thread at a time and keeps its memory from picture to picture.
class PictureEncoder {
  public:
    // Encodes as the saver's options and settings say. slots: a picture is compressed while it has one of them; null:
    // at once. Both must outlive the encoder.
    explicit PictureEncoder(const PictureSaver& saver, CompressionSlots* slots = nullptr)
        : m_Saver(saver), m_Slots(slots) {}

    // Good until the frame is given back or the encoder used again. The samples are scaled in place. Throws Failure.
    EncodedPicture Encode(ZelColorImage& image);

  private:
    std::span<const std::uint8_t> Compress(const ZelColorImage& image, const zel::PngPicture& picture);

    const PictureSaver& m_Saver;
    CompressionSlots* m_Slots;
    zel::PngWriter m_Png{zel::PngFilters::kChosen};
};

// Shifts the samples of `bit_depth` bits into the upper bits of 16, so that a viewer shows them bright. Result: by how
// many bits.
unsigned ScaleToSixteenBits(ZelColorImage* image);

}  // namespace zelcam

#endif
