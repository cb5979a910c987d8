// What needs no camera.
#include <gmock/gmock.h>

#include <cstring>
#include <ranges>
#include <set>

#include "zel/Zel.h"

namespace zel {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

static_assert(std::ranges::input_range<FrameStream> && std::movable<FrameStream>);
static_assert(std::movable<Sdk> && std::movable<Camera> && std::movable<Frame>);
static_assert(!std::copyable<Sdk> && !std::copyable<Camera> && !std::copyable<Frame>);

// Expects an Error of this kind whose text has `part` in it.
template <class Action>
void ExpectError(Action action, ErrorKind kind, const char* part) {
    try {
        action();
        ADD_FAILURE() << "no error; expected " << part;
    } catch (const Error& error) {
        EXPECT_EQ(error.kind(), kind) << error.what();
        EXPECT_THAT(error.what(), HasSubstr(part));
    }
}

std::vector<CameraInfo> Cameras(std::initializer_list<const char*> serials) {
    std::vector<CameraInfo> cameras;
    for (const char* serial : serials) cameras.push_back({static_cast<int>(cameras.size()), "", serial, "", {}});
    return cameras;
}

TEST(LayerSelectCamera, TakesNumbersAndSerialNumbers) {
    const auto cameras = Cameras({"A100", "b200", "1", ""});
    const std::pair<const char*, int> good[] = {{"0", 0}, {"3", 3}, {"A100", 0}, {"a100", 0}, {"B200", 1}, {"1", 1}};
    for (const auto& [wanted, number] : good) EXPECT_EQ(select_camera(cameras, wanted), number) << wanted;
    const std::pair<const char*, const char*> bad[] = {
        {"7", "no camera '7': it is neither a camera number nor a serial number; known cameras are 0 (serial A100), "},
        {"B300", "did you mean B200? known cameras"},
        {"C100", "more than one camera has this serial number"},
        {"", "no camera"},
        {"-1", "no camera"},
        {"00", "no camera"},
        {" 0", "no camera"}};
    const auto others = Cameras({"A100", "B200", "C100", "c100"});
    for (const auto& [wanted, part] : bad) {
        ExpectError([&, name = wanted] { select_camera(others, name); }, ErrorKind::no_camera, part);
    }
    ExpectError([] { select_camera({}, "0"); }, ErrorKind::no_camera, "no camera found");
}

TEST(LayerParameterInfo, HasEveryIdOnceAndInOrder) {
    unsigned id = 0;
    std::set<std::string> names;
    for (const ParameterInfo& info : all_parameters()) {
        EXPECT_EQ(info.id, id < ZEL_MAX_PARAMS ? id : ZEL_PARAM_MODEL_VALUE_1 + (id - ZEL_MAX_PARAMS)) << info.name;
        EXPECT_TRUE(names.insert(info.name).second && *info.description) << info.name;
        ++id;
    }
    EXPECT_EQ(id, ZEL_MAX_PARAMS + 6u);
    for (const char* wanted : {"EXPOSURE_TIME_US", "exposure_time_us", "Exposure-Time-us", "ZEL_PARAM_EXPOSURE_TIME_US",
                               "zel_param_exposure_time_us", "58", " 58 "}) {
        EXPECT_EQ(find_parameter(wanted).id, unsigned{ZEL_PARAM_EXPOSURE_TIME_US}) << wanted;
    }
    for (const char* wanted : {"", "73", "-1", "5x", "99999999999", "ZEL_PARAM_"}) {
        ExpectError([&] { find_parameter(wanted); }, ErrorKind::invalid_argument, "no parameter");
    }
    ExpectError([] { find_parameter("EXPOSRUE_TIME"); }, ErrorKind::invalid_argument, "did you mean EXPOSURE_TIME, ");
}

TEST(LayerParameterValue, ReadsAndWritesTheUsersSpelling) {
    const std::tuple<unsigned, const char*, const char*> good[] = {
        {ZEL_PARAM_GAIN, "7", "7"},
        {ZEL_PARAM_GAIN, "0x10", "16"},
        {ZEL_PARAM_GAIN, "010", "10"},
        {ZEL_PARAM_GAIN, " 7 ", "7"},
        {ZEL_PARAM_GAIN, "4294967295", "4294967295"},
        {ZEL_PARAM_TEMPERATURE, "-150", "-150"},
        {ZEL_PARAM_GLOBAL_CAMERA_NAME, "left eye", "left eye"},
        {ZEL_PARAM_GLOBAL_CAMERA_NAME, "", ""},
        {ZEL_PARAM_ROI_BIN, "1,2,30,40,5,6", "1,2,30,40,5,6"}};
    for (const auto& [id, text, back] : good) {
        const ParameterValue value = ParameterValue::parse(*parameter_by_id(id), text);
        EXPECT_EQ(value.text(), back) << text;
        EXPECT_EQ(value, ParameterValue::parse(*parameter_by_id(id), back)) << text;
    }
    const std::pair<unsigned, std::vector<const char*>> bad[] = {
        {ZEL_PARAM_GAIN, {"", "many", "7x", "1.5", "0x", "4294967296", "-2147483649", "99999999999999999999"}},
        {ZEL_PARAM_ROI_BIN, {"1,2,3,4,5", "1,2,3,4,5,6,7", "1,2,3,,5,6", "7"}},
        {ZEL_PARAM_GLOBAL_CAMERA_NAME, {"a name of two and thirty letters"}},
        {ZEL_PARAM_DEFAULT_WHITE_BALANCE_MATRIX, {"1"}},
        {ZEL_PARAM_MODEL_VALUE_1, {"1"}},
        {ZEL_PARAM_ATTR, {"1"}}};
    for (const auto& [id, texts] : bad) {
        for (const char* text : texts) {
            EXPECT_THROW(ParameterValue::parse(*parameter_by_id(id), text), Error) << text;
        }
    }
}

TEST(LayerParameterValue, ShowsMatricesWideValuesAndFullTexts) {
    ParameterValue matrix(ValueKind::matrix), wide(ValueKind::wide), text(ValueKind::text);
    const Matrix elements{1, 0, 0, 0, 1.5, 0, 0, 0, -0.25};
    std::memcpy(matrix.data(), elements.data(), sizeof elements);
    EXPECT_EQ(matrix.text(), "1 0 0; 0 1.5 0; 0 0 -0.25");
    EXPECT_EQ(matrix.matrix(), elements);
    std::memset(wide.data(), 0xFE, 8);
    EXPECT_EQ(wide.text(), "18374403900871474942");
    std::memset(wide.data(), 0xFF, 8);
    EXPECT_TRUE(wide.is_none() && wide.text() == "none");
    // Without an end it stops at its field.
    std::memset(text.data(), 'x', ParameterValue::kCapacity);
    EXPECT_EQ(text.text(), std::string(32, 'x'));
}

TEST(LayerValueRange, TellsSignedFromUnsignedWords) {
    const std::tuple<int, int, int, const char*> cases[] = {
        {0, 1023, 5, "0..1023"}, {-1000, 1000, -7, "-1000..1000"}, {0, -1, 8, "0..4294967295"}, {5, 5, 5, "5..5"}};
    for (const auto& [minimum, maximum, standard, text] : cases) {
        const ValueRange range = ValueRange::from_words(minimum, maximum, standard);
        EXPECT_EQ(range.text(), text);
        EXPECT_EQ(range.standard, standard);
        EXPECT_TRUE(range.contains(range.minimum) && range.contains(range.maximum)) << text;
        EXPECT_FALSE(range.contains(range.minimum - 1) || range.contains(range.maximum + 1)) << text;
    }
    EXPECT_EQ(ValueRange{}.text(), "unknown");
    EXPECT_EQ(ValueRange::from_words(1, 2000000999, 10000).scaled(1, 1000).text(), "1..2000000");
    EXPECT_EQ(ValueRange::from_words(20, 40, 20).scaled(1000000, 1).text(), "20000000..40000000");
}

TEST(LayerRegion, MustLieInTheFrameAndLeaveAPixel) {
    constexpr unsigned kHuge = 0xFFFFFFFFu;
    const std::pair<ZelRoiBin, bool> cases[] = {
        {{0, 0, 64, 48, 1, 1}, true},    {{63, 47, 1, 1, 1, 1}, true},     {{1, 0, 64, 48, 1, 1}, false},
        {{0, 1, 64, 48, 1, 1}, false},   {{0, 0, 65, 48, 1, 1}, false},    {{64, 0, 1, 1, 1, 1}, false},
        {{0, 0, 0, 48, 1, 1}, false},    {{kHuge, 0, 2, 48, 1, 1}, false}, {{1, 0, kHuge, 48, 1, 1}, false},
        {{0, 0, 8, 4, 8, 4}, true},      {{0, 0, 8, 4, 9, 1}, false},      {{0, 0, 8, 4, 1, 5}, false},
        {{0, kHuge, 8, 4, 1, 1}, false}, {{0, 47, 8, kHuge, 1, 1}, false}};
    for (const auto& [r, good] : cases) {
        EXPECT_EQ(region_fault(r, 64, 48).empty(), good)
            << r.XOrigin << "," << r.YOrigin << "," << r.XPixels << "," << r.YPixels << "," << r.XBin << "," << r.YBin;
    }
}

TEST(LayerNearestWords, AreFewNearAndInOrder) {
    const std::vector<std::string> words{"VGA_GAIN", "GAIN", "GRAIN", "TEMPERATURE"};
    EXPECT_THAT(detail::nearest_words("GAIM", words, 2), ElementsAre("GAIN", "GRAIN"));
    EXPECT_THAT(detail::nearest_words("TEMP", words, 3), ElementsAre("TEMPERATURE")) << "within a longer one";
    EXPECT_THAT(detail::nearest_words("T", words, 3), IsEmpty());
    EXPECT_THAT(detail::nearest_words("QUASAR", words, 3), IsEmpty());
}

TEST(LayerNoFrame, NamesTheReason) {
    using std::chrono::milliseconds;
    const WaitState running{false, false, true, false, false, milliseconds(20), milliseconds(5000), 8, 0, 0};
    const std::tuple<Reason, const char*, void (*)(WaitState&)> cases[] = {
        {Reason::silent, "running (exposure of 20 ms) and sends nothing", [](WaitState&) {}},
        {Reason::no_buffers, "there are no image buffers", [](WaitState& s) { s.buffers = 0; }},
        {Reason::buffers_held, "all 8 image buffers are held", [](WaitState& s) { s.buffers_held = 8; }},
        {Reason::not_started, "not started", [](WaitState& s) { s.started = false; }},
        {Reason::sequence_over, "its sequence of 1 frame is over", [](WaitState& s) { s.started = 0, s.sequence = 1; }},
        {Reason::link_lost, "the link to the camera is lost", [](WaitState& s) { s = {}, s.link_lost = true; }},
        {Reason::waits_for_hardware, "for a trigger at its input", [](WaitState& s) { s.waits_for_hardware = true; }},
        {Reason::waits_for_software, "the software trigger", [](WaitState& s) { s.waits_for_software = true; }},
        {Reason::exposing, "exposure of 6000 ms is not over", [](WaitState& s) { s.exposure = milliseconds(6000); }},
        {Reason::exposing, "exposure of 5000.500 ms is", [](WaitState& s) {
             s.exposure += milliseconds(4980);
             s.exposure += std::chrono::microseconds(500);
         }}};
    for (const auto& [reason, why, change] : cases) {
        WaitState state = running;
        change(state);
        const NoFrame none(state);
        EXPECT_EQ(none.reason(), reason) << why;
        EXPECT_THAT(none.why(), HasSubstr(why));
        EXPECT_NE(none.hint(), "") << why;
    }
}

TEST(LayerFrameCounter, TellsTheCausesApartAndTheCamerasRate) {
    const struct {
        const char* name;
        std::vector<std::uint32_t> numbers;
        std::uint64_t link, skipped, missing, no_buffer;
    } cases[] = {
        {"no frame", {}, 0, 0, 0, 0},
        {"one frame, whatever its number", {1000}, 0, 0, 0, 0},
        {"none missing", {3, 4, 5}, 0, 0, 0, 0},
        {"no free buffer", {0, 1, 5}, 0, 0, 3, 3},
        {"lost on the link", {0, 1, 5}, 3, 0, 3, 0},
        {"both", {0, 4, 8}, 2, 0, 6, 4},
        {"passed over", {0, 4, 8}, 0, 6, 6, 0},
        {"all three", {0, 10}, 2, 3, 9, 4},
        {"the transport lost more after the last frame", {0, 2}, 5, 0, 1, 0},
        {"numbers wrap", {0xFFFFFFFEu, 0xFFFFFFFFu, 1}, 0, 0, 1, 1},
        {"numbers start again", {7, 8, 0, 1}, 0, 0, 0, 0},
        {"the same number twice", {7, 7, 8}, 0, 0, 0, 0},
    };
    for (const auto& c : cases) {
        FrameCounter counter;
        for (const std::uint32_t number : c.numbers) counter.frame(number, 0);
        counter.set_skipped(c.skipped);
        const Drops drops = counter.count(c.link);
        EXPECT_EQ(std::tuple(drops.link, drops.skipped, counter.missing(), drops.no_buffer),
                  std::tuple(c.link, c.skipped, c.missing, c.no_buffer))
            << c.name;
        EXPECT_EQ(counter.camera_rate(), 0.0) << c.name;
    }
    // The camera's rate counts the frames that are missing.
    FrameCounter counter;
    counter.frame(7, 0xFFFFFF00u);
    counter.frame(12, 0xFFFFFF00u + 500);  // the clock begins anew, too
    EXPECT_EQ(counter.camera_rate(), 10.0);
}

TEST(LayerColor, TablesTakeTheBlackLevelOffAndBendAsScreensExpect) {
    ColorSetting setting{ColorFormat::rgb16, ColorSpace::srgb, 14, 100};
    const auto black = black_level_table(14, 100), wide = srgb_table(setting);
    ASSERT_EQ(black.size(), 3u << 14);
    EXPECT_THAT((std::vector{black[0], black[3 * 100], black[3 * 101 + 2], black.back()}),
                ElementsAre(0, 0, 1, 16383 - 100));
    // Half the light is 73.5 % of the curve; what lost its black level still reaches white.
    ASSERT_EQ(wide.size(), 3u << 14);
    EXPECT_EQ(wide[0], 0);
    EXPECT_EQ(wide[3 * (16383 - 100) + 1], 65535);
    EXPECT_NEAR(wide[3 * (16383 - 100) / 2], 65535 * 0.7354, 15);
    EXPECT_TRUE(std::ranges::is_sorted(wide));
    setting.format = ColorFormat::rgba8;
    const auto narrow = srgb_table(setting);
    ASSERT_EQ(narrow.size(), 3u << 8);
    EXPECT_EQ(narrow.back(), 255);
    EXPECT_EQ(std::tuple(setting.channels(), setting.bytes_per_channel(), setting.output_bits()), std::tuple(4, 1, 8));
}

}  // namespace
}  // namespace zel
