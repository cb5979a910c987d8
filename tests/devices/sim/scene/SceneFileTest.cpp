// Pictures as scenes: decoding, scaling, and files that are no pictures.
#include <gtest/gtest.h>

#include "devices/sim/scene/Scene.h"
#include "platform/UserTexts.h"
#include "tests/devices/sim/scene/PictureFile.h"
#include "tests/devices/sim/sensor/FrameStatistics.h"

namespace zel::sim::test {
namespace {

// A fine checker averages to half the light, not to half the sample value. File names are UTF-8 on every system.
TEST(SceneFileTest, ALargePictureIsAveragedInLinearLight) {
    const TemporaryFile file("gr\xC3\xBC\xC3\x9F.png", EncodePicture(FileKind::kPng, 128, 128, [](int x, int y) {
                                 return (x + y) % 2 ? Color8{255, 255, 255} : Color8{0, 0, 0};
                             }));
    const auto scene = MakeScene(file.Path(), 32, 32);
    std::vector<Rgb> row(32);
    for (unsigned y = 0; y < 32; ++y) {
        scene->Row(y, row);
        for (const Rgb& pixel : row) ASSERT_NEAR(pixel.g, 0.5, 1e-5) << y;
    }
}

TEST(SceneFileTest, AnUnreadableOneCostsALineAndGivesTheBuiltInScene) {
    SensorModel model = ModelOf(40, 30);
    Sensor builtin(model);
    const Frame expected = RenderFrame(builtin, {}, 1);
    const auto png = EncodePicture(FileKind::kPng, 40, 40, [](int x, int y) {
        return Color8{static_cast<std::uint8_t>(x * y), 5, 9};
    });
    const std::vector<char> cut_short(png.begin(), png.begin() + static_cast<std::ptrdiff_t>(png.size() / 2));
    // Bytes 16 to 23 are width and height, high byte first: 16384 x 16384 samples take gigabytes.
    std::vector<char> huge = png;
    huge[18] = huge[22] = 16384 >> 8;
    huge[19] = huge[23] = 0;
    const TemporaryFile files[] = {{"text.png", {'h', 'e', 'l', 'l', 'o'}}, {"cut.png", cut_short}, {"huge.png", huge}};
    const std::pair<std::string, std::string> cases[] = {
        {files[0].Path() + ".missing", "no such file"},
        {platform::Utf8Text(std::filesystem::temp_directory_path()), "no such file"},
        {files[0].Path(), "unknown image type"},
        {files[1].Path(), ""},
        {files[2].Path(), "16384 x 16384 pixels are too many, at most 67108864"}};
    for (const auto& [path, reason] : cases) {
        model.scene = path;
        Sensor broken(model);
        testing::internal::CaptureStderr();
        const Frame frame = RenderFrame(broken, {}, 1);
        RenderFrame(broken, {}, 2);
        const std::string line = testing::internal::GetCapturedStderr();
        EXPECT_EQ(line.find("scene \"" + path + "\" can't be read (" + reason), 0u) << line;
        EXPECT_EQ(line.find('\n'), line.size() - 1) << line;  // one line, once
        EXPECT_EQ(frame, expected) << path;
    }
}

}  // namespace
}  // namespace zel::sim::test
