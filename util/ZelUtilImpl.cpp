#include "util/ZelUtilImpl.h"

#include "include/ZelImage.h"
#include "sdk/Logger.h"
#include "util/ImageFile.h"

namespace zel {

namespace {

bool Fits(const ZelImage& image, unsigned bytes_per_sample, const char* function_name) {
    if (FitsItsBuffer(image, bytes_per_sample)) return true;
    ZEL_LOG(SdkLogger().Get(), kLogError, function_name,
            "An image of %u x %u samples of %u bytes does not fit its buffer of %u bytes!", image.w, image.h,
            bytes_per_sample, static_cast<const ZelColorImage&>(image).buffer_size);
    return false;
}

// The name is in the system's 8-bit encoding.
std::FILE* Open(const char* file_name) { return file_name ? std::fopen(file_name, "wb") : nullptr; }

}  // namespace

// On purpose: the head says 16 bits whatever `bytes_per_pixel` says.
bool ZelUtilImpl::SaveTIFF(const char* file_name, ZelImage* image) {
    if (!image) return false;
    if (image->bytes_per_pixel != 0 && !Fits(*image, image->bytes_per_pixel, "ZelUtilImpl::SaveTIFF")) return false;
    return WriteTiff(*image, [=] { return Open(file_name); });
}

// On purpose: samples are read as 16-bit whatever `bytes_per_pixel` says.
bool ZelUtilImpl::SavePNG(const char* file_name, ZelImage* image) {
    // Samples of one byte would end in the middle of the rows.
    if (!image || !image->pixels || image->bytes_per_pixel < sizeof(std::uint16_t)) return false;
    if (image->w == 0 || image->h == 0) return false;
    if (!Fits(*image, sizeof(std::uint16_t), "ZelUtilImpl::SavePNG")) return false;
    return WritePng(*image, [=] { return Open(file_name); });
}

ZelUtil* UtilInstance() {
    static ZelUtilImpl instance;
    return &instance;
}

}  // namespace zel
