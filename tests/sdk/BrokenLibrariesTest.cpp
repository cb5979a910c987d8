// Libraries that lack a required export: they contribute nothing and are unloaded.
#include "tests/sdk/SdkFixture.h"

namespace zel::test {
namespace {

TEST(BrokenLibraries, ContributeNothing) {
    RecordedLog log;
    ZelSDK* sdk = zel_create_sdk();
    ASSERT_TRUE(sdk->Open());
    {
        const PluginHold edt("edt_camera_link.dll");
        edt->mark = 42;
        edt->num_cameras = 2;
        EXPECT_EQ(0, sdk->GetNumberOfCameras());
        EXPECT_EQ(0, edt->unloads);
    }
    EXPECT_FALSE(LoadedWithoutUs("edt_camera_link.dll"));
    const std::vector<std::string> errors = log.Messages("ZelCameraManager", 0);
    ASSERT_EQ(3u, errors.size());
    // The three pointers of each library, null for the export that it lacks.
    const char* const exports[] = {"get_num_cameras:", "create_camera_interface:", "destroy_camera_interface:"};
    const int lacks[] = {2, 0, 1};
    for (std::size_t library = 0; library < 3; ++library) {
        for (int i = 0; i < 3; ++i) {
            const bool null = errors[library].find(exports[i] + std::string("0x00000000")) != std::string::npos;
            EXPECT_EQ(i == lacks[library], null) << errors[library];
            EXPECT_THAT(errors[library], testing::HasSubstr(exports[i] + std::string("0x")));
        }
    }
    zel_destroy_sdk(sdk);
}

}  // namespace
}  // namespace zel::test
