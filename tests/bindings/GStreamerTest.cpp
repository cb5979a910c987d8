// zelsrc in pipelines: of this program, and of gst-launch-1.0 beside it. Simulated cameras of 64 x 48 samples, which
// send one frame again and again with its number in the first samples.
#include <gmock/gmock.h>
#include <gst/gst.h>
#include <gst/video/video.h>
#include <lodepng.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>

#include "tests/system/SystemFixture.h"
#include "zel/Zel.h"

namespace zel::test {
namespace {

using testing::HasSubstr;
using namespace std::chrono_literals;
using namespace std::string_literals;
using Bytes = std::vector<std::uint8_t>;

constexpr const char* kMonoPipeline = "zelsrc name=src camera=500102 exposure=1000 ";
constexpr const char* kToSink = " ! video/x-raw,format=GRAY16_LE ! appsink name=sink sync=false";
constexpr auto kLong = 60 * GST_SECOND;
constexpr std::size_t kNumberedBytes = 1024;  // of a frame's beginning, as far as the colors of its number reach

struct Unref {
    void operator()(GstObject* object) const { gst_object_unref(object); }
    void operator()(GstMessage* message) const { gst_message_unref(message); }
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
};
using Message = std::unique_ptr<GstMessage, Unref>;
using Sample = std::unique_ptr<GstSample, Unref>;

// A pipeline from its description; its source is called src, its appsink sink.
class Pipeline {
  public:
    explicit Pipeline(const std::string& description) : m_Pipeline(gst_parse_launch(description.c_str(), nullptr)) {}
    ~Pipeline() {
        Set(GST_STATE_NULL);
        gst_object_unref(m_Pipeline);
    }
    GstStateChangeReturn Set(GstState state) { return gst_element_set_state(m_Pipeline, state); }
    std::shared_ptr<GstElement> Element(const char* name) {
        return {gst_bin_get_by_name(GST_BIN(m_Pipeline), name), gst_object_unref};
    }
    Sample Pull() {
        GstSample* sample = nullptr;
        g_signal_emit_by_name(Element("sink").get(), "try-pull-sample", kLong, &sample);
        EXPECT_NE(sample, nullptr) << "no frame: " << Error();
        return Sample(sample);
    }
    Message Wait(GstMessageType types, GstClockTime time = kLong) {
        const std::unique_ptr<GstObject, Unref> bus(GST_OBJECT(gst_element_get_bus(m_Pipeline)));
        return Message(gst_bus_timed_pop_filtered(GST_BUS(bus.get()), time, types));
    }
    // The text of the next error or warning.
    std::string Error(GstMessageType type = GST_MESSAGE_ERROR, GstClockTime time = 0) {
        const Message message = Wait(type, time);
        if (!message) return "no message";
        GError* error = nullptr;
        const auto parse = type == GST_MESSAGE_ERROR ? gst_message_parse_error : gst_message_parse_warning;
        parse(message.get(), &error, nullptr);
        std::string text = error->message;
        g_error_free(error);
        return text;
    }

  private:
    GstElement* m_Pipeline;
};

GstBuffer* BufferOf(const Sample& sample) { return gst_sample_get_buffer(sample.get()); }

// The rows, without what lies between them.
Bytes BytesOf(const Sample& sample) {
    GstVideoInfo info;
    GstVideoFrame frame;
    EXPECT_TRUE(gst_video_info_from_caps(&info, gst_sample_get_caps(sample.get())) &&
                gst_video_frame_map(&frame, &info, BufferOf(sample), GST_MAP_READ));
    Bytes bytes;
    for (int y = 0; y < info.height; ++y) {
        const auto* const row = static_cast<std::uint8_t*>(frame.data[0]) + y * frame.info.stride[0];
        bytes.insert(bytes.end(), row, row + info.width * info.finfo->pixel_stride[0]);
    }
    gst_video_frame_unmap(&frame);
    return bytes;
}

class GStreamer : public testing::Test {
  protected:
    enum { kCameraLink, kEbus, kColor, kMono };

    static void SetUpTestSuite() {
        UseFastCameras();
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
    ~GStreamer() override {
        for (int number : {0, 1}) usb.Mend(number);
    }

    // A frame of the camera, taken without the element.
    Frame Snap(int number, bool color = false, const Region* region = nullptr) {
        Camera camera = sdk->open(number);
        camera.set(settings::exposure, 1ms);
        if (color) camera.use_color({ColorFormat::rgb8, ColorSpace::srgb});
        if (region) camera.set_region(*region);
        return camera.snap();
    }

    SimulatedLibrary usb{"zel_usb.dll"};
    std::optional<Sdk> sdk;
};

// What a frame is in a format.
Bytes Expected(const Frame& frame, const std::string& format, bool scale) {
    Bytes bytes;
    const std::size_t width = frame.width() * (format == "GRAY8" ? 1 : format == "GRAY16_LE" ? 2 : 3);
    for (unsigned y = 0; y < frame.height(); ++y) {
        if (frame.color()) {
            const auto row = frame.color8().subspan(y * width, width);
            const bool swap = format == "RGB";
            for (std::size_t i = 0; i < width; ++i) bytes.push_back(row[swap ? i / 3 * 3 + 2 - i % 3 : i]);
        } else {
            for (const unsigned sample : frame.row(y)) {
                const unsigned value = scale ? sample << (16 - frame.bits()) : sample;
                if (format == "GRAY16_LE") bytes.push_back(static_cast<std::uint8_t>(value));
                bytes.push_back(
                    static_cast<std::uint8_t>((format == "GRAY8" ? sample << (16 - frame.bits()) : value) >> 8));
            }
        }
    }
    return bytes;
}

TEST_F(GStreamer, FramesAreThoseOfTheCameraInEveryFormat) {
    const Region odd{1, 2, 61, 33};
    const struct {
        int camera;
        const char *format, *properties;
        bool color = false, scale = true;
        const Region* region = nullptr;
    } cases[] = {{kMono, "GRAY16_LE", "buffers=8"},                            // lent
                 {kMono, "GRAY16_LE", "roi=1,2,61,33", false, true, &odd},     // copied: rows are not whole words
                 {kCameraLink, "GRAY16_LE", "scale=false", false, false},      // 14 bits
                 {kEbus, "GRAY16_LE", "scale=false buffers=1", false, false},  // 12 bits, copied: the only buffer
                 {kEbus, "GRAY8", ""},
                 {kColor, "BGR", "", true},
                 {kColor, "RGB", "", true},
                 {kColor, "GRAY16_LE", "color=false scale=false", false, false}};
    for (const auto& c : cases) {
        const std::string what = std::to_string(c.camera) + " " + c.format + " " + c.properties;
        const Bytes expected = Expected(Snap(c.camera, c.color, c.region), c.format, c.scale);
        Pipeline pipeline("zelsrc exposure=1000 camera=" + std::to_string(c.camera) + " " + c.properties +
                          " ! video/x-raw,format=" + c.format + " ! appsink name=sink sync=false");
        pipeline.Set(GST_STATE_PLAYING);
        GstClockTime before = 0;
        for (unsigned number = 0; number < 2; ++number) {
            const Sample sample = pipeline.Pull();
            ASSERT_TRUE(sample) << what;
            EXPECT_EQ(GST_BUFFER_OFFSET(BufferOf(sample)), number) << what;
            EXPECT_GT(GST_BUFFER_PTS(BufferOf(sample)), before) << what;
            before = GST_BUFFER_PTS(BufferOf(sample));
            EXPECT_TRUE(number > 0 || BytesOf(sample) == expected) << what;
        }
    }
}

TEST_F(GStreamer, ChangesItsStatesAnyNumberOfTimes) {
    Pipeline pipeline(std::string(kMonoPipeline) + kToSink);
    Sample held;  // over the end of its camera
    for (int round = 0; round < 10; ++round) {
        pipeline.Set(GST_STATE_PLAYING);
        const Sample first = pipeline.Pull();
        pipeline.Set(GST_STATE_PAUSED);
        pipeline.Set(GST_STATE_PLAYING);
        held = pipeline.Pull();
        ASSERT_TRUE(held) << round;
        EXPECT_EQ(pipeline.Set(round % 2 ? GST_STATE_READY : GST_STATE_NULL), GST_STATE_CHANGE_SUCCESS);
    }
    pipeline.Set(GST_STATE_NULL);
    const Bytes bytes = BytesOf(held);
    const Bytes expected = Expected(Snap(kMono), "GRAY16_LE", true);
    EXPECT_TRUE(std::equal(bytes.begin() + kNumberedBytes, bytes.end(), expected.begin() + kNumberedBytes));
}

TEST_F(GStreamer, GoesOnWhileEveryFrameIsHeld) {
    Pipeline pipeline(kMonoPipeline + "buffers=4"s + kToSink);
    pipeline.Set(GST_STATE_PLAYING);
    std::vector<Sample> held;
    for (unsigned i = 0; i < 20; ++i) {
        held.push_back(pipeline.Pull());
        ASSERT_TRUE(held.back()) << i;
    }
}

TEST_F(GStreamer, SaysWhyItDoesNotStart) {
    const struct {
        const char *properties, *text;
    } cases[] = {{"camera=9", "no camera '9'"},
                 {"gain=5000", "GAIN: requested 5000 -> actual 0 (range 0..1023)"},
                 {"roi=1,2,3", "roi '1,2,3': not 4 numbers"},
                 {"roi=0,0,65,48", "not within the frame of 64x48"},
                 {"settings=GIAN=3", "did you mean GAIN?"},
                 {"settings=GAIN", "not NAME=VALUE"},
                 {"camera=2 binning=2,2", "color frames are not binned"}};
    for (const auto& c : cases) {
        Pipeline pipeline(std::string("zelsrc ") + c.properties + " ! fakesink");
        pipeline.Set(GST_STATE_PLAYING);
        EXPECT_THAT(pipeline.Error(GST_MESSAGE_ERROR, kLong), HasSubstr(c.text)) << c.properties;
    }
    Pipeline twice("zelsrc camera=3 ! fakesink zelsrc camera=500102 ! fakesink");
    twice.Set(GST_STATE_PLAYING);
    EXPECT_THAT(twice.Error(GST_MESSAGE_ERROR, kLong), HasSubstr("camera 3 is open already"));
}

TEST_F(GStreamer, LostLinkIsAnErrorOrWaitedFor) {
    for (const bool waits : {false, true}) {
        Pipeline pipeline(kMonoPipeline + (waits ? "reconnect=true"s : ""s) + kToSink);
        pipeline.Set(GST_STATE_PLAYING);
        static_cast<void>(pipeline.Pull());
        usb("unplug 1");
        EXPECT_THAT(pipeline.Error(waits ? GST_MESSAGE_WARNING : GST_MESSAGE_ERROR, kLong),
                    HasSubstr("no frame from camera 3: the link to the camera is lost"));
        usb("plug 1");
        if (!waits) continue;
        Sample sample;
        do sample = pipeline.Pull();
        while (sample && !GST_BUFFER_FLAG_IS_SET(BufferOf(sample), GST_BUFFER_FLAG_DISCONT));
        EXPECT_TRUE(sample);
    }
}

TEST_F(GStreamer, CountsWhatIsMissingByCause) {
    usb("fault 1 lose after=2 times=3");
    Pipeline pipeline(kMonoPipeline + "num-buffers=4"s + kToSink);
    pipeline.Set(GST_STATE_PLAYING);
    for (const unsigned number : {0u, 1u, 5u, 6u}) {
        const Sample sample = pipeline.Pull();
        ASSERT_TRUE(sample);
        EXPECT_EQ(GST_BUFFER_OFFSET(BufferOf(sample)), number);
        EXPECT_EQ(GST_BUFFER_FLAG_IS_SET(BufferOf(sample), GST_BUFFER_FLAG_DISCONT), number == 0 || number == 5);
    }
    const Message message = pipeline.Wait(GST_MESSAGE_QOS);
    ASSERT_TRUE(message);
    guint64 told = 0, dropped = 0, lost = 0, frames = 0;
    gst_message_parse_qos_stats(message.get(), nullptr, nullptr, &told);
    GstStructure* stats = nullptr;
    g_object_get(pipeline.Element("src").get(), "dropped", &dropped, "stats", &stats, nullptr);
    gst_structure_get(stats, "lost-on-link", G_TYPE_UINT64, &lost, "frames", G_TYPE_UINT64, &frames, nullptr);
    gst_structure_free(stats);
    EXPECT_EQ(std::tuple(told, dropped, lost, frames), std::tuple(3u, 3u, 3u, 4u));
    EXPECT_TRUE(pipeline.Wait(GST_MESSAGE_EOS));
}

TEST_F(GStreamer, WaitForATriggerEndsAtOnceAndATriggerBringsAFrame) {
    Pipeline waiting("zelsrc camera=2 trigger=hardware ! fakesink");
    Pipeline pipeline(kMonoPipeline + "trigger=software"s + kToSink);
    for (int round = 0; round < 3; ++round) {
        waiting.Set(GST_STATE_PLAYING);
        pipeline.Set(GST_STATE_PLAYING);
        const auto source = pipeline.Element("src");
        // Before the camera is started it says so in a warning.
        GstSample* sample = nullptr;
        while (!sample) {
            g_signal_emit_by_name(source.get(), "trigger");
            g_signal_emit_by_name(pipeline.Element("sink").get(), "try-pull-sample", GST_SECOND / 10, &sample);
        }
        EXPECT_FALSE(GST_BUFFER_DURATION_IS_VALID(gst_sample_get_buffer(sample)));
        gst_sample_unref(sample);
        pipeline.Set(GST_STATE_NULL);
        waiting.Set(GST_STATE_NULL);
    }
}

// ---- other programs ----

TEST_F(GStreamer, ProgramsFindTheElementAndSavePictures) {
    EXPECT_EQ(std::system("gst-inspect-1.0 zelsrc >gstreamer_tests.txt"), 0);
    const std::string picture = "gstreamer_tests.png";
    std::filesystem::remove(picture);
    ASSERT_EQ(std::system(("gst-launch-1.0 -q zelsrc camera=2 exposure=1000 num-buffers=5 ! videoconvert ! pngenc ! "
                           "multifilesink location=" +
                           picture)
                              .c_str()),
              0);
    Bytes pixels;
    unsigned width = 0, height = 0;
    ASSERT_EQ(lodepng::decode(pixels, width, height, picture, LCT_RGB), 0u);
    const Bytes expected = Expected(Snap(kColor, true), "RGB", true);
    ASSERT_EQ(pixels.size(), expected.size());
    EXPECT_TRUE(std::equal(pixels.begin() + kNumberedBytes, pixels.end(), expected.begin() + kNumberedBytes));
}

TEST_F(GStreamer, StreamsToAnotherProgram) {
    Pipeline receiver(
        "udpsrc name=src port=0 caps=\"application/x-rtp,media=(string)video,clock-rate=(int)90000,"
        "encoding-name=(string)RAW,sampling=(string)BGR,depth=(string)8,width=(string)64,"
        "height=(string)48\" ! rtpvrawdepay ! appsink name=sink sync=false");
    receiver.Set(GST_STATE_PLAYING);
    int port = 0;
    g_object_get(receiver.Element("src").get(), "port", &port, nullptr);
    // Until nobody listens any more.
    std::FILE* const sender =
        popen(("exec gst-launch-1.0 -q zelsrc camera=2 exposure=1000 num-buffers=200 ! rtpvrawpay ! "
               "udpsink host=127.0.0.1 port=" +
               std::to_string(port))
                  .c_str(),
              "r");
    ASSERT_TRUE(sender);
    const Bytes expected = Expected(Snap(kColor, true), "BGR", true);
    for (int i = 0; i < 5; ++i) {
        const Sample sample = receiver.Pull();
        ASSERT_TRUE(sample);
        const Bytes bytes = BytesOf(sample);
        ASSERT_EQ(bytes.size(), expected.size());
        EXPECT_TRUE(std::equal(bytes.begin() + kNumberedBytes, bytes.end(), expected.begin() + kNumberedBytes));
    }
    EXPECT_EQ(pclose(sender), 0);
}

}  // namespace
}  // namespace zel::test
