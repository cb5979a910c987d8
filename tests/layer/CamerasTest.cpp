// Finding, setting and saving over simulated cameras.
#include <gmock/gmock.h>

#include <filesystem>

#include "tests/layer/LayerFixture.h"

namespace zel::test {
namespace {

using testing::HasSubstr;

class LayerCameras : public LayerTest {};

TEST_F(LayerCameras, AreFoundDescribedAndOpenedOnce) {
    const CameraInfo info = sdk->cameras().at(kMono);
    EXPECT_EQ(std::tuple(info.number, info.name, info.serial, info.interface_type),
              std::tuple(+kMono, "Simulated A30-M", "500102", "USB 3.0"));
    EXPECT_THAT(info.addresses, testing::ElementsAre("bus 1", "device 2", "simulated"));
    Opened();
    EXPECT_EQ(std::tuple(camera->label(), camera->info().serial, camera->is_monochrome()),
              std::tuple("camera 3", "500102", true));
    const Sdk other;
    EXPECT_THROW(static_cast<void>(Sdk().open("500102")), Error);
    EXPECT_THROW(static_cast<void>(sdk->open("300199")), Error);
    *camera = sdk->open("500101");
    EXPECT_EQ(sdk->open(kMono).info().number, +kMono) << "another one took its place, which closed it";
    EXPECT_THAT(sdk->version(), HasSubstr("zel_sdk"));
    EXPECT_THAT(camera->command("no such command"), HasSubstr("ERR"));
}

TEST_F(LayerCameras, SettingsAreReadBackAndRefusalsSayWhy) {
    Opened();
    EXPECT_EQ(camera->get(settings::exposure), 1ms);
    EXPECT_EQ(camera->set(settings::exposure, 20ms).text(),
              "EXPOSURE_TIME_US: requested 20000 -> actual 20000 us (range 1..2000000000)");
    EXPECT_EQ(camera->get(settings::exposure), 20ms);
    camera->set(settings::camera_name, "left eye");
    EXPECT_EQ(camera->get(settings::camera_name), "left eye");
    camera->set(settings::camera_name, "Simulated A30-M");
    EXPECT_EQ(camera->get(settings::model), "A30-M");
    EXPECT_NEAR(camera->get(settings::temperature), 25.0, 40.0);
    const std::tuple<std::function<void()>, ErrorKind, const char*> refused[] = {
        {[&] { camera->set(settings::gain, 5000u); }, ErrorKind::refused,
         "requested 5000 -> actual 0 (range 0..1023): "
         "the value is out of range"},
        {[&] { camera->set(settings::sensor_width, 32u); }, ErrorKind::refused, "it is read-only"},
        {[&] { camera->parameter("EXPOSRUE_TIME"); }, ErrorKind::invalid_argument, "did you mean EXPOSURE_TIME"},
        {[&] { camera->parameter("GAIN").set("many"); }, ErrorKind::invalid_argument, "not a whole number"},
        {[&] { camera->parameter(99999u); }, ErrorKind::invalid_argument, "no parameter '99999'"},
        {[&] {
             camera->set_region({1, 0, 64, 48});
         },
         ErrorKind::refused, "not within the frame of 64x48"},
        {[&] { camera->use_color(); }, ErrorKind::refused, "it is a monochrome camera"},
    };
    for (const auto& [action, kind, part] : refused) {
        try {
            action();
            ADD_FAILURE() << part;
        } catch (const Error& error) {
            EXPECT_EQ(error.kind(), kind) << error.what();
            EXPECT_THAT(error.what(), HasSubstr(part));
        }
    }
    EXPECT_FALSE(camera->parameter("GAIN").try_set(5000)) << "the same without a throw";
    camera->set_region_and_binning(std::array{Region{8, 4, 32, 16}}.data(), std::array{Binning{2, 4}}.data());
    const Frame frame = camera->snap();
    EXPECT_EQ(std::tuple(frame.width(), frame.height()), std::tuple(16u, 4u));
    EXPECT_EQ(frame.info().region, (Region{8, 4, 32, 16}));
}

TEST_F(LayerCameras, ColorPicturesComeAsAskedForAndNeverHalf) {
    camera.emplace(sdk->open(kColor));
    for (const ColorFormat format : {ColorFormat::rgb16, ColorFormat::rgb8, ColorFormat::rgba8}) {
        const ColorSetting setting = camera->use_color({format, ColorSpace::srgb});
        const Frame frame = camera->snap();
        ASSERT_TRUE(frame.color());
        EXPECT_EQ(frame.color_bytes().size(), 64u * 48u * setting.channels() * setting.bytes_per_channel());
        EXPECT_EQ(frame.color16().empty(), format != ColorFormat::rgb16);
        EXPECT_EQ(frame.color8().empty(), format == ColorFormat::rgb16);
        EXPECT_EQ(frame.copy().color.size(), frame.color_bytes().size());
    }
    camera->set_binning({2, 2});
    EXPECT_THROW(camera->start(), Error) << "color frames are not binned";
    camera->use_grey();
    EXPECT_THROW(camera->use_color(), Error);
    EXPECT_FALSE(camera->snap().color());
}

TEST_F(LayerCameras, FilesAreWholeOrAnError) {
    camera.emplace(sdk->open(kColor));
    const Frame grey = camera->snap();
    camera->use_color();
    const Frame color = camera->snap();
    const auto expect = [](const Frame& frame, const std::string& name, ErrorKind kind) {
        try {
            save(frame, name);
            ADD_FAILURE() << name;
        } catch (const Error& error) {
            EXPECT_EQ(error.kind(), kind) << error.what();
        }
    };
    for (const char* name : {"layer_picture.tif", "layer_picture.PNG", "layer_picture.tiff"}) {
        for (const Frame* frame : {&grey, &color}) {
            save(*frame, name);
            EXPECT_GT(std::filesystem::file_size(name), 60u) << name;
            std::filesystem::remove(name);
            expect(*frame, "no_such_folder/" + std::string(name), ErrorKind::output);
#ifdef __linux__
            std::filesystem::create_symlink("/dev/full", name);
            expect(*frame, name, ErrorKind::output);
            std::filesystem::remove(name);
#endif
        }
    }
    expect(grey, "layer_picture.bmp", ErrorKind::invalid_argument);
}

}  // namespace
}  // namespace zel::test
