// Color pictures of a small color camera: settings, the chain of steps, and what the application is called with.
#include <atomic>
#include <cstring>
#include <limits>
#include <numeric>
#include <thread>

#include "kernels/Kernels.h"
#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

using Matrix = std::array<float, 9>;
using Words = std::vector<std::uint16_t>;

Bytes DoubleBytes(double value) {
    Bytes bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

// 6 x 4 pixels of 14 bits, phase 1: the top-left pixel belongs to channel 2.
class ColorTest : public CameraTest {
  protected:
    static constexpr unsigned kW = 6, kH = 4;

    ColorTest() {
        m_Table.m_Exceptions.erase(CFA_TYPE);
        m_Table.m_Blocks[CFA_TYPE] = TextBytes("Bayer");
        m_Table.m_Blocks[CCM_OUTPUT_COLOR_SPACE] = TextBytes("CCIR 709");
        m_Table.m_Values[CFA_PHASE] = 1;
        m_Table.m_Values[BITS_PER_PIXEL] = 14;
        SetMatrix(CCM_1_1, {2, 0, 0, 0, 1, 0, 0, 0, 1});
        SetMatrix(DWB_1_1, {1, 1, 0, 0, 1, 0, 0, 0, 1});
        SetSize(kW, kH);
    }
    void SetSize(int w, int h) {
        m_Table.m_Values[H_SIZE] = m_Table.m_Values[H_ROI_PIXELS] = w;
        m_Table.m_Values[V_SIZE] = m_Table.m_Values[V_ROI_PIXELS] = h;
    }
    void SetMatrix(int first, const std::array<double, 9>& matrix) {
        for (int i = 0; i < 9; ++i) m_Table.m_Blocks[first + i] = DoubleBytes(matrix[static_cast<unsigned>(i)]);
    }
    void Begin() {
        ASSERT_EQ(m_Camera->ConnectCommon(), 0);
        ASSERT_EQ(m_Camera->StartCommon(), 0);
    }
    // A frame as the transport delivers it; its samples count up from 100 in tens.
    ZelImage* Deliver(unsigned short step = 10) {
        ZelImage* image = m_Camera->GetFreeImage();
        if (!image) return nullptr;
        for (unsigned i = 0; i < image->num_pixels; ++i) image->pixels[i] = static_cast<std::uint16_t>(100 + step * i);
        m_Camera->FillImageInfo(image);
        EXPECT_TRUE(m_Camera->SetPendingImage(image));
        return image;
    }
    ZelColorImage* Picture(unsigned short step = 10) {
        Deliver(step);
        return m_Camera->GetPendingColorImage();
    }
    // The demosaiced frame, computed row by row.
    static Words Demosaiced(const ZelImage* image, int phase) {
        const unsigned w = image->w, h = image->h;
        Words picture;
        for (unsigned y = 0; y < h; ++y) {
            Words c[3] = {Words(w), Words(w), Words(w)};
            const auto* row = image->pixels + y * w;
            kernels::scalar::DemosaicRow(
                {y ? row - w : nullptr, row, y + 1 < h ? row + w : nullptr, w, kernels::PhaseAt(phase, 0, y), false},
                {{c[0].data(), c[1].data(), c[2].data()}, w});
            for (unsigned x = 0; x < w; ++x) picture.insert(picture.end(), {c[0][x], c[1][x], c[2][x]});
        }
        return picture;
    }
    static Words Content(const ZelColorImage* image) {
        const auto* words = static_cast<const std::uint16_t*>(image->color_pixels);
        return Words(words, words + image->w * image->h * 3);
    }
    void ExpectMosaicOf(int phase) {
        const ZelColorImage* image = Picture();
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(Content(image), Demosaiced(image, phase)) << image->w << " x " << image->h;
    }
    Matrix Transform() {
        Matrix matrix{};
        EXPECT_TRUE(m_Camera->GetColorTransform(matrix.data()));
        return matrix;
    }
};

TEST_F(ColorTest, APictureIsTheDemosaicedFrameUntilATransformIsSet) {
    Begin();
    const ZelColorImage* image = Picture();
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->color_size_in_bytes, kW * kH * 6);
    EXPECT_EQ(Content(image), Demosaiced(image, 1));
    EXPECT_EQ(m_Camera->GetPendingColorImage(), nullptr);
    EXPECT_EQ(m_Camera->GetLastPendingColorImage(), nullptr);
    m_Table.m_Values[CFA_PHASE] = 5;
    Begin();
    ExpectMosaicOf(0);  // grey without a phase
}

// The matrix concatenated last acts first: T x M. An operation that does not exist changes nothing.
TEST_F(ColorTest, OperationsBuildATransform) {
    const struct {
        std::vector<int> operations;
        bool answer;
        Matrix transform;
    } rows[] = {{{8, 9}, true, {2, 2, 0, 0, 1, 0, 0, 0, 1}},
                {{10}, true, {2, 1, 0, 0, 1, 0, 0, 0, 1}},
                {{8, 0}, true, {1, 0, 0, 0, 1, 0, 0, 0, 1}},
                {{8, 11}, false, {2, 0, 0, 0, 1, 0, 0, 0, 1}},
                {{8, -1}, false, {2, 0, 0, 0, 1, 0, 0, 0, 1}}};
    for (const auto& row : rows) {
        Begin();
        m_Camera->ResetColorTransform();
        bool answer = false;
        for (const int operation : row.operations) answer = m_Camera->ConcatenateColorTransform(operation, 0);
        EXPECT_EQ(answer, row.answer) << row.operations.back();
        EXPECT_EQ(Transform(), row.transform) << row.operations.back();
    }
    EXPECT_FALSE(m_Camera->GetColorTransform(nullptr));
}

TEST_F(ColorTest, MatricesThatCannotBeReadAreTheIdentity) {
    m_Table.m_Exceptions[CCM_2_2] = kExceptionBadIndex;
    SetMatrix(DWB_1_1, {1, 1, 0, 0, std::numeric_limits<double>::quiet_NaN(), 0, 0, 0, 1});
    Begin();
    EXPECT_TRUE(m_Camera->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_WHITE_BALANCE_AND_CORRECTION, 0));
    EXPECT_EQ(Transform(), (Matrix{1, 0, 0, 0, 1, 0, 0, 0, 1}));
}

TEST_F(ColorTest, PicturesInXyzPassThroughTwoConversionsThatAreNotQuiteTheIdentity) {
    m_Table.m_Blocks[CCM_OUTPUT_COLOR_SPACE] = TextBytes("XYZ");
    Begin();
    EXPECT_TRUE(m_Camera->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_16_BIT, 0));
    const Matrix transform = Transform();
    EXPECT_NEAR(transform[0], 1, 0.002);
    EXPECT_NE(transform[0], 1.0f);
    EXPECT_NEAR(transform[1], 0, 0.002);
    EXPECT_TRUE(m_Camera->ResetColorTransform());
    EXPECT_EQ(Transform(), transform);
}

TEST_F(ColorTest, AMatrixThatLeadsNowhereIsRefused) {
    Begin();
    const Matrix none{std::numeric_limits<float>::infinity(), 0, 0, 0, 1, 0, 0, 0, 1};
    const Matrix huge{1e30f, 0, 0, 0, 1, 0, 0, 0, 1};
    EXPECT_FALSE(m_Camera->ConcatenateColorMatrix(nullptr));
    EXPECT_FALSE(m_Camera->ConcatenateColorMatrix(none.data()));
    EXPECT_TRUE(m_Camera->ConcatenateColorMatrix(huge.data()));
    EXPECT_FALSE(m_Camera->ConcatenateColorMatrix(huge.data())) << "their product overflows";
    EXPECT_EQ(Transform(), huge);
}

TEST_F(ColorTest, OutputFormatsAndDepths) {
    Begin();
    ASSERT_TRUE(m_Camera->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_16_BIT, 12));
    EXPECT_TRUE(m_Camera->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_16_BIT, 15)) << "logged; the depth stays";
    const ZelColorImage* image = Picture(300);
    ASSERT_NE(image, nullptr);
    Words expected = Demosaiced(image, 1);
    for (auto& word : expected) word = static_cast<std::uint16_t>(word >> 2);
    EXPECT_EQ(Content(image), expected) << "shifted by two";

    for (const auto& [operation, channels] :
         {std::pair(ZEL_COLOR_TRANSFORM_8_BIT_RGB, 3u), std::pair(ZEL_COLOR_TRANSFORM_8_BIT_RGBX, 4u)}) {
        ASSERT_TRUE(m_Camera->ConcatenateColorTransform(operation, 0));
        image = Picture(300);
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image->color_size_in_bytes, kW * kH * channels);
        const auto* bytes = static_cast<const std::uint8_t*>(image->color_pixels);
        const Words whole = Demosaiced(image, 1);
        for (unsigned pixel = 0; pixel < kW * kH; ++pixel) {
            for (unsigned c = 0; c < channels; ++c) {
                ASSERT_EQ(bytes[pixel * channels + c], c == 3 ? 255 : whole[pixel * 3 + c] >> 6) << pixel;
            }
        }
    }
}

// Before its first start, and for frames that waited while the camera was set to another depth.
TEST_F(ColorTest, TheDepthIsTheCamerasAndTheFrames) {
    m_Table.m_Values[BITS_PER_PIXEL] = 16;
    ASSERT_EQ(m_Camera->ConnectCommon(), 0);
    ASSERT_TRUE(m_Camera->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_16_BIT, 16));
    ASSERT_EQ(m_Camera->StartCommon(), 0);
    const ZelColorImage* image = Picture();
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(Content(image), Demosaiced(image, 1)) << "no bit was shifted out";

    ASSERT_TRUE(m_Camera->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_8_BIT_RGB, 0));
    Deliver(300);
    m_Table.m_Values[BITS_PER_PIXEL] = 12;
    ASSERT_EQ(m_Camera->StartCommon(), 0);
    image = m_Camera->GetPendingColorImage();
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(static_cast<const std::uint8_t*>(image->color_pixels)[2], Demosaiced(image, 1)[2] >> 8);
    EXPECT_EQ(static_cast<const std::uint8_t*>(image->color_pixels)[3 * kW * kH - 1], Demosaiced(image, 1).back() >> 8);
}

TEST_F(ColorTest, ARegionBeginsAtItsOwnPlaceInTheMosaic) {
    m_Table.m_Values[H_ROI_PIXELS] = 4;
    m_Table.m_Values[V_ROI_PIXELS] = 2;
    for (const auto& [type, x, y, phase] : {std::array{5, 1, 0, 3}, {4, 0, 1, 4}, {5, 0, 1, 4}, {4, 1, 1, 2}}) {
        m_Transport.m_Answers.interface_type = type;
        m_Table.m_Values[H_ROI_ORIGIN] = x;
        m_Table.m_Values[V_ROI_ORIGIN] = y;
        Begin();
        ExpectMosaicOf(phase);
    }
}

// On purpose: one factor of 1 keeps the color stages going, whatever the message says.
TEST_F(ColorTest, OnlyBothBinningFactorsTogetherSwitchColorOff) {
    for (const auto& [bx, by, color] : {std::tuple(2, 1, true), {1, 2, true}, {2, 2, false}}) {
        m_Table.m_Values[H_BIN] = bx;
        m_Table.m_Values[V_BIN] = by;
        Begin();
        const ZelColorImage* image = Picture();
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image->w, kW) << "color frames are not binned";
        EXPECT_EQ(Content(image) == Demosaiced(image, 1), color);
    }
}

TEST_F(ColorTest, TablesBeforeAndAfterTheTransform) {
    Begin();
    // Sample v of channel k becomes 3 v + k, and at the end 1000 - v. The last entry goes on beyond the table's end.
    Words input(750), output(3000);
    std::iota(input.begin(), input.end(), std::uint16_t{0});
    for (unsigned i = 0; i < 3000; ++i) output[i] = static_cast<std::uint16_t>(1000 - i / 3);
    EXPECT_TRUE(m_Camera->SetInputLinearizationTable(input.data(), 250, 3));
    EXPECT_TRUE(m_Camera->SetOutputNonLinearizationTable(output.data(), 1000, 3));
    const ZelColorImage* image = Picture();
    ASSERT_NE(image, nullptr);
    Words expected = Demosaiced(image, 1);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        expected[i] = output[3 * input[3 * std::min<std::size_t>(expected[i], 249) + i % 3]];
    }
    EXPECT_EQ(Content(image), expected);
    // Tables that have not three channels are not applied.
    EXPECT_TRUE(m_Camera->SetInputLinearizationTable(input.data(), 100, 4));
    EXPECT_TRUE(m_Camera->SetOutputNonLinearizationTable(output.data(), 100, 1));
    ExpectMosaicOf(1);
}

TEST_F(ColorTest, TheSmallestMosaics) {
    for (const auto& [w, h] : {std::pair(1, 1), {1, 5}, {5, 1}, {2, 2}}) {
        SetSize(w, h);
        Begin();
        ExpectMosaicOf(1);
    }
}

// What the callback is handed, and what it may do meanwhile.
struct Scratchpad {
    ZelCameraControl* camera;
    int calls = 0;
    std::uint16_t first = 0;
    bool taken_inside = false;

    static int ZEL_CALL Call(ZelColorImage* image, void* context) {
        auto* self = static_cast<Scratchpad*>(context);
        ++self->calls;
        self->first = static_cast<std::uint16_t*>(image->color_pixels)[2];
        // No lock is held: these wait for the processing lock and the pipelines'.
        self->camera->GetScratchBufferCount();
        self->camera->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_16_BIT, 12);
        static_cast<ZelImageInternal*>(image)->color_planes.planes[2][0] = 0;
        // The frame itself can be taken from inside.
        self->taken_inside = static_cast<ZelCamera*>(self->camera)->GetPendingImage() == image;
        return 0;
    }
};

TEST_F(ColorTest, TheScratchpadSeesEachFrameInItsOwnColors) {
    Scratchpad scratchpad{m_Camera.get()};
    Begin();
    const Matrix half{0.5f, 0, 0, 0, 0.5f, 0, 0, 0, 0.5f};
    m_Camera->ResetScratchpadTransform();
    EXPECT_TRUE(m_Camera->ConcatenateScratchpadMatrix(half.data()));
    EXPECT_TRUE(m_Camera->SetScratchpadCallback(Scratchpad::Call, &scratchpad));
    m_Camera->SetImageCallback([](ZelImage*, void*) {}, nullptr);
    ZelImage* image = Deliver();
    m_Transport.EmitImage(image);
    EXPECT_EQ(scratchpad.calls, 1);
    EXPECT_EQ(scratchpad.first, 50) << "100 through the scratchpad's transform";
    EXPECT_TRUE(scratchpad.taken_inside);
    Words expected = Demosaiced(image, 1);
    expected[2] = 0;  // what the callback did to the planes
    for (auto& word : expected) word = static_cast<std::uint16_t>(word >> 2);
    EXPECT_EQ(Content(static_cast<const ZelColorImage*>(image)), expected)
        << "what the callback staged is in force for the same frame";
}

// A thread that wants the frame gets it when the callback is through with it.
TEST_F(ColorTest, AFrameAtTheScratchpadIsWaitedFor) {
    static std::atomic<bool> inside, go_on;
    inside = go_on = false;
    Begin();
    m_Camera->SetImageCallback([](ZelImage*, void*) {}, nullptr);
    m_Camera->SetScratchpadCallback(
        [](ZelColorImage*, void*) {
            inside = true;
            while (!go_on) std::this_thread::yield();
            return 0;
        },
        nullptr);
    ZelImage* image = Deliver();
    std::thread transport([&] { m_Transport.EmitImage(image); });
    while (!inside) std::this_thread::yield();
    Words seen;
    std::thread application([&] {
        if (auto* pending = static_cast<ZelCamera&>(*m_Camera).GetPendingImage()) {
            seen = Content(static_cast<ZelColorImage*>(pending));
        }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    go_on = true;
    transport.join();
    application.join();
    EXPECT_EQ(seen, Demosaiced(image, 1));
}

// What a scratchpad callback does to the camera object that it was called by, and what becomes of the frame.
struct Inside {
    const char* name;
    void (*action)(ZelCameraControl& camera, ZelColorImage* image);
    bool called_back, delivered;
    ZelCameraControl* camera = nullptr;
};
class InsideTest : public ColorTest, public testing::WithParamInterface<Inside> {};

TEST_P(InsideTest, OnTheTransportsAndOnTheApplicationsThread) {
    for (const bool arrives : {true, false}) {
        Inside inside = GetParam();
        inside.camera = m_Camera.get();
        m_Camera->SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 8);
        Begin();
        m_Camera->SetScratchpadCallback(
            [](ZelColorImage* image, void* context) {
                const auto* self = static_cast<Inside*>(context);
                self->action(*self->camera, image);
                return 1;
            },
            &inside);
        bool called_back = false;
        m_Camera->SetImageCallback([](ZelImage*, void* context) { *static_cast<bool*>(context) = true; }, &called_back);
        ZelImage* delivered = Deliver();
        if (arrives) m_Transport.EmitImage(delivered);
        EXPECT_EQ(called_back, arrives && inside.called_back);
        const ZelColorImage* image = m_Camera->GetPendingColorImage();
        ASSERT_EQ(image != nullptr, inside.delivered);
        EXPECT_TRUE(!image || Content(image) == Demosaiced(image, 1));
    }
}

INSTANTIATE_TEST_SUITE_P(
    , InsideTest,
    testing::Values(Inside{"Stop", [](ZelCameraControl& camera, ZelColorImage*) { camera.Stop(); }, false, true},
                    Inside{"Close", [](ZelCameraControl& camera, ZelColorImage*) { camera.Close(); }, false, false},
                    Inside{"AnotherPool",
                           [](ZelCameraControl& camera, ZelColorImage*) {
                               camera.SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 3);
                               camera.Start();
                           },
                           false, false},
                    Inside{"AnotherPoolOnTheTransportsThread",
                           [](ZelCameraControl& camera, ZelColorImage* image) {
                               camera.SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 3);
                               std::thread([&] { camera.StartCommon(); }).join();
                               EXPECT_EQ(image->pixels[0], 100) << "stays readable";
                           },
                           false, false},
                    Inside{"SwitchesTheImageCallbackOff",
                           [](ZelCameraControl& camera, ZelColorImage*) { camera.SetImageCallback(nullptr, nullptr); },
                           false, true},
                    Inside{"ForgetsItself",
                           [](ZelCameraControl& camera, ZelColorImage*) {
                               camera.SetScratchpadCallback(nullptr, nullptr);
                               camera.FreeScratchBuffers();
                           },
                           true, true}),
    [](const auto& row) { return std::string(row.param.name); });

// A transport that stops waits for its own thread, and that thread may be waiting for the frame.
TEST_F(ColorTest, StoppingAtTheScratchpadDoesNotWaitForAThreadThatWaitsForTheFrame) {
    static std::atomic<bool> inside, handler_done;
    static bool waited;
    inside = handler_done = waited = false;
    Begin();
    m_Camera->SetImageCallback([](ZelImage*, void*) {}, nullptr);
    m_Camera->SetScratchpadCallback(
        [](ZelColorImage*, void* camera) {
            inside = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            static_cast<ZelCameraControl*>(camera)->Stop();
            return 0;
        },
        m_Camera.get());
    m_Transport.SetHandler([this](const Bytes& datagram) {
        for (int i = 0; i < 60000 && !handler_done; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        waited = handler_done;
        return m_Table.Answer(datagram);
    });
    ZelImage* image = Deliver();
    std::thread transport([&] {
        while (!inside) std::this_thread::yield();
        m_Transport.EmitImage(image);
        handler_done = true;
    });
    EXPECT_EQ(m_Camera->GetPendingColorImage(), image);
    transport.join();
    EXPECT_TRUE(waited) << "Stop() could not end";
}

// What a transport or a callback writes into a record's geometry reaches nothing outside the buffers.
TEST_F(ColorTest, GeometryThatDoesNotFitTheBuffers) {
    m_Transport.m_Answers.interface_type = CAMERA_TYPE_PLEORA_EBUS;
    m_Table.m_Values[SENSOR_TAPS_VAL] = 2;
    SetSize(300, 200);
    Begin();
    for (int i = 0; i < 8; ++i) Picture();
    m_Camera->FreeAllInUseImages();
    // A larger frame, packed, fits the buffer; unpacked it asks for another one.
    std::vector<ZelColorImage*> pictures;
    for (unsigned short i = 0; i < 8; ++i) {
        ZelImage* image = Deliver(i);
        ASSERT_NE(image, nullptr);
        image->h = 266;
        image->num_pixels = image->w * image->h;
        pictures.push_back(m_Camera->GetPendingColorImage());
    }
    for (const ZelColorImage* picture : pictures) EXPECT_TRUE(Content(picture) == Demosaiced(picture, 1));
    m_Camera->FreeAllInUseImages();
    m_Table.m_Values[SENSOR_TAPS_VAL] = 1;
    Begin();
    ZelImage* image = Deliver(0);
    image->size_in_bytes = 1u << 30;
    ZelColorImage* picture = m_Camera->GetPendingColorImage();
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(picture->color_size_in_bytes, 0u);
    m_Camera->SetScratchpadCallback(
        [](ZelColorImage* record, void*) {
            record->w = record->h = record->num_pixels = record->size_in_bytes = 50000;
            record->color_pixels = nullptr;
            return 1;
        },
        nullptr);
    picture = Picture(0);
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(picture->color_size_in_bytes, 300u * 200 * 6);
}

TEST_F(ColorTest, APictureOfAnEarlierFrameIsNotThisFrames) {
    Begin();
    for (int i = 0; i < 8; ++i) m_Camera->FreeColorImage(Picture());
    Deliver();
    const auto* image = static_cast<const ZelColorImage*>(static_cast<ZelCamera&>(*m_Camera).GetPendingImage());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->color_size_in_bytes, 0u) << "taken as a raw frame before it arrived in color";
}

// Each frame has one complete transform, however fast another thread changes it.
TEST_F(ColorTest, AFrameNeverMixesTwoSettings) {
    SetSize(64, 32);
    Begin();
    std::atomic<bool> stop{false};
    std::thread settings([&] {
        const Matrix three{3, 0, 0, 0, 3, 0, 0, 0, 3};
        const Words table(3 * 16384, 7);
        for (unsigned i = 0; !stop; ++i) {
            m_Camera->ResetColorTransform();
            m_Camera->ConcatenateColorMatrix(three.data());
            m_Camera->SetOutputNonLinearizationTable(i % 2 ? table.data() : nullptr, 16384, 3);
        }
    });
    for (int frame = 0; frame < 400; ++frame) {
        ZelColorImage* image = Picture(0);
        ASSERT_NE(image, nullptr);
        const Words content = Content(image);
        EXPECT_THAT(content[0], testing::AnyOf(100, 300, 7));
        EXPECT_EQ(std::count(content.begin(), content.end(), content[0]), static_cast<std::ptrdiff_t>(content.size()));
        m_Camera->FreeColorImage(image);
    }
    stop = true;
    settings.join();
}

}  // namespace
}  // namespace zel::test
