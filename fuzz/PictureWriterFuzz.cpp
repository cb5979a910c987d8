// Pictures of every size, kind and content, written and read back by other libraries: what was written is what is read.
// Images whose geometry lies are refused.
#include <tiffio.h>

#include "fuzz/FuzzFile.h"
#include "fuzz/Input.h"
#include "include/ZelImage.h"
#include "tests/support/ReadPng.h"
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

void TryPicture(Choices& in) {
    static PngWriter s_Writers[] = {PngWriter(PngFilters::kNone), PngWriter(PngFilters::kChosen)};
    const unsigned tallest = in.Number(0, 31) ? 40 : 400;
    PngPicture picture{static_cast<PngFormat>(in.Number(0, 3)), in.Number(0, 300), in.Number(0, tallest)};
    picture.light = static_cast<PngLight>(in.Number(0, 2));
    PngWriter& writer = s_Writers[in.Flag()];
    if (picture.BytesPerSample() == 2) picture.shift = in.Number(0, 15);
    const Bytes content = Content(in, static_cast<std::size_t>(picture.BytesPerRow()) * picture.height);
    picture.pixels = content.data();
    const auto file = writer.Encode(picture);
    FuzzCheck(file.empty() == content.empty());
    if (file.empty()) return;
    FuzzCheck(test::ReadPng(file, picture) == test::KeptPixels(picture, content));
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
        const Bytes read = test::ReadPng(Bytes(file.begin(), file.end()), {PngFormat::kGrey16, image.w, image.h});
        FuzzCheck(!read.empty() && std::equal(read.begin(), read.end(), content.begin()));
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
