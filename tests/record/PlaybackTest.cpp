// Recordings as simulated cameras: what an application receives through the whole SDK is the recording, to the bit.
#include <gmock/gmock.h>

#include <chrono>

#include "tests/record/RecordingFile.h"
#include "tests/support/Process.h"
#include "zel/Sdk.h"

namespace zel::record::test {

using namespace std::chrono_literals;
constexpr auto kWait = 60s;

// The SDK and its plug-ins are loaded anew by each test, and read the environment then.
struct Playback : testing::Test {
    Playback() { platform::SetEnvironment("ZEL_SIM_PACE", "none"); }
    ~Playback() override {
        for (const char* name : {"ZEL_SIM_SCENE", "ZEL_SIM_PLAY", "ZEL_SIM_PACE"}) platform::SetEnvironment(name, "");
    }

    void Play(const std::vector<Picture>& pictures, const RecordingFacts& facts, const char* how = "") {
        Record(m_File, facts, pictures);
        platform::SetEnvironment("ZEL_SIM_SCENE", m_File.Name().c_str());
        platform::SetEnvironment("ZEL_SIM_PLAY", how);
    }

    static Picture Next(Camera& camera) {
        const Frame frame = camera.wait_frame(kWait).take();
        return {frame.pixels().begin(), frame.pixels().end()};
    }

    TemporaryFile m_File;
};

TEST_F(Playback, EveryModelSendsTheRecordingToTheBitThroughAllItsTaps) {
    const struct {
        const char *model, *serial;
        unsigned width, height, bits;
        int phase;
        int largest_taps_idx;  // as far as the size can be divided
    } players[] = {{"L2048-4M", "300101", 64, 48, 14, 0, 2}, {"L2048-4M", "300101", 66, 47, 16, 0, 1},
                   {"L2048-4M", "300101", 65, 48, 8, 0, 0},  {"E150-2M", "400101", 64, 47, 12, 0, 1},
                   {"E150-2M", "400101", 33, 48, 12, 0, 0},  {"E150-2M", "400101", 64, 48, 14, 0, 0},
                   {"C400-C", "500101", 40, 30, 14, 1, 0},   {"C400-C", "500101", 41, 31, 14, 2, 0},
                   {"C400-C", "500101", 40, 30, 14, 3, 0},   {"A30-M", "500102", 17, 5, 14, 0, 0}};
    for (const auto& player : players) {
        SCOPED_TRACE(testing::Message() << player.model << " " << player.width << " x " << player.height);
        TemporaryFile file;
        const auto pictures = AnyPictures(3, player.width, player.height, player.bits);
        RecordingFacts facts{.width = player.width, .height = player.height, .bits = player.bits, .corrected = true};
        facts.cfa_phase = player.phase;
        facts.model = player.model;
        Record(file, facts, pictures);
        platform::SetEnvironment("ZEL_SIM_SCENE", file.Name().c_str());
        for (int taps = 0; taps <= player.largest_taps_idx; ++taps) {
            Sdk sdk;
            Camera camera = sdk.open(player.serial, {.calibrated = true});
            camera.set_calibration(true);
            EXPECT_EQ(camera.get(settings::sensor_width), player.width);
            EXPECT_EQ(camera.number(ZEL_PARAM_BITS_PER_PIXEL), player.bits);
            EXPECT_EQ(camera.is_monochrome(), player.phase == 0);
            EXPECT_EQ(camera.get(settings::exposure), 7ms);
            EXPECT_EQ(std::tuple(camera.number(ZEL_PARAM_GAIN), camera.number(ZEL_PARAM_FRAME_TIME)),
                      std::tuple(12, 1500));
            camera.parameter(ZEL_PARAM_TAPS_INDEX).set(taps);
            camera.start();
            for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(Next(camera), pictures[i % 3]) << taps << " " << i;
        }
        Sdk sdk;
        const Camera other = sdk.open(player.serial == std::string("300101") ? "400101" : "300101");
        EXPECT_GE(other.get(settings::sensor_width), 1600u) << "another model plays, too";
    }
}

TEST_F(Playback, OnceIsARunOfSoManyFramesAndLosesNoneWhileTheApplicationIsSlow) {
    const auto pictures = AnyPictures(20, 32, 16, 14);
    Play(pictures, {.width = 32, .height = 16, .bits = 14, .serial = "500102"}, "once");
    Sdk sdk;
    Camera camera = sdk.open("500102");
    camera.parameter(ZEL_PARAM_NUM_IMAGE_BUFFERS).set(2);
    for (int run = 0; run < 2; ++run) {
        camera.start();
        for (const Picture& picture : pictures) ASSERT_EQ(Next(camera), picture);
        EXPECT_EQ(camera.number(ZEL_PARAM_CAMSTATE), 0);
    }
}

TEST_F(Playback, AStackOfAnotherProgramIsPlayedByAllCameras) {
    const auto pictures = AnyPictures(2, 32, 16, 16);
    Play(pictures, {.width = 32, .height = 16, .bits = 16, .model = "of a maker unknown", .link = "carrier pigeon"});
    Sdk sdk;
    for (const CameraInfo& info : sdk.cameras()) {
        Camera camera = sdk.open(info.number);
        EXPECT_EQ(camera.get(settings::model), "of a maker unknown");
        camera.start();
        EXPECT_EQ(Next(camera), pictures[0]) << info.number;
    }
}

}  // namespace zel::record::test
