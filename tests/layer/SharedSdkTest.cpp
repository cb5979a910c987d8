// Two libraries of one program that both have the layer: the program itself, and one beside it.
#include "tests/layer/LayerFixture.h"

extern "C" void ZEL_CALL other_open_sdk();
extern "C" void ZEL_CALL other_close_sdk();
extern "C" void ZEL_CALL other_close_camera();
extern "C" bool ZEL_CALL other_open_camera(int number);
extern "C" bool ZEL_CALL other_snap();

namespace zel::test {
namespace {

class LayerInTwoLibraries : public LayerTest {};

TEST_F(LayerInTwoLibraries, TheSdkStaysOpenForTheOneThatStillUsesIt) {
    other_open_sdk();
    ASSERT_TRUE(other_open_camera(kColor));
    sdk.reset();
    EXPECT_TRUE(other_snap());
    other_close_sdk();
    EXPECT_TRUE(other_snap()) << "its camera keeps it";
    sdk.emplace();
    Running();
    other_close_camera();
    EXPECT_TRUE(camera->snap());
    camera.reset();
    sdk.reset();
    EXPECT_EQ(zel_set_camera_connect_callback(nullptr, nullptr), 0) << "nobody uses it, and it is open";
}

TEST_F(LayerInTwoLibraries, ACameraHasOneOwner) {
    other_open_sdk();
    Frame frame = Running().snap();
    EXPECT_FALSE(other_open_camera(kMono));
    camera.reset();
    EXPECT_FALSE(other_open_camera(kMono)) << "a frame of it is held";
    frame.reset();
    ASSERT_TRUE(other_open_camera(kMono));
    EXPECT_THROW(sdk->open(kMono), Error);
    EXPECT_TRUE(other_snap());
    other_close_camera();
    EXPECT_TRUE(Running().snap());
    other_close_sdk();
}

}  // namespace
}  // namespace zel::test
