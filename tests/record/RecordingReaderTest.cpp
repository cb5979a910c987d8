// Other programs' stacks as they are read, and files that are none.
#include "record/RecordingReader.h"

#include <gmock/gmock.h>
#include <tiffio.h>

#include <cstring>
#include <map>

#include "tests/record/RecordingFile.h"

namespace zel::record::test {
namespace {

struct Foreign {
    const char* mode;
    std::uint32_t bits, tile, rows;  // tile 0: strips of so many rows
    std::uint16_t compression, light;
};

void WriteForeign(const TemporaryFile& file, const Foreign& kind, const std::vector<Picture>& pictures,
                  unsigned width) {
    TIFF* const tiff = TIFFOpen(platform::SystemPath(file.Name()).c_str(), kind.mode);
    ASSERT_NE(tiff, nullptr) << file.Name();
    const unsigned white = (1u << kind.bits) - 1;
    for (const Picture& picture : pictures) {
        const auto height = static_cast<unsigned>(picture.size() / width);
        const std::uint32_t columns = kind.tile ? kind.tile : width;
        const std::uint32_t rows = kind.tile ? kind.tile : kind.rows;
        std::map<std::uint32_t, std::uint32_t> tags = {{TIFFTAG_IMAGEWIDTH, width},
                                                       {TIFFTAG_IMAGELENGTH, height},
                                                       {TIFFTAG_BITSPERSAMPLE, kind.bits},
                                                       {TIFFTAG_COMPRESSION, kind.compression},
                                                       {TIFFTAG_PHOTOMETRIC, kind.light}};
        if (kind.tile) tags.insert({{TIFFTAG_TILEWIDTH, columns}, {TIFFTAG_TILELENGTH, rows}});
        if (!kind.tile) tags[TIFFTAG_ROWSPERSTRIP] = rows;
        for (const auto& [tag, value] : tags) TIFFSetField(tiff, tag, value);
        std::uint32_t part = 0;
        for (unsigned y = 0; y < height; y += rows) {
            for (unsigned x = 0; x < width; x += columns, ++part) {
                std::string bytes(std::size_t{columns} * rows * kind.bits / 8, 0);
                for (unsigned i = 0; i < columns * rows; ++i) {
                    const unsigned px = x + i % columns;
                    const unsigned py = y + i / columns;
                    if (px >= width || py >= height) continue;
                    const unsigned sample = picture[std::size_t{py} * width + px];
                    const unsigned stored = kind.light == PHOTOMETRIC_MINISWHITE ? white - sample : sample;
                    std::memcpy(&bytes[std::size_t{i} * kind.bits / 8], &stored, kind.bits / 8);
                }
                const std::size_t left = kind.tile ? rows : std::min(rows, height - y);
                const auto write = kind.tile ? TIFFWriteEncodedTile : TIFFWriteEncodedStrip;
                write(tiff, part, bytes.data(), static_cast<tmsize_t>(left * columns * kind.bits / 8));
            }
        }
        TIFFWriteDirectory(tiff);
    }
    TIFFClose(tiff);
}

TEST(RecordingReaderTest, ReadsStacksOfOtherPrograms) {
    const Foreign kinds[] = {{"wl", 8, 0, 19, COMPRESSION_NONE, PHOTOMETRIC_MINISBLACK},
                             {"wb", 16, 0, 1, COMPRESSION_NONE, PHOTOMETRIC_MINISBLACK},
                             {"wl8", 16, 0, 7, COMPRESSION_LZW, PHOTOMETRIC_MINISBLACK},
                             {"wb8", 16, 16, 0, COMPRESSION_NONE, PHOTOMETRIC_MINISBLACK},
                             {"wl", 8, 32, 0, COMPRESSION_ADOBE_DEFLATE, PHOTOMETRIC_MINISWHITE},
                             {"wb", 16, 0, 19, COMPRESSION_PACKBITS, PHOTOMETRIC_MINISWHITE}};
    for (const Foreign& kind : kinds) {
        SCOPED_TRACE(testing::Message() << kind.mode << " " << kind.bits << " bits, compression " << kind.compression);
        const auto pictures = AnyPictures(3, 37, 19, kind.bits);
        const TemporaryFile file(" ");
        WriteForeign(file, kind, pictures, 37);
        RecordingReader reader(file.Path());
        EXPECT_FALSE(reader.IsRecording());
        EXPECT_EQ(reader.Facts().bits, kind.bits);
        EXPECT_EQ(reader.Frame(2).number, 2u);
        EXPECT_EQ(ReadAll(reader), pictures);
    }
}

// A classic file of one page of 6 x 4 pixels, in which one of these tags, all numbers of four bytes, is another one.
std::string MadeByHand(std::uint32_t tag, std::uint32_t value) {
    constexpr std::uint32_t kData = 1000;  // where the samples begin
    std::map<std::uint32_t, std::uint32_t> tags = {{256, 6},     {257, 4}, {258, 16}, {259, 1}, {262, 1},
                                                   {273, kData}, {277, 1}, {278, 4},  {279, 48}};
    tags[tag] = value;
    std::string bytes("II*\0\10\0\0\0", 8);
    const auto put = [&](std::size_t number, int count) {
        for (int i = 0; i < count; ++i) bytes += static_cast<char>(number >> 8 * i);
    };
    put(tags.size(), 2);
    for (const auto& [number, content] : tags) put(number, 2), put(4, 2), put(1, 4), put(content, 4);
    bytes.resize(kData + 48, '\0');
    return bytes;
}

TEST(RecordingReaderTest, RefusesWhatMakesNoSenseWithAReason) {
    const std::pair<std::string, const char*> files[] = {{"", "no such file"},  // and none is made
                                                         {" ", ""},
                                                         {MadeByHand(256, 70000), "a size of 70000 x 4"},
                                                         {MadeByHand(258, 12), "samples of 12 bits"},
                                                         {MadeByHand(277, 3), "3 samples a pixel"},
                                                         {MadeByHand(339, 3), "not whole numbers"},
                                                         {MadeByHand(262, 2), "no grey picture"},
                                                         {MadeByHand(273, 5000), "no whole frame"}};
    for (const auto& [bytes, reason] : files) {
        const TemporaryFile file(bytes);
        EXPECT_THAT([&] { RecordingReader reader(file.Path()); },
                    testing::ThrowsMessage<RecordError>(testing::HasSubstr(reason)));
    }
    // They are right but for what was changed in them.
    const TemporaryFile file(MadeByHand(259, 1));
    RecordingReader reader(file.Path());
    EXPECT_EQ(ReadAll(reader), std::vector<Picture>(1, Picture(24, 0)));
}

}  // namespace
}  // namespace zel::record::test
