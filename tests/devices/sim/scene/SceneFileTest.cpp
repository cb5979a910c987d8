// Pictures as scenes: decoding, scaling, and files that are no pictures.
#include <gtest/gtest.h>

#include "devices/sim/scene/Scene.h"
#include "tests/devices/sim/scene/PictureFile.h"
#include "tests/devices/sim/sensor/FrameStatistics.h"

namespace zel::sim::test {

// A fine checker averages to half the light, not to half the sample value.
TEST(SceneFileTest, ALargePictureIsAveragedInLinearLight) {
    const auto checker = [](int x, int y) { return (x + y) % 2 ? Color8{255, 255, 255} : Color8{0, 0, 0}; };
    const TemporaryFile file(EncodePicture(FileKind::kPng, 128, 128, checker), ".png");
    const auto scene = MakeScene(file.Name(), 32, 32);
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
    const auto color = [](int x, int y) { return Color8{static_cast<std::uint8_t>(x * y), 5, 9}; };
    const std::string png = EncodePicture(FileKind::kPng, 40, 40, color);
    // Bytes 16 to 23 are width and height, high byte first: 16384 x 16384 samples take gigabytes.
    std::string huge = png;
    huge[18] = huge[22] = 16384 >> 8;
    huge[19] = huge[23] = 0;
    const TemporaryFile missing, text("hello"), cut(png.substr(0, png.size() / 2)), large(huge);
    const std::pair<std::string, std::string> cases[] = {
        {missing.Name(), "no such file"},
        {platform::Utf8Text(missing.Path().parent_path()), "no such file"},
        {text.Name(), "unknown image type"},
        {cut.Name(), ""},
        {large.Name(), "16384 x 16384 pixels are too many, at most 67108864"}};
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

}  // namespace zel::sim::test
