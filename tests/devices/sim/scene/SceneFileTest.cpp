// Pictures as scenes: decoding, scaling, and files that are no pictures.
#include <gtest/gtest.h>

#include <filesystem>

#include "devices/sim/scene/Scene.h"
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

class UnreadableSceneTest : public testing::TestWithParam<const char*> {
  protected:
    static std::vector<char> Bytes(const std::string& kind) {
        auto png = EncodePicture(FileKind::kPng, 40, 40, [](int x, int y) {
            return Color8{static_cast<std::uint8_t>(x * y), 5, 9};
        });
        if (kind == "Empty") return {};
        if (kind == "Text") return {'h', 'e', 'l', 'l', 'o'};
        if (kind == "CutShort") png.resize(png.size() / 2);
        if (kind == "HeaderOnly") png.resize(33);
        if (kind == "HugeSize") png[16] = png[20] = 0x7F;  // bytes 16..23 are width and height, high byte first
        if (kind == "BadBlock") png[43] = static_cast<char>(0xFF);  // in the compressed data
        return png;
    }
};

TEST_P(UnreadableSceneTest, CostsALineAndGivesTheBuiltInScene) {
    const TemporaryFile file("broken.png", Bytes(GetParam()));
    std::string path = file.Path();
    if (std::string(GetParam()) == "Missing") path += ".missing";
    if (std::string(GetParam()) == "Folder") path = std::filesystem::temp_directory_path().string();
    SensorModel model;
    model.width = 40;
    model.height = 30;
    Sensor builtin(model);
    model.scene = path;
    Sensor broken(model);
    testing::internal::CaptureStderr();
    const Frame frame = RenderFrame(broken, {}, 1);
    RenderFrame(broken, {}, 2);
    const std::string line = testing::internal::GetCapturedStderr();
    EXPECT_EQ(line.find("scene \"" + path + "\" can't be read ("), 0u) << line;
    EXPECT_EQ(line.find('\n'), line.size() - 1) << line;  // one line, once
    EXPECT_EQ(frame, RenderFrame(builtin, {}, 1));
}

INSTANTIATE_TEST_SUITE_P(Sensor, UnreadableSceneTest,
                         testing::Values("Missing", "Folder", "Empty", "Text", "CutShort", "HeaderOnly", "HugeSize",
                                         "BadBlock"),
                         [](const auto& param) { return std::string(param.param); });

}  // namespace
}  // namespace zel::sim::test
