// Recordings and other programs' stacks as they are read, and files that are neither.
#include "record/RecordingReader.h"

#include <gmock/gmock.h>
#include <tiffio.h>

#include <cstring>

#include "record/FactsText.h"
#include "tests/record/RecordingFile.h"

namespace zel::record::test {
namespace {

std::vector<Picture> ReadAll(RecordingReader& reader) {
    std::vector<Picture> pictures(reader.Frames());
    for (std::size_t i = pictures.size(); i-- > 0;) {  // in another order than they lie in
        pictures[i].resize(std::size_t{reader.Facts().width} * reader.Facts().height);
        reader.Read(i, pictures[i]);
    }
    return pictures;
}

TEST(RecordingReaderTest, ReadsWhatWasRecorded) {
    for (const Compression compression : {Compression::kNone, Compression::kDeflate, Compression::kZstd}) {
        SCOPED_TRACE(static_cast<int>(compression));
        const auto pictures = AnyPictures(5, 31, 17, 14);
        RecordingFacts facts{.width = 31, .height = 17, .bits = 14, .cfa_phase = 3, .x_origin = 7};
        facts.model = "C400-C";
        const TemporaryFile file;
        Record(file, facts, pictures, true, compression);
        RecordingReader reader(file.Path());
        facts.started = "2026-11-22T04:31:00.000Z";
        EXPECT_TRUE(reader.IsRecording());
        EXPECT_EQ(ToText(reader.Facts()), ToText(facts));
        EXPECT_EQ(ReadAll(reader), pictures);
        EXPECT_EQ(reader.Frame(3).number, 3u);
        EXPECT_EQ(reader.Frame(3).host_ns, 6000000);
        ASSERT_TRUE(reader.End());
        EXPECT_EQ(reader.End()->frames, 5u);
        EXPECT_EQ(reader.CutOff(), "");
    }
}

// Cut off after any byte: each frame that is there whole is there.
TEST(RecordingReaderTest, ARecordingThatWasCutOffHasEveryWholeFrame) {
    const auto pictures = AnyPictures(4, 20, 12, 14);
    const TemporaryFile file;
    Record(file, {.width = 20, .height = 12, .bits = 14}, pictures, false);
    const std::string bytes = file.Bytes();
    std::size_t most = 0;
    for (std::size_t size = 0; size <= bytes.size();
         size += size == bytes.size() ? 1 : std::min<std::size_t>(151, bytes.size() - size)) {
        const TemporaryFile cut(bytes.substr(0, size));
        try {
            RecordingReader reader(cut.Path());
            const auto read = ReadAll(reader);
            EXPECT_TRUE(std::equal(read.begin(), read.end(), pictures.begin())) << size;
            EXPECT_FALSE(reader.End());
            EXPECT_GE(read.size(), most) << size;
            most = read.size();
        } catch (const RecordError&) {
            EXPECT_EQ(most, 0u) << size;
        }
    }
    EXPECT_EQ(most, pictures.size());
}

struct Foreign {
    const char* mode;
    std::uint32_t bits;
    std::uint32_t tile;  // 0: strips
    std::uint32_t rows;  // of a strip
    std::uint16_t compression;
    std::uint16_t light;
};

void WriteForeign(const TemporaryFile& file, const Foreign& kind, const std::vector<Picture>& pictures,
                  unsigned width) {
    TIFF* const tiff = TIFFOpen(platform::SystemPath(file.Name()).c_str(), kind.mode);
    ASSERT_NE(tiff, nullptr) << file.Name();
    const unsigned white = (1u << kind.bits) - 1;
    for (const Picture& picture : pictures) {
        const auto height = static_cast<unsigned>(picture.size() / width);
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, kind.bits);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, kind.compression);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, kind.light);
        const std::uint32_t columns = kind.tile ? kind.tile : width;
        const std::uint32_t rows = kind.tile ? kind.tile : kind.rows;
        if (kind.tile) {
            TIFFSetField(tiff, TIFFTAG_TILEWIDTH, columns);
            TIFFSetField(tiff, TIFFTAG_TILELENGTH, rows);
        } else {
            TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rows);
        }
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

// A classic file of one page, as its tags say. Numbers are of four bytes, texts of any length.
struct Tag {
    std::uint16_t number;
    std::uint32_t value;
    std::string text{};
};
constexpr std::uint32_t kData = 1000;  // where the samples of 6 x 4 pixels begin
constexpr std::uint32_t kSelf = 8;     // where the page begins

std::string MadeByHand(const std::vector<Tag>& changes, std::uint32_t next = 0) {
    std::vector<Tag> tags = {{256, 6},     {257, 4}, {258, 16}, {259, 1}, {262, 1},
                             {273, kData}, {277, 1}, {278, 4},  {279, 48}};
    for (const Tag& change : changes) {
        const auto same = std::ranges::find(tags, change.number, &Tag::number);
        same == tags.end() ? tags.push_back(change) : void(*same = change);
    }
    std::ranges::sort(tags, {}, &Tag::number);
    std::string bytes("II*\0", 4);
    std::string texts;
    const auto put = [&](std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> 8 * i);
    };
    put(kSelf, 4);
    put(static_cast<std::uint32_t>(tags.size()), 2);
    const std::size_t behind = bytes.size() + tags.size() * 12 + 4;
    for (const Tag& tag : tags) {
        put(tag.number, 2);
        put(tag.text.empty() ? 4 : 2, 2);
        put(tag.text.empty() ? 1 : static_cast<std::uint32_t>(tag.text.size() + 1), 4);
        put(tag.text.empty() ? tag.value : static_cast<std::uint32_t>(behind + texts.size()), 4);
        if (!tag.text.empty()) texts += tag.text + '\0';
    }
    put(next, 4);
    bytes += texts;
    bytes.resize(kData + 48, '\1');
    return bytes;
}

TEST(RecordingReaderTest, RefusesWhatMakesNoSenseWithAReason) {
    const std::string facts = R"({"width":6,"height":4,"bits":14})";
    const std::pair<std::string, const char*> files[] = {
        {"", "no such file"},  // and none is made
        {" ", ""},
        {std::string("II*\0\xFF\xFF\xFF\x7F", 8), ""},
        {MadeByHand({{256, 0}}), ""},
        {MadeByHand({{256, 70000}}), "a size of 70000 x 4"},
        {MadeByHand({{256, 65535}, {257, 65535}}), "a size of 65535 x 65535"},
        {MadeByHand({{257, 4000000000u}}), ""},
        {MadeByHand({{258, 12}}), "samples of 12 bits"},
        {MadeByHand({{258, 8}, {277, 3}}), "3 samples a pixel"},
        {MadeByHand({{339, 3}}), "not whole numbers"},
        {MadeByHand({{262, 2}}), "no grey picture"},
        {MadeByHand({{278, 0}}), ""},
        {MadeByHand({{32997, 5}}), ""},
        {MadeByHand({{273, 5000}}), "no whole frame"},
        {MadeByHand({{322, 20000}, {323, 20000}, {324, kData}, {325, 48}}), "tiles of 20000 x 20000"},
        {MadeByHand({{322, 0}, {323, 16}, {324, kData}, {325, 48}}), ""},
        {MadeByHand({{65200, 0, "{}"}}), "makes no sense"},
        {MadeByHand({{65200, 0, "no text of facts"}}), "makes no sense"},
        {MadeByHand({{65200, 0, R"({"width":6,"height":5})"}}), "makes no sense"},
        {MadeByHand({{65200, 0, R"({"width":6,"height":4,"bits":17})"}}), "makes no sense"},
        {MadeByHand({{65200, 0, R"({"width":6,"height":4,"bits":1e300})"}}), "makes no sense"},
        {MadeByHand({{65200, 0, R"({"width":6,"height":4,"cfa_phase":5})"}}), "makes no sense"}};
    for (const auto& [bytes, reason] : files) {
        const TemporaryFile file(bytes);
        try {
            RecordingReader reader(file.Path());
            ADD_FAILURE() << "taken: " << bytes.size() << " bytes instead of \"" << reason << '"';
        } catch (const RecordError& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr(reason));
            EXPECT_STRNE(error.what(), "");
        }
    }
    // What the files above are is right but for what was changed in them; and no circle of pages is followed for ever.
    for (const std::uint32_t next : {0u, kSelf, 7u, 4000000000u}) {
        const TemporaryFile file(MadeByHand({{65200, 0, facts}, {65201, 77}}, next));
        RecordingReader reader(file.Path());
        EXPECT_EQ(reader.Frames(), 1u) << next;
        EXPECT_EQ(reader.CutOff().empty(), next == 0) << reader.CutOff();
        EXPECT_EQ(ReadAll(reader), std::vector<Picture>(1, Picture(24, 0x0101)));
    }
}

}  // namespace
}  // namespace zel::record::test
