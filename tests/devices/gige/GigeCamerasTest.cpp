// GigE Vision cameras as an application uses them, over programs that are cameras (fake_gige_camera) on the loopback.
// Runs in a network of its own (private_network.sh); the library is the one in plugins/gige beside the program.
#include <gio/gio.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
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

using namespace std::chrono_literals;

constexpr const char* kMono = "Name=\"Bayer=>Name=\"Other";  // the one that Aravis has built in is a color camera

// Waits for a condition, for as long as a busy machine may take.
template <class Condition>
bool Eventually(const Condition& condition) {
    for (int i = 0; i < 1500; ++i) {
        if (condition()) return true;
        std::this_thread::sleep_for(20ms);
    }
    return false;
}

class FakeCamera {
  public:
    explicit FakeCamera(std::vector<std::string> options) : m_Options(std::move(options)) { Switch(true); }
    ~FakeCamera() { Switch(false); }
    FakeCamera(const FakeCamera&) = delete;
    FakeCamera& operator=(const FakeCamera&) = delete;

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
        const auto flags =
            static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_PIPE);
        m_Process.reset(g_subprocess_newv(words.data(), flags, nullptr));
        Answer();
    }
    void Write(const std::string& line) {
        const std::string text = "write " + line + "\n";
        g_output_stream_write_all(g_subprocess_get_stdin_pipe(m_Process.get()), text.data(), text.size(), nullptr,
                                  nullptr, nullptr);
        Answer();
    }

  private:
    void Answer() {
        char answer[100];
        ASSERT_GT(
            g_input_stream_read(g_subprocess_get_stdout_pipe(m_Process.get()), answer, sizeof answer, nullptr, nullptr),
            0);
    }

    const std::vector<std::string> m_Options;
    ObjectPtr<GSubprocess> m_Process;
};

class GigeCameras : public testing::Test {
  protected:
    // Searches take seconds: all cameras are on before the one that all tests share.
    static void SetUpTestSuite() {
        const auto add = [](const std::string& end, const std::string& serial, std::vector<std::string> more) {
            more.insert(more.end(), {"--address", "127.0.0." + end, "--serial", serial});
            s_Fakes[end] = std::make_unique<FakeCamera>(std::move(more));
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
std::string ReasonOf(const std::string& address) {
    try {
        const CameraSession session(address, [] {});
        return {};
    } catch (const Failure& failure) {
        return failure.what();
    }
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
    EXPECT_EQ(camera.command("set Width 8").substr(0, 3), "ERR");
    EXPECT_EQ(camera.command("set NoSuchFeature 8").substr(0, 3), "ERR");
}

TEST_F(GigeCameras, LostPacketsAreLostFramesAndAllAreCounted) {
    Camera camera = Open("2");
    camera.start();
    std::uint64_t frames = 0;
    unsigned last = 0;
    while (last < 100) {
        const FrameResult frame = camera.wait_frame(10s);
        ASSERT_TRUE(frame) << frame.no_frame().why();
        EXPECT_TRUE(IsRamp(*frame));
        last = frame->number();
        ++frames;
    }
    const std::string link = camera.command("link");
    camera.stop();
    EXPECT_GT(camera.link_drops(), 0u);
    EXPECT_GE(camera.link_drops(), last + 1 - frames);
    EXPECT_NE(link.find("incomplete"), std::string::npos) << link;
    EXPECT_EQ(link.find("received, 0 missing"), std::string::npos) << link;
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
    EXPECT_NE(camera.command("link").find("the camera sends 40 x 48"), std::string::npos) << camera.command("link");
    s_Fakes.at("6")->Write("0x100 64");
    while (camera.try_frame(0ms)) continue;
    EXPECT_TRUE(camera.wait_frame(10s)->width() == 64);
}

TEST_F(GigeCameras, OneThatMakesNoSenseIsRefusedWithTheReason) {
    const std::string no_width = "Name=\"Width\"=>Name=\"Breadth\"";
    const std::string no_mono = "Name=\"Mono=>Name=\"Poly";
    const std::string other_number = "17825799=>17301505";  // Mono16 has that of Mono8
    const std::string no_mono8 = "Name=\"Mono8\"=>Name=\"Poly8\"";
    struct Case {
        std::vector<std::string> replacements;
        std::string reason;
    };
    for (const auto& [replacements, reason] :
         {Case{{no_width}, "Width makes no sense"}, Case{{kMono, no_mono}, "none of its pixel formats can be taken"},
          Case{{kMono, other_number, no_mono8}, "none of its pixel formats can be taken"}}) {
        std::vector<std::string> options{"--address", "127.0.0.10", "--serial", "LIAR"};
        for (const std::string& replacement : replacements) options.insert(options.end(), {"--replace", replacement});
        const FakeCamera liar(options);
        EXPECT_EQ(ReasonOf("127.0.0.10").substr(0, reason.size()), reason);
    }
    EXPECT_EQ(ReasonOf("127.0.0.11").substr(0, 18), "it does not answer");
}

TEST_F(GigeCameras, AnotherProgramsCameraIsSaidToBe) {
    const CameraSession other("127.0.0.6", [] {});
    try {
        Open("6");
        FAIL() << "opened twice";
    } catch (const Error& error) {
        EXPECT_NE(std::string(error.what()).find("ZEL_ERROR_UNSUPPORTED"), std::string::npos) << error.what();
    }
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
