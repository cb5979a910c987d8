// Finding, setting and saving over simulated cameras.
#include <gmock/gmock.h>

#include <functional>

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

TEST_F(LayerCameras, SettingsAreReadBackOrRefused) {
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
    for (const auto& [action, kind] : std::initializer_list<std::pair<std::function<void()>, ErrorKind>>{
             {[&] { camera->set(settings::gain, 5000u); }, ErrorKind::refused},
             {[&] { camera->parameter("GAIN").set("many"); }, ErrorKind::invalid_argument},
             {[&] {
                  camera->set_region({1, 0, 64, 48});
              },
              ErrorKind::refused}}) {
        try {
            action();
            ADD_FAILURE();
        } catch (const Error& error) {
            EXPECT_EQ(error.kind(), kind) << error.what();
        }
    }
    EXPECT_FALSE(camera->parameter("GAIN").try_set(5000)) << "the same without a throw";
    camera->set_region_and_binning(std::array{Region{8, 4, 32, 16}}.data(), std::array{Binning{2, 4}}.data());
    const Frame frame = camera->snap();
    EXPECT_EQ(std::tuple(frame.width(), frame.height()), std::tuple(16u, 4u));
    EXPECT_EQ(frame.info().region, (Region{8, 4, 32, 16}));
}

}  // namespace
}  // namespace zel::test
