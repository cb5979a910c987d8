// Images as files, wherever they are opened.
#ifndef UTIL_IMAGEFILE_H
#define UTIL_IMAGEFILE_H

#include <cstdint>
#include <cstdio>
#include <functional>

class ZelImage;

namespace zel {

// Opens a file to be written from its start; null when it can't.
using OpenImageFile = std::function<std::FILE*()>;

// Whether w * h samples lie within the image's buffer, whatever a transport wrote into its geometry. An image that no
// camera made may leave its buffer's size 0.
bool FitsItsBuffer(const ZelImage& image, std::uint64_t bytes_per_sample);

// Write an image that fits its buffer; for a PNG file it has samples of 16 bits, at least one. The file is opened when
// everything else is there. True when it was opened: write errors are not noticed.
bool WriteTiff(const ZelImage& image, const OpenImageFile& open);
bool WritePng(const ZelImage& image, const OpenImageFile& open);

}  // namespace zel

#endif
