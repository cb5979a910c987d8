#include <gtest/gtest.h>

#include <algorithm>

#include "tests/util/FileTools.h"
#include "util/ZelUtilImpl.h"

namespace zel {
namespace {

using test::Bytes;

// Reads the head field by field, as the layout has it.
class TiffReader {
  public:
    explicit TiffReader(const Bytes& file) : m_File(file) {}
    unsigned At16(std::size_t offset) const { return m_File.at(offset) | unsigned{m_File.at(offset + 1)} << 8; }
    unsigned At32(std::size_t offset) const { return At16(offset) | At16(offset + 2) << 16; }

  private:
    const Bytes& m_File;
};

struct Entry {
    unsigned tag, type, value;
};
constexpr unsigned kShort = 3, kLong = 4, kRational = 5;

// The directory is not in the order of its tags: PlanarConfiguration (284) comes second.
void ExpectHead(const Bytes& file, unsigned width, unsigned height, unsigned rows_per_strip, unsigned pixel_bytes) {
    ASSERT_EQ(198u + pixel_bytes, file.size());
    const TiffReader reader(file);
    EXPECT_EQ('I', file[0]);
    EXPECT_EQ('I', file[1]);
    EXPECT_EQ(42u, reader.At16(2));
    EXPECT_EQ(8u, reader.At32(4));
    ASSERT_EQ(14u, reader.At16(8));
    const Entry entries[14] = {{254, kLong, 0},           {284, kShort, 1},
                               {256, kLong, width},       {257, kLong, height},
                               {258, kShort, 16},         {259, kShort, 1},
                               {262, kShort, 1},          {273, kLong, 198},
                               {277, kShort, 1},          {278, kShort, rows_per_strip},
                               {279, kLong, pixel_bytes}, {282, kRational, 182},
                               {283, kRational, 190},     {296, kShort, 2}};
    for (std::size_t i = 0; i < 14; ++i) {
        const std::size_t offset = 10 + 12 * i;
        EXPECT_EQ(entries[i].tag, reader.At16(offset)) << "entry " << i + 1;
        EXPECT_EQ(entries[i].type, reader.At16(offset + 2)) << "entry " << i + 1;
        EXPECT_EQ(1u, reader.At32(offset + 4)) << "entry " << i + 1;
        EXPECT_EQ(entries[i].value, reader.At32(offset + 8)) << "entry " << i + 1;
    }
    EXPECT_EQ(0u, reader.At32(178));
    for (std::size_t offset : {182u, 190u}) {
        EXPECT_EQ(1200000u, reader.At32(offset));
        EXPECT_EQ(1000u, reader.At32(offset + 4));
    }
}

TEST(TiffFile, PixelsFollowTheHeadAsTheyAreInMemory) {
    for (const auto& [width, height] :
         {std::pair{1u, 1u}, {3u, 2u}, {2048u, 5u}, {1u, 70000u}, {0u, 4u}, {700u, 1000u}}) {
        SCOPED_TRACE(testing::Message() << width << "x" << height);
        const test::TemporaryFile file(".tif");
        test::Frame frame(width, height);
        ASSERT_TRUE(UtilInstance()->SaveTIFF(file.Name(), frame.Image()));
        const Bytes contents = file.Contents();
        // A number of rows that exceeds 16 bits keeps its low half.
        ExpectHead(contents, width, height, height & 0xFFFF, width * height * 2);
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(frame.Samples().data());
        EXPECT_TRUE(std::equal(contents.begin() + 198, contents.end(), bytes));
    }
}

// The head says 16 bits whatever `bytes_per_pixel` says, which only decides how many bytes follow.
TEST(TiffFile, BytesPerPixelDecidesTheLengthAlone) {
    for (unsigned bytes_per_pixel : {0u, 1u, 2u, 4u}) {
        const test::TemporaryFile file(".tif");
        test::Frame frame(4, 8);
        frame->h = 4;
        frame->bytes_per_pixel = bytes_per_pixel;
        ASSERT_TRUE(UtilInstance()->SaveTIFF(file.Name(), frame.Image()));
        ExpectHead(file.Contents(), 4, 4, 4, 16 * bytes_per_pixel);
    }
}

TEST(TiffFile, AnExistingFileIsReplaced) {
    const test::TemporaryFile file(".tif");
    test::Frame large(64, 64), small(1, 1);
    ASSERT_TRUE(UtilInstance()->SaveTIFF(file.Name(), large.Image()));
    ASSERT_TRUE(UtilInstance()->SaveTIFF(file.Name(), small.Image()));
    EXPECT_EQ(200u, file.Contents().size());
}

}  // namespace
}  // namespace zel
