#include "tools/zelcam/frames/PictureEncoder.h"

#include <cstddef>
#include <optional>
#include <string>

#include "include/ZelImage.h"
#include "tools/zelcam/frames/ColorPicture.h"
#include "tools/zelcam/frames/PictureSaver.h"
#include "tools/zelcam/text/Failure.h"
#include "util/ImageFile.h"
#include "util/TiffFile.h"

namespace zelcam {

namespace {

std::string FrameText(const ZelColorImage& image) { return "frame " + std::to_string(image.image_number); }

// Holds a slot for as long as it lives.
class SlotLock {
  public:
    explicit SlotLock(CompressionSlots* slots) : m_Slots(slots) {
        if (m_Slots) m_Slots->Acquire();
    }
    ~SlotLock() {
        if (m_Slots) m_Slots->Release();
    }
    SlotLock(const SlotLock&) = delete;
    SlotLock& operator=(const SlotLock&) = delete;

  private:
    CompressionSlots* m_Slots;
};

}  // namespace

void CompressionSlots::Acquire() {
    zel::platform::ScopedLock lock(m_Mutex);
    m_Released.wait(lock, [this]() ZEL_REQUIRES(m_Mutex) { return m_Free > 0; });
    --m_Free;
}

void CompressionSlots::Release() {
    {
        const zel::platform::ScopedLock lock(m_Mutex);
        ++m_Free;
    }
    m_Released.notify_one();
}

EncodedPicture PictureEncoder::Encode(ZelColorImage& image) {
    const PictureOptions& options = m_Saver.Options();
    EncodedPicture encoded;
    if (const auto& color = m_Saver.Settings().color) {
        if (options.scale && color->format == zel::ColorFormat::rgb16) encoded.scaled_by = 16 - color->output_bits();
        const std::optional<zel::PngPicture> picture = ColorPng(image, *color, encoded.scaled_by);
        if (!picture) {
            throw Failure(FrameText(image) + " has no color picture", "the SDK did not make one of this format",
                          "leave --color out", kRefused);
        }
        encoded.body = Compress(image, *picture);
        return encoded;
    }
    if (!zel::FitsItsBuffer(image, image.bytes_per_pixel)) {
        throw Failure(FrameText(image) + " can't be saved", "its size is not that of its samples", "");
    }
    if (options.scale) encoded.scaled_by = ScaleToSixteenBits(&image);
    if (options.format == "png") {
        encoded.body = Compress(image, {zel::PngFormat::kGrey16, image.w, image.h, image.pixels});
        return encoded;
    }
    const std::uint32_t size = image.bytes_per_pixel * image.h * image.w;
    const zel::TiffHead head = zel::MakeTiffHead(image.w, image.h, size);
    encoded.head.assign(head.begin(), head.end());
    encoded.body = {reinterpret_cast<const std::uint8_t*>(image.pixels), size};
    return encoded;
}

std::span<const std::uint8_t> PictureEncoder::Compress(const ZelColorImage& image, const zel::PngPicture& picture) {
    const SlotLock slot(m_Slots);
    const std::span<const std::uint8_t> file = m_Png.Encode(picture);
    if (!file.empty()) return file;
    throw Failure(FrameText(image) + " can't be compressed", "memory may be short", "use fewer --buffers");
}

unsigned ScaleToSixteenBits(ZelColorImage* image) {
    if (image->bit_depth == 0 || image->bit_depth >= 16) return 0;
    const unsigned shift = 16 - image->bit_depth;
    const unsigned brightest = (1u << image->bit_depth) - 1;
    const std::size_t count = std::size_t{image->w} * image->h;
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned sample = image->pixels[i];
        image->pixels[i] = static_cast<unsigned short>((sample > brightest ? brightest : sample) << shift);
    }
    return shift;
}

}  // namespace zelcam
