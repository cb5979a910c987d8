// What is in the file while it is written, and when it can't be.
#include "record/RecordingWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "record/RecordingReader.h"
#include "tests/record/RecordingFile.h"

namespace zel::record {
namespace {

using test::AnyPictures;
using test::Picture;
using test::TemporaryFile;

RecordingFacts FactsOf(unsigned width, unsigned height) {
    RecordingFacts facts;
    facts.width = width;
    facts.height = height;
    facts.bits = 14;
    return facts;
}

class RecordingWriterTest : public testing::TestWithParam<Compression> {};

// Whenever the program is killed, it is between two of these.
TEST_P(RecordingWriterTest, TheFileIsWholeAfterEveryFrame) {
    const std::vector<Picture> pictures = AnyPictures(40, 61, 33, 14);
    const TemporaryFile file;
    RecordingWriter writer(file.Path(), FactsOf(61, 33), {.compression = GetParam()});
    for (std::uint32_t i = 0; i < pictures.size(); ++i) {
        writer.Add(pictures[i], {.number = i});
        const TemporaryFile now(file.Bytes());
        RecordingReader reader(now.Path());
        ASSERT_EQ(reader.Frames(), i + 1);
        EXPECT_EQ(reader.Frame(i).number, i);
        EXPECT_FALSE(reader.End());
        Picture samples(pictures[i].size());
        reader.Read(i, samples);
        ASSERT_EQ(samples, pictures[i]);
        EXPECT_EQ(std::filesystem::file_size(now.Path()), writer.Bytes());
    }
}

INSTANTIATE_TEST_SUITE_P(Compressions, RecordingWriterTest,
                         testing::Values(Compression::kNone, Compression::kDeflate, Compression::kZstd));

TEST(RecordingWriterFileTest, NothingIsOverwrittenAndWhatMakesNoSenseIsRefused) {
    const std::vector<Picture> pictures = AnyPictures(2, 64, 48, 12);
    const TemporaryFile file;
    RecordingWriter writer(file.Path(), FactsOf(64, 48), {});
    EXPECT_THROW(RecordingWriter(file.Path(), FactsOf(64, 48), {}), FileTakenError);
    for (const Picture& picture : pictures) writer.Add(picture, {});
    EXPECT_THROW(writer.Add(Picture(7), {}), RecordError);
    EXPECT_THROW(writer.Describe(FactsOf(1, 1)), RecordError);
    writer.Finish({.reason = "frames"});
    EXPECT_THROW(writer.Add(pictures[0], {}), RecordError);
    const RecordingReader reader(file.Path());
    EXPECT_EQ(reader.Frames(), 2u);
    ASSERT_TRUE(reader.End());
    EXPECT_EQ(reader.End()->frames, 2u);
}

}  // namespace
}  // namespace zel::record
