// Pictures as scenes: decoding, scaling, and files that are no pictures.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "sim/Scene.h"
#include "tests/sensor/FrameStatistics.h"
#include "tests/sensor/PictureFile.h"

namespace zel::sim::test {
namespace {

std::vector<Rgb> WholeScene(const Scene& scene, unsigned width, unsigned height) {
    std::vector<Rgb> pixels(static_cast<std::size_t>(width) * height);
    for (unsigned y = 0; y < height; ++y) {
        scene.Row(y, std::span(pixels).subspan(static_cast<std::size_t>(y) * width, width));
    }
    return pixels;
}

std::vector<Rgb> SceneOf(FileKind kind, int picture_width, int picture_height, const ColorAt& color, unsigned width,
                         unsigned height) {
    const TemporaryFile file("scene.dat", EncodePicture(kind, picture_width, picture_height, color));
    testing::internal::CaptureStderr();
    const auto scene = MakeScene(file.Path(), width, height);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    return WholeScene(*scene, width, height);
}

double LinearLight(int sample) {
    const double v = sample / 255.0;
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

TEST(SceneFileTest, SamplesBecomeLinearLight) {
    const auto color = [](int x, int y) {
        return Color8{static_cast<std::uint8_t>(x * 8), static_cast<std::uint8_t>(y * 8),
                      static_cast<std::uint8_t>(255 - x)};
    };
    const auto pixels = SceneOf(FileKind::kPng, 32, 32, color, 32, 32);
    for (int i = 0; i < 32 * 32; ++i) {
        const auto expected = color(i % 32, i / 32);
        const Rgb& pixel = pixels[static_cast<std::size_t>(i)];
        ASSERT_NEAR(pixel.r, LinearLight(expected[0]), 1e-6) << i;
        ASSERT_NEAR(pixel.g, LinearLight(expected[1]), 1e-6) << i;
        ASSERT_NEAR(pixel.b, LinearLight(expected[2]), 1e-6) << i;
    }
}

TEST(SceneFileTest, JpegFilesAreReadToo) {
    const auto pixels = SceneOf(
        FileKind::kJpeg, 32, 16,
        [](int x, int) {
            return x < 16 ? Color8{200, 40, 40} : Color8{40, 40, 200};
        },
        32, 16);
    const Rgb& left = pixels[8 * 32 + 4];
    const Rgb& right = pixels[8 * 32 + 28];
    EXPECT_NEAR(left.r, LinearLight(200), 0.03);
    EXPECT_NEAR(left.b, LinearLight(40), 0.03);
    EXPECT_NEAR(right.r, LinearLight(40), 0.03);
    EXPECT_NEAR(right.b, LinearLight(200), 0.03);
}

// A fine checker averages to half the light, not to half the sample value.
TEST(SceneFileTest, ALargePictureIsAveragedInLinearLight) {
    const auto checker = [](int x, int y) { return (x + y) % 2 ? Color8{255, 255, 255} : Color8{0, 0, 0}; };
    for (const unsigned side : {32u, 16u, 64u}) {
        for (const Rgb& pixel : SceneOf(FileKind::kPng, 128, 128, checker, side, side))
            ASSERT_NEAR(pixel.g, 0.5, 1e-5) << side;
    }
    // 3 samples on 2 pixels: each pixel holds one sample and half of the middle one.
    const auto thirds = SceneOf(
        FileKind::kPng, 3, 3,
        [](int x, int) {
            return x == 0 ? Color8{255, 0, 0} : x == 1 ? Color8{0, 255, 0} : Color8{0, 0, 255};
        },
        2, 2);
    EXPECT_NEAR(thirds[0].r, 2.0 / 3.0, 1e-5);
    EXPECT_NEAR(thirds[0].g, 1.0 / 3.0, 1e-5);
    EXPECT_NEAR(thirds[1].g, 1.0 / 3.0, 1e-5);
    EXPECT_NEAR(thirds[1].b, 2.0 / 3.0, 1e-5);
}

TEST(SceneFileTest, ASmallPictureIsInterpolated) {
    const auto pixels = SceneOf(
        FileKind::kPng, 2, 2,
        [](int x, int) {
            return x ? Color8{255, 255, 255} : Color8{0, 0, 0};
        },
        8, 8);
    const double expected[] = {0.0, 0.0, 0.125, 0.375, 0.625, 0.875, 1.0, 1.0};
    for (std::size_t i = 0; i < pixels.size(); ++i) ASSERT_NEAR(pixels[i].g, expected[i % 8], 1e-5) << i;
}

// Bands of red, green, blue, each a third of the picture's long side: the frame is filled by the middle.
TEST(SceneFileTest, ThePictureFillsTheFrameAndLosesItsEndsEvenly) {
    const auto band = [](int place) {
        return place < 20 ? Color8{255, 0, 0} : place < 40 ? Color8{0, 255, 0} : Color8{0, 0, 255};
    };
    const auto wide = SceneOf(
        FileKind::kPng, 60, 20, [&](int x, int) { return band(x); }, 10, 10);
    for (const Rgb& pixel : wide) ASSERT_NEAR(pixel.g, 1.0, 1e-5);
    const auto tall = SceneOf(
        FileKind::kPng, 20, 60, [&](int, int y) { return band(y); }, 10, 20);
    for (std::size_t i = 0; i < 10; ++i) {
        ASSERT_NEAR(tall[i].r, 1.0, 1e-5);  // 40 of 60 rows are seen, 10 of them red
        ASSERT_NEAR(tall[4 * 10 + i].r, 1.0, 1e-5);
        ASSERT_NEAR(tall[5 * 10 + i].g, 1.0, 1e-5);
        ASSERT_NEAR(tall[14 * 10 + i].g, 1.0, 1e-5);
        ASSERT_NEAR(tall[15 * 10 + i].b, 1.0, 1e-5);
    }
}

TEST(SceneFileTest, EveryCombinationOfSizesStaysInsideThePicture) {
    const auto white = [](int, int) { return Color8{255, 255, 255}; };
    for (const auto& [pw, ph] : {std::pair{1, 1}, std::pair{3, 1}, std::pair{1, 7}, std::pair{13, 11}}) {
        for (const auto& [w, h] :
             {std::pair{1u, 1u}, std::pair{1u, 9u}, std::pair{9u, 1u}, std::pair{10u, 3u}, std::pair{31u, 29u}}) {
            for (const Rgb& pixel : SceneOf(FileKind::kPng, pw, ph, white, w, h))
                ASSERT_NEAR(pixel.r, 1.0, 1e-5) << pw << "x" << ph;
        }
    }
}

TEST(SceneFileTest, AFileNameMayHoldAnyLetters) {
    const TemporaryFile file("gr\xC3\xBC\xC3\x9F.png", EncodePicture(FileKind::kPng, 1, 1, [](int, int) {
                                 return Color8{255, 0, 0};
                             }));
    const auto pixels = WholeScene(*MakeScene(file.Path(), 2, 2), 2, 2);
    EXPECT_NEAR(pixels[0].r, 1.0, 1e-6);
    EXPECT_EQ(pixels[0].g, 0.0f);
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
