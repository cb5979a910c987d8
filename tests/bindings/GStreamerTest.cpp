// zelsrc in pipelines: of this program, and of gst-launch-1.0 beside it. Simulated cameras of 64 x 48 samples, which
// send one frame again and again with its number in the first samples.
#include <gmock/gmock.h>
#include <gst/gst.h>
#include <gst/video/video.h>
#include <lodepng.h>

#include <atomic>
#include <cstdio>
#include <memory>
#include <optional>
#include <thread>

#include "tests/system/SystemFixture.h"
#include "zel/Zel.h"

namespace zel::test {
namespace {

using testing::HasSubstr;
using namespace std::chrono_literals;
using Bytes = std::vector<std::uint8_t>;

constexpr auto kLong = 60 * GST_SECOND;
const std::string kMonoPipeline = "zelsrc name=src camera=500102 exposure=1000 ";
const std::string kSink = " ! appsink name=sink sync=false", kToSink = " ! video/x-raw,format=GRAY16_LE" + kSink;

struct Unref {
    void operator()(void* object) const { gst_mini_object_unref(GST_MINI_OBJECT_CAST(object)); }
};
using Message = std::unique_ptr<GstMessage, Unref>;
using Sample = std::unique_ptr<GstSample, Unref>;

GstBuffer* BufferOf(const Sample& sample) { return gst_sample_get_buffer(sample.get()); }

// A pipeline from its description; its source is called src, its appsink sink.
class Pipeline {
  public:
    explicit Pipeline(const std::string& description, GstState state = GST_STATE_NULL)
        : m_Pipeline(gst_parse_launch(description.c_str(), nullptr)) {
        Set(state);
    }
    // The sink keeps the last sample that was pulled, and with it its camera, to its own end, which comes when a thread
    // of GStreamer's has let go of the pipeline, too.
    ~Pipeline() {
        std::atomic<bool> gone = false;
        g_object_weak_ref(
            G_OBJECT(m_Pipeline), [](gpointer told, GObject*) { *static_cast<std::atomic<bool>*>(told) = true; },
            &gone);
        Set(GST_STATE_NULL);
        gst_object_unref(m_Pipeline);
        while (!gone) std::this_thread::yield();
    }
    GstStateChangeReturn Set(GstState state) { return gst_element_set_state(m_Pipeline, state); }
    std::shared_ptr<GstElement> Element(const char* name) {
        return {gst_bin_get_by_name(GST_BIN(m_Pipeline), name), gst_object_unref};
    }
    // Null: none came in time.
    Sample Pull(GstClockTime time = kLong) {
        GstSample* sample = nullptr;
        g_signal_emit_by_name(Element("sink").get(), "try-pull-sample", time, &sample);
        return Sample(sample);
    }
    Message Wait(GstMessageType types) {
        const std::shared_ptr<GstBus> bus(gst_element_get_bus(m_Pipeline), gst_object_unref);
        return Message(gst_bus_timed_pop_filtered(bus.get(), kLong, types));
    }
    // The text of the next error or warning.
    std::string Text(GstMessageType type = GST_MESSAGE_ERROR) {
        const Message message = Wait(type);
        if (!message) return "no message";
        g_autoptr(GError) error = nullptr;
        (type == GST_MESSAGE_ERROR ? gst_message_parse_error : gst_message_parse_warning)(message.get(), &error,
                                                                                          nullptr);
        return error->message;
    }

  private:
    GstElement* m_Pipeline;
};

// The rows, without what lies between them.
Bytes BytesOf(const Sample& sample) {
    GstVideoInfo info;
    GstVideoFrame frame;
    Bytes bytes;
    if (!sample || !gst_video_info_from_caps(&info, gst_sample_get_caps(sample.get()))) return bytes;
    EXPECT_TRUE(gst_video_frame_map(&frame, &info, BufferOf(sample), GST_MAP_READ));
    for (int y = 0; y < info.height; ++y) {
        const auto* const row = static_cast<std::uint8_t*>(frame.data[0]) + y * frame.info.stride[0];
        bytes.insert(bytes.end(), row, row + info.width * info.finfo->pixel_stride[0]);
    }
    gst_video_frame_unmap(&frame);
    return bytes;
}

// What a frame is in a format.
Bytes Expected(const Frame& frame, const std::string& format, bool scale = true) {
    const auto color = frame.color8();
    Bytes bytes(color.begin(), color.end());
    for (std::size_t i = 0; format == "RGB" && i < bytes.size(); i += 3) std::swap(bytes[i], bytes[i + 2]);
    for (const unsigned sample : color.empty() ? frame.pixels() : std::span<const std::uint16_t>()) {
        const unsigned value = scale ? sample << (16 - frame.bits()) : sample;
        const auto low = static_cast<std::uint8_t>(value), high = static_cast<std::uint8_t>(value >> 8);
        if (format == "GRAY16_LE") bytes.push_back(low);
        bytes.push_back(high);
        if (format == "GRAY16_BE") bytes.push_back(low);
    }
    return bytes;
}

struct GStreamer : testing::Test {
    enum { kCameraLink, kEbus, kColor, kMono };

    static void SetUpTestSuite() {
        platform::SetEnvironment("GST_PLUGIN_PATH", ZEL_GST_FOLDER);
        platform::SetEnvironment("GST_REGISTRY", "gstreamer_tests.registry");
        gst_init(nullptr, nullptr);
    }
    GStreamer() {
        platform::SetEnvironment("ZEL_SIM_PACE", "");
        platform::SetEnvironment("ZEL_SIM_FILL", "static");
        sdk.emplace();
        EXPECT_EQ(sdk->cameras().size(), 4u);
    }
    ~GStreamer() override { usb.Mend(1); }

    // A frame of the camera, taken without the element.
    Frame Snap(int number, bool color = false, const Region* region = nullptr) {
        Camera camera = sdk->open(number);
        camera.set(settings::exposure, 1ms);
        camera.set_binning({1, 1});  // the element keeps the SDK, and with it what was set before
        if (color) camera.use_color({ColorFormat::rgb8, ColorSpace::srgb});
        if (region) camera.set_region(*region);
        return camera.snap();
    }
    // Whether it is the color camera's picture, whatever its number.
    bool IsPicture(const Bytes& bytes, const char* format) {
        constexpr std::size_t kNumbered = 1024;  // as far as the colors of the number reach
        const Bytes expected = Expected(Snap(kColor, true), format);
        return bytes.size() == expected.size() &&
               std::equal(bytes.begin() + kNumbered, bytes.end(), expected.begin() + kNumbered);
    }

    SimulatedLibrary usb{"zel_usb.dll"};
    std::optional<Sdk> sdk;
};

TEST_F(GStreamer, FramesAreThoseOfTheCameraInEveryFormat) {
    const Region odd{1, 2, 61, 33};
    const struct {
        int camera;
        const char *format, *properties;
        bool color = false, scale = true;
        const Region* region = nullptr;
    } cases[] = {
        {kMono, "GRAY16_LE", "zero-copy=true"},                                      // lent
        {kMono, "GRAY16_LE", "zero-copy=true roi=1,2,61,33", false, true, &odd},     // copied: rows are not whole words
        {kCameraLink, "GRAY16_LE", "scale=false", false, false},                     // 14 bits
        {kEbus, "GRAY16_LE", "zero-copy=true scale=false buffers=1", false, false},  // 12 bits, copied: the only buffer
        {kEbus, "GRAY16_BE", ""},
        {kEbus, "GRAY8", ""},
        {kColor, "BGR", "", true},
        {kColor, "RGB", "", true},
        {kColor, "GRAY16_LE", "color=false scale=false", false, false}};
    for (const auto& c : cases) {
        const std::string camera = " camera=" + std::to_string(c.camera) + " " + c.properties;
        SCOPED_TRACE(c.format + camera);
        const Bytes expected = Expected(Snap(c.camera, c.color, c.region), c.format, c.scale);
        Pipeline pipeline("zelsrc exposure=1000" + camera + " ! video/x-raw,format=" + c.format + kSink,
                          GST_STATE_PLAYING);
        const Sample first = pipeline.Pull(), second = pipeline.Pull();
        ASSERT_TRUE(first && second);
        EXPECT_TRUE(BytesOf(first) == expected);
        EXPECT_GE(GST_BUFFER_OFFSET(BufferOf(second)), 1u);
        EXPECT_GT(GST_BUFFER_PTS(BufferOf(second)), GST_BUFFER_PTS(BufferOf(first)));
    }
}

TEST_F(GStreamer, ChangesItsStatesAnyNumberOfTimes) {
    std::optional<Pipeline> pipeline("zelsrc camera=2 exposure=1000 zero-copy=true ! video/x-raw,format=BGR" + kSink);
    Sample held;  // over the end of its camera
    for (int round = 0; round < 10; ++round) {
        pipeline->Set(GST_STATE_PLAYING);
        EXPECT_TRUE(pipeline->Pull()) << round;
        pipeline->Set(GST_STATE_PAUSED);
        pipeline->Set(GST_STATE_PLAYING);
        held = pipeline->Pull();
        EXPECT_EQ(pipeline->Set(round % 2 ? GST_STATE_READY : GST_STATE_NULL), GST_STATE_CHANGE_SUCCESS);
    }
    pipeline.reset();
    const Bytes bytes = BytesOf(std::exchange(held, nullptr));
    EXPECT_TRUE(IsPicture(bytes, "BGR"));
}

TEST_F(GStreamer, GoesOnWhileEveryFrameIsHeld) {
    Pipeline pipeline(kMonoPipeline + "zero-copy=true buffers=4" + kToSink, GST_STATE_PLAYING);
    std::vector<Sample> held;
    for (int i = 0; i < 20; ++i) ASSERT_TRUE(held.emplace_back(pipeline.Pull())) << i;
}

TEST_F(GStreamer, NeverDestroysTheSdkOfTheProgram) {
    for (int round = 0; round < 2; ++round, sdk.emplace()) {
        Pipeline pipeline(kMonoPipeline + kToSink, GST_STATE_PLAYING);
        EXPECT_TRUE(pipeline.Pull());
        pipeline.Set(GST_STATE_NULL);
        EXPECT_EQ(sdk->cameras().size(), 4u);
    }
}

TEST_F(GStreamer, SaysWhyItDoesNotStart) {
    const std::pair<std::string, const char*> cases[] = {
        {"camera=9", "no camera '9'"},
        {"plugins=gige", "the plug-ins can't be chosen"},
        {"gain=5000", "GAIN: requested 5000 -> actual 0 (range 0..1023)"},
        {"roi=1,2,3", "roi '1,2,3': not 4 numbers"},
        {"roi=0,0,65,48", "not within the frame of 64x48"},
        {"settings=GIAN=3", "did you mean GAIN?"},
        {"camera=2 binning=2,2", "color frames are not binned"},
        {"camera=3 ! fakesink zelsrc camera=500102", "camera 3 is open already"}};
    for (const auto& [properties, text] : cases) {
        Pipeline pipeline("zelsrc " + properties + " ! fakesink", GST_STATE_PLAYING);
        EXPECT_THAT(pipeline.Text(), HasSubstr(text)) << properties;
    }
}

TEST_F(GStreamer, LostLinkIsAnErrorOrWaitedFor) {
    for (const bool waits : {false, true}) {
        Pipeline pipeline(kMonoPipeline + (waits ? "reconnect=true" : "") + kToSink, GST_STATE_PLAYING);
        EXPECT_TRUE(pipeline.Pull());
        usb("unplug 1");
        EXPECT_THAT(pipeline.Text(waits ? GST_MESSAGE_WARNING : GST_MESSAGE_ERROR),
                    HasSubstr("no frame from camera 3: the link to the camera is lost"));
        usb("plug 1");
        Sample sample;
        while (waits && (sample = pipeline.Pull()) && !GST_BUFFER_IS_DISCONT(BufferOf(sample))) continue;
        EXPECT_EQ(sample != nullptr, waits);
    }
}

TEST_F(GStreamer, CountsWhatIsMissingByCause) {
    usb("fault 1 lose after=2 times=3");
    Pipeline pipeline(kMonoPipeline + "num-buffers=4" + kToSink, GST_STATE_PLAYING);
    for (const unsigned number : {0u, 1u, 5u, 6u}) {
        const Sample sample = pipeline.Pull();
        ASSERT_TRUE(sample);
        EXPECT_EQ(GST_BUFFER_OFFSET(BufferOf(sample)), number);
        EXPECT_EQ(GST_BUFFER_IS_DISCONT(BufferOf(sample)), number == 0 || number == 5);
    }
    const Message message = pipeline.Wait(GST_MESSAGE_QOS);
    ASSERT_TRUE(message);
    guint64 told = 0, dropped = 0, lost = 0, frames = 0;
    gst_message_parse_qos_stats(message.get(), nullptr, nullptr, &told);
    g_autoptr(GstStructure) stats = nullptr;
    g_object_get(pipeline.Element("src").get(), "dropped", &dropped, "stats", &stats, nullptr);
    gst_structure_get(stats, "lost-on-link", G_TYPE_UINT64, &lost, "frames", G_TYPE_UINT64, &frames, nullptr);
    EXPECT_EQ(std::tuple(told, dropped, lost, frames), std::tuple(3u, 3u, 3u, 4u));
    EXPECT_TRUE(pipeline.Wait(GST_MESSAGE_EOS));
}

TEST_F(GStreamer, WaitForATriggerEndsAtOnceAndATriggerBringsAFrame) {
    Pipeline waiting("zelsrc camera=2 trigger=hardware ! fakesink");
    Pipeline pipeline(kMonoPipeline + "trigger=software" + kToSink);
    for (int round = 0; round < 3; ++round) {
        waiting.Set(GST_STATE_PLAYING);
        pipeline.Set(GST_STATE_PLAYING);
        Sample sample;
        do {  // before the camera is started, a trigger is a warning
            g_signal_emit_by_name(pipeline.Element("src").get(), "trigger");
            sample = pipeline.Pull(GST_SECOND / 10);
        } while (!sample);
        EXPECT_FALSE(GST_BUFFER_DURATION_IS_VALID(BufferOf(sample)));
        pipeline.Set(GST_STATE_NULL);
        EXPECT_EQ(waiting.Set(GST_STATE_NULL), GST_STATE_CHANGE_SUCCESS);
    }
}

// ---- other programs ----

TEST_F(GStreamer, ProgramsFindTheElementAndSavePictures) {
    const std::string picture = "gstreamer_tests.png";
    std::remove(picture.c_str());
    EXPECT_EQ(std::system("gst-inspect-1.0 zelsrc >gstreamer_tests.txt"), 0);
    const std::string command = "gst-launch-1.0 -q zelsrc camera=2 exposure=1000 num-buffers=5 ! videoconvert ! pngenc";
    ASSERT_EQ(std::system((command + " ! multifilesink location=" + picture).c_str()), 0);
    Bytes pixels;
    unsigned width = 0, height = 0;
    ASSERT_EQ(lodepng::decode(pixels, width, height, picture, LCT_RGB), 0u);
    EXPECT_TRUE(IsPicture(pixels, "RGB"));
}

}  // namespace
}  // namespace zel::test
