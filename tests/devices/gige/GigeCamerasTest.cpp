// GigE Vision cameras as an application uses them, over programs that are cameras (fake_gige_camera) on the loopback.
// Runs in a network of its own (private_network.sh); the library is the one in plugins/gige beside the program.
#include <gio/gio.h>
#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "devices/gige/CameraSession.h"
#include "devices/gige/Failure.h"
#include "platform/DynamicLibrary.h"
#include "zel/Zel.h"

namespace zel::gige {

namespace {

using testing::HasSubstr, testing::StartsWith;
using namespace std::chrono_literals;

constexpr const char* kMono = "Name=\"Bayer=>Name=\"Other";  // the one that Aravis has built in is a color camera

// Waits for a condition, for as long as a busy machine may take.
bool Eventually(const std::function<bool()>& condition) {
    for (int i = 0; i < 1500 && !condition(); ++i) std::this_thread::sleep_for(20ms);
    return condition();
}

class FakeCamera {
  public:
    FakeCamera(const std::string& end, const std::string& serial, std::vector<std::string> more)
        : m_Options(std::move(more)) {
        m_Options.insert(m_Options.end(), {"--address", "127.0.0." + end, "--serial", serial});
        Switch(true);
    }
    ~FakeCamera() { Switch(false); }

    void Switch(bool on) {
        if (m_Process) {
            g_subprocess_force_exit(m_Process.get());
            g_subprocess_wait(m_Process.get(), nullptr, nullptr);
        }
        m_Process.reset();
        if (!on) return;
        std::vector<const char*> words{"./fake_gige_camera"};
        for (const std::string& option : m_Options) words.push_back(option.c_str());
        words.push_back(nullptr);
        constexpr auto kPipes = G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_PIPE;
        m_Process.reset(g_subprocess_newv(words.data(), static_cast<GSubprocessFlags>(kPipes), nullptr));
        Answer();
    }
    void Write(const std::string& line) {
        const std::string text = "write " + line + "\n";
        GOutputStream* const input = g_subprocess_get_stdin_pipe(m_Process.get());
        g_output_stream_write_all(input, text.data(), text.size(), nullptr, nullptr, nullptr);
        Answer();
    }

  private:
    void Answer() {
        char answer[100];
        GInputStream* const output = g_subprocess_get_stdout_pipe(m_Process.get());
        ASSERT_GT(g_input_stream_read(output, answer, sizeof answer, nullptr, nullptr), 0);
    }

    std::vector<std::string> m_Options;
    ObjectPtr<GSubprocess> m_Process;
};

struct GigeCameras : testing::Test {
    // Searches take seconds: all cameras are on before the one that all tests share.
    static void SetUpTestSuite() {
        const auto add = [](const std::string& end, const std::string& serial, const std::vector<std::string>& more) {
            s_Fakes[end] = std::make_unique<FakeCamera>(end, serial, more);
        };
        // Its frames are small: on a busy machine the receive buffer holds seconds of them.
        add("1", "PLAIN",
            {"--size", "64x48", "--replace", kMono, "--replace",
             "</RegisterDescription>=><Float Name=\"DeviceTemperature\"><Value>31.54</Value></Float>"
             "</RegisterDescription>"});
        add("2", "LOSSY", {"--replace", kMono, "--size", "320x240", "--lost", "5"});
        for (const char* const end : {"3", "4", "6"}) add(end, "KILL" + std::string(end), {"--size", "64x48"});
        // What it has in place of an exposure time is a text.
        add("5", "NOEXPOSURE",
            {"--replace", "Name=\"ExposureTimeAbs\"=>Name=\"ExposureTimeless\"", "--replace",
             "Name=\"DeviceVersion\"=>Name=\"ExposureTime\"", "--size", "64x48"});
        s_Library = platform::LoadSharedLibrary("plugins/gige/libpleora_ebus.so");
        ASSERT_TRUE(s_Library);
        s_Sdk = std::make_unique<Sdk>();
    }
    static void TearDownTestSuite() {
        s_Sdk.reset();
        s_Fakes.clear();
        platform::UnloadSharedLibrary(s_Library);
    }

    // Sorted out by address, since serial numbers need not differ.
    static int Number(const std::string& address) {
        for (const CameraInfo& info : s_Sdk->cameras()) {
            if (info.addresses[0] == address) return info.number;
        }
        return -1;
    }
    static Camera Open(const std::string& end) { return s_Sdk->open(Number("127.0.0." + end)); }

    static inline std::map<std::string, std::unique_ptr<FakeCamera>> s_Fakes;
    static inline platform::LibraryHandle s_Library = nullptr;
    static inline std::unique_ptr<Sdk> s_Sdk;
};

// The fake camera sends the most significant byte of a sample first, and a ramp.
bool IsRamp(const Frame& frame) {
    const auto swapped = [](unsigned sample) { return (sample >> 8 | sample << 8) & 0xffff; };
    const auto pixels = frame.pixels();
    for (unsigned x = 1; x < frame.width(); ++x) {
        const unsigned step = swapped(pixels[x]) - swapped(pixels[x - 1]);
        if ((step & 0xffff) != 1 && swapped(pixels[x]) > 1) return false;
    }
    return frame.width() > 1;
}

// Why a camera can't be opened; empty when it can.
std::string ReasonOf(const std::string& address) try {
    const CameraSession session(address, [] {});
    return {};
} catch (const Failure& failure) {
    return failure.what();
}

TEST_F(GigeCameras, SettingsAreTheCamerasAndNoFrameIsLost) {
    Camera camera = Open("1");
    EXPECT_EQ(camera.info().serial, "PLAIN");
    EXPECT_EQ(camera.parameter("BITS_PER_PIXEL").value().text(), "16");
    EXPECT_EQ(camera.parameter("TEMPERATURE").value().text(), "315");
    camera.start({.frames = 200});
    for (unsigned i = 0; i < 200; ++i) {
        const FrameResult frame = camera.wait_frame(10s);
        ASSERT_TRUE(frame) << frame.no_frame().why();
        ASSERT_EQ(frame->number(), i);
        ASSERT_TRUE(IsRamp(*frame));
    }
    EXPECT_EQ(camera.link_drops(), 0u);
    camera.stop();
    camera.start({.trigger = Trigger::software});
    for (int i = 0; i < 5; ++i) camera.trigger();
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(camera.wait_frame(10s));
    EXPECT_FALSE(camera.try_frame(200ms)) << "one more than was triggered";
    camera.stop();

    EXPECT_THROW(camera.parameter("EXPOSURE_TIME_US").set(5LL), Error) << "10 is the least";
    EXPECT_TRUE(camera.parameter("EXPOSURE_TIME_US").set(2345LL).accepted);
    EXPECT_EQ(camera.command("get ExposureTimeAbs"), "2345.000000\r\n");
    // 0 to 10 of the camera's are 0 to 1023 of ours.
    EXPECT_THROW(camera.parameter("VGA_GAIN").set(500LL), Error) << "it has no such step";
    EXPECT_EQ(camera.parameter("VGA_GAIN").value().text(), "512");
    EXPECT_EQ(camera.command("get GainRaw"), "5.000000\r\n");
    for (const char* wrong : {"set Width 8", "set NoSuchFeature 8"})
        EXPECT_THAT(camera.command(wrong), StartsWith("ERR"));
}

TEST_F(GigeCameras, LostPacketsAreLostFramesAndAllAreCounted) {
    Camera camera = Open("2");
    camera.start();
    unsigned frames = 0, last = 0;
    for (; last < 100; ++frames) {
        const FrameResult frame = camera.wait_frame(10s);
        ASSERT_TRUE(frame) << frame.no_frame().why();
        EXPECT_TRUE(IsRamp(*frame));
        last = frame->number();
    }
    const std::string link = camera.command("link");
    camera.stop();
    EXPECT_GT(camera.link_drops(), 0u);
    EXPECT_GE(camera.link_drops(), last + 1 - frames);
    EXPECT_THAT(link, testing::AllOf(HasSubstr("incomplete"), testing::Not(HasSubstr("received, 0 missing"))));
}

TEST_F(GigeCameras, ASessionMayEndWhileItsLossIsBeingTold) {
    auto session = std::make_unique<CameraSession>("127.0.0.6", [] {});
    std::atomic<bool> told{false};
    const auto tell = [](GSignalInvocationHint*, guint, const GValue*, gpointer begun) -> gboolean {
        *static_cast<std::atomic<bool>*>(begun) = true;
        std::this_thread::sleep_for(500ms);
        return FALSE;
    };
    g_signal_add_emission_hook(g_signal_lookup("control-lost", g_type_from_name("ArvDevice")), 0, tell, &told, nullptr);
    s_Fakes["6"]->Switch(false);
    EXPECT_TRUE(Eventually([&] { return told.load(); }));
    session.reset();
    s_Fakes["6"]->Switch(true);
}

TEST_F(GigeCameras, ACameraThatDiesInAnyStateIsLostAndComesBack) {
    Camera running = Open("3");
    Camera waiting = Open("4");
    Camera idle = Open("5");
    EXPECT_EQ(running.parameter("COLOR_FILTER_PHASE").value().text(), "2") << "of BayerBG8, the first that it names";
    running.start();
    ASSERT_TRUE(running.wait_frame(10s));
    waiting.start({.trigger = Trigger::software});
    for (const char* const end : {"3", "4", "5", "6"}) s_Fakes.at(end)->Switch(false);
    for (Camera* const camera : {&running, &waiting, &idle}) {
        EXPECT_TRUE(Eventually([&] { return camera->link_lost(); }));
    }
    while (running.try_frame(0ms)) continue;
    EXPECT_EQ(running.wait_frame(10s).reason(), Reason::link_lost);
    EXPECT_TRUE(Eventually([] { return Number("127.0.0.6") < 0; })) << "a closed one is no more among those found";
    waiting.stop();
    for (const char* const end : {"3", "4", "5", "6"}) s_Fakes.at(end)->Switch(true);
    for (Camera* const camera : {&running, &waiting, &idle}) {
        ASSERT_TRUE(Eventually([&] { return !camera->link_lost(); }));
        camera->start({.trigger = Trigger::as_set});
        EXPECT_TRUE(camera->wait_frame(10s));
    }
    EXPECT_TRUE(Eventually([] { return Number("127.0.0.6") >= 0; }));
    EXPECT_TRUE(Open("6").snap());
}

// The camera's own registers change behind the back of the host that set them.
TEST_F(GigeCameras, FramesOfAnotherShapeAreNotTaken) {
    Camera camera = Open("6");
    camera.start();
    ASSERT_TRUE(camera.wait_frame(10s));
    s_Fakes.at("6")->Write("0x100 40");
    EXPECT_TRUE(Eventually([&] { return camera.link_drops() > 3; }));
    EXPECT_THAT(camera.command("link"), HasSubstr("the camera sends 40 x 48"));
    s_Fakes.at("6")->Write("0x100 64");
    while (camera.try_frame(0ms)) continue;
    EXPECT_TRUE(camera.wait_frame(10s)->width() == 64);
}

TEST_F(GigeCameras, OneThatMakesNoSenseIsRefusedWithTheReason) {
    const std::string no_format = "none of its pixel formats can be taken";
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"Name=\"Width\"=>Name=\"Breadth\""}, "Width makes no sense"},
        {{kMono, "Name=\"Mono=>Name=\"Poly"}, no_format},
        // Mono16 has the number of Mono8.
        {{kMono, "17825799=>17301505", "Name=\"Mono8\"=>Name=\"Poly8\""}, no_format}};
    for (const auto& [replacements, reason] : cases) {
        std::vector<std::string> options;
        for (const std::string& replacement : replacements) options.insert(options.end(), {"--replace", replacement});
        const FakeCamera liar("10", "LIAR", options);
        EXPECT_THAT(ReasonOf("127.0.0.10"), StartsWith(reason));
    }
    EXPECT_THAT(ReasonOf("127.0.0.11"), StartsWith("it does not answer"));
}

TEST_F(GigeCameras, AnotherProgramsCameraIsSaidToBe) {
    const CameraSession other("127.0.0.6", [] {});
    EXPECT_THAT([] { Open("6"); }, testing::ThrowsMessage<Error>(HasSubstr("ZEL_ERROR_UNSUPPORTED")));
}

// Run by private_network.sh before the network has an address.
TEST(NoNetwork, ThereAreNoCamerasAndThatIsSaidSoon) {
    const platform::LibraryHandle library = platform::LoadSharedLibrary("plugins/gige/libpleora_ebus.so");
    ASSERT_TRUE(library);
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(Sdk().cameras().size(), 0u);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, 60s);
    platform::UnloadSharedLibrary(library);
}

}  // namespace

}  // namespace zel::gige
