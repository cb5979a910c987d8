// Pictures of every size, kind and content, written and read back by other libraries: what was written is what is read.
// Images whose geometry lies are refused.
#include <lodepng.h>
#include <tiffio.h>

#include "fuzz/Choices.h"
#include "fuzz/FuzzFile.h"
#include "include/ZelImage.h"
#include "util/PngWriter.h"
#include "util/ZelUtilImpl.h"

using namespace zel;
using fuzz::Choices;

namespace {

using Bytes = std::vector<std::uint8_t>;
const fuzz::FuzzFile s_File;

// Of few or many values, or repeating: each is coded in another way.
Bytes Content(Choices& in, std::size_t size) {
    Bytes bytes(size);
    const unsigned kind = in.Number(0, 3), mask = in.Number(0, 0xFF), period = in.Number(1, 500);
    for (std::size_t i = 0; i < size; ++i) {
        const auto any = static_cast<std::uint8_t>(kind == 0 ? in.Byte() : in.Random() & mask);
        bytes[i] = kind == 1 && i >= period ? bytes[i - period] : any;
    }
    return bytes;
}

// The file's pixels as they stand in memory: blue first, samples of 16 bits in this machine's order.
Bytes Decoded(const std::uint8_t* file, std::size_t size, const PngPicture& picture) {
    constexpr LodePNGColorType kColors[] = {LCT_GREY, LCT_RGB, LCT_RGB, LCT_RGBA};
    lodepng::State state;
    state.decoder.color_convert = 0;
    Bytes pixels;
    unsigned w = 0, h = 0;
    FuzzCheck(lodepng::decode(pixels, w, h, state, file, size) == 0 && w == picture.width && h == picture.height);
    FuzzCheck(state.info_png.color.colortype == kColors[static_cast<int>(picture.format)]);
    FuzzCheck(state.info_png.color.bitdepth == 8 * picture.BytesPerSample());
    FuzzCheck(pixels.size() == picture.BytesPerRow() * h);
    // Turning the bytes of a pixel of 16-bit samples turns its channels and its samples.
    const std::size_t turned = picture.format == PngFormat::kRgba8 ? 3 : picture.BytesPerPixel();
    for (auto at = pixels.begin(); at != pixels.end(); at += picture.BytesPerPixel())
        std::reverse(at, at + static_cast<std::ptrdiff_t>(turned));
    return pixels;
}

void TryPicture(Choices& in) {
    static PngWriter s_Writers[] = {PngWriter(PngFilters::kNone), PngWriter(PngFilters::kChosen)};
    const unsigned tallest = in.Number(0, 31) ? 40 : 400;
    PngPicture picture{static_cast<PngFormat>(in.Number(0, 3)), in.Number(0, 300), in.Number(0, tallest)};
    picture.light = static_cast<PngLight>(in.Number(0, 2));
    PngWriter& writer = s_Writers[in.Flag()];
    if (picture.BytesPerSample() == 2) picture.shift = in.Number(0, 15);
    Bytes content = Content(in, static_cast<std::size_t>(picture.BytesPerRow()) * picture.height);
    picture.pixels = content.data();
    const auto file = writer.Encode(picture);
    FuzzCheck(file.empty() == content.empty());
    if (file.empty()) return;
    const Bytes read = Decoded(file.data(), file.size(), picture);
    for (std::size_t i = 0; i < content.size() && picture.shift; i += 2) {
        const unsigned before = content[i] + 256u * content[i + 1];
        const unsigned sample = std::min(before << picture.shift, 0xFFFFu);
        content[i] = static_cast<std::uint8_t>(sample);
        content[i + 1] = static_cast<std::uint8_t>(sample >> 8);
    }
    for (std::size_t i = 3; i < content.size() && picture.format == PngFormat::kRgba8; i += 4) content[i] = 255;
    FuzzCheck(read == content);
}

// The library's own operations on a record of `samples` samples.
void TryImage(Choices& in) {
    ZelColorImage image{};
    image.w = in.Number(0, 60);
    image.h = in.Number(0, 30);
    Bytes content = Content(in, std::size_t{2} * image.w * image.h);
    image.pixels = reinterpret_cast<unsigned short*>(content.data());
    image.buffer_size = static_cast<unsigned>(content.size());
    image.bytes_per_pixel = 2;
    const bool lies = in.Flag();
    for (unsigned* field : {&image.w, &image.h, &image.bytes_per_pixel}) {
        if (lies && in.Flag()) *field = in.Number(0, in.Flag() ? 100 : 0xFFFFFFFF);
    }
    if (lies && in.Number(0, 7) == 0) image.pixels = nullptr;
    const std::uint64_t count = std::uint64_t{image.w} * image.h;
    const bool fits = count == 0 || (image.pixels && count <= image.buffer_size / 2);
    const bool png = in.Flag();
    const bool saved = png ? UtilInstance()->SavePNG(s_File.Name().c_str(), &image)
                           : UtilInstance()->SaveTIFF(s_File.Name().c_str(), &image);
    if (!lies) FuzzCheck(saved == (count > 0 || !png));
    FuzzCheck(s_File.Read().empty() == !saved);
    if (saved && png) {
        FuzzCheck(fits && image.bytes_per_pixel >= 2);
        const std::string file = s_File.Read();
        const Bytes read = Decoded(reinterpret_cast<const std::uint8_t*>(file.data()), file.size(),
                                   {PngFormat::kGrey16, image.w, image.h});
        FuzzCheck(std::equal(read.begin(), read.end(), content.begin()));
    } else if (saved && count > 0 && image.bytes_per_pixel == 2) {
        FuzzCheck(fits);
        TIFF* const tiff = TIFFOpen(s_File.Name().c_str(), "rm");
        Bytes read(static_cast<std::size_t>(2 * count));
        const auto size = static_cast<tmsize_t>(read.size());
        FuzzCheck(tiff && TIFFReadEncodedStrip(tiff, 0, read.data(), size) == size &&
                  std::equal(read.begin(), read.end(), content.begin()));
        TIFFClose(tiff);
    }
    s_File.Remove();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    TIFFSetWarningHandler(nullptr);  // the directory is not in the order of its tags
    Choices in(data, size);
    in.Number(0, 3) ? TryPicture(in) : TryImage(in);
    return 0;
}
