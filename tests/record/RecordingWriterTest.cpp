// What is in the file while it is written, and when it can't be.
#include "record/RecordingWriter.h"

#include <gtest/gtest.h>

#include "record/FactsText.h"
#include "tests/record/RecordingFile.h"

namespace zel::record::test {

// Whenever the program is killed, it is between two frames.
TEST(RecordingWriterTest, TheFileIsWholeAfterEveryFrameAndReadsBackAsItWasWritten) {
    const std::vector<Picture> pictures = AnyPictures(40, 61, 33, 14);
    for (const Compression compression : {Compression::kNone, Compression::kDeflate, Compression::kZstd}) {
        SCOPED_TRACE(static_cast<int>(compression));
        RecordingFacts facts{.width = 61, .height = 33, .bits = 14, .cfa_phase = 3, .x_origin = 7, .model = "C400-C"};
        facts.started = "2026-11-22T04:31:00.000Z";
        const TemporaryFile file;
        RecordingWriter writer(file.Path(), facts, {.compression = compression});
        for (std::uint32_t i = 0; i < pictures.size(); ++i) {
            writer.Add(pictures[i], {.number = i, .host_ns = std::int64_t{i} * 1000});
            const TemporaryFile now(zel::test::FileText(file.Path()));
            RecordingReader reader(now.Path());
            ASSERT_EQ(reader.Frames(), i + 1);
            EXPECT_EQ(std::pair(reader.Frame(i).number, reader.Frame(i).host_ns), std::pair(i, std::int64_t{i} * 1000));
            EXPECT_FALSE(reader.End());
            ASSERT_EQ(ReadAll(reader).at(i), pictures[i]);
            EXPECT_EQ(std::filesystem::file_size(now.Path()), writer.Bytes());
        }
        writer.Finish({.reason = "frames"});
        RecordingReader reader(file.Path());
        EXPECT_TRUE(reader.IsRecording());
        EXPECT_EQ(ReadAll(reader), pictures);
        EXPECT_EQ(ToText(reader.Facts()), ToText(facts));
        EXPECT_EQ(reader.End()->frames, pictures.size());
        EXPECT_EQ(reader.CutOff(), "");
    }
}

TEST(RecordingWriterTest, NothingIsOverwrittenAndWhatMakesNoSenseIsRefused) {
    const std::vector<Picture> pictures = AnyPictures(2, 64, 48, 12);
    const RecordingFacts facts{.width = 64, .height = 48, .bits = 12};
    const TemporaryFile file;
    RecordingWriter writer(file.Path(), facts, {});
    EXPECT_THROW(RecordingWriter(file.Path(), facts, {}), FileTakenError);
    for (const Picture& picture : pictures) writer.Add(picture, {});
    EXPECT_THROW(writer.Add(Picture(7), {}), RecordError);
    EXPECT_THROW(writer.Describe({.width = 1, .height = 1, .bits = 12}), RecordError);
    writer.Finish({.reason = "frames"});
    EXPECT_THROW(writer.Add(pictures[0], {}), RecordError);
    EXPECT_EQ(RecordingReader(file.Path()).Frames(), 2u);
}

}  // namespace zel::record::test
