// Reading and writing every parameter.
#include <cstring>
#include <limits>

#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

constexpr unsigned char kUntouched = 0xAB;

struct Buffer {
    Buffer() { std::memset(bytes, kUntouched, sizeof bytes); }
    int Int(int word = 0) const {
        int value;
        std::memcpy(&value, bytes + 4 * word, sizeof value);
        return value;
    }
    bool Untouched() const {
        for (unsigned char byte : bytes) {
            if (byte != kUntouched) return false;
        }
        return true;
    }
    unsigned char bytes[72];
};

// What distinguishes an id: where its value lives.
enum class Home { kTable, kBlock, kHost, kNowhere };

struct Row {
    int id;
    Home home;
    int entry;  // of the camera's table
};

std::vector<Row> AllParameters() {
    const std::map<int, int> entries = {{2, HOST_PORT_PROTOCOL},
                                        {3, FW_VERSION},
                                        {4, HW_VERSION},
                                        {5, HW_MODEL},
                                        {6, SERIAL_NUMBER},
                                        {7, CAMERA_STATE},
                                        {8, EXPOSURE_STATE},
                                        {9, TRIGGER_STATE},
                                        {11, EXPOSURE_TIME},
                                        {12, EXPOSURE_ACTUAL},
                                        {13, H_SIZE},
                                        {14, V_SIZE},
                                        {16, FRAME_COUNT},
                                        {17, CURRENT_FRAME},
                                        {18, OP_MODE},
                                        {19, CDS_GAIN_IDX},
                                        {20, VGA_GAIN},
                                        {21, VGA_GAIN},
                                        {22, OB_LEVEL},
                                        {24, CLOCK_SPEED_IDX},
                                        {25, CLOCK_SPEED_VAL},
                                        {26, FRAME_TIME},
                                        {27, FRAME_RATE},
                                        {28, COOLING_MODE},
                                        {30, SENSOR_TEMP},
                                        {31, QX_OPTION_MODE},
                                        {32, TURBO_MODE},
                                        {33, H_ROI_ORIGIN},
                                        {34, V_ROI_ORIGIN},
                                        {35, H_ROI_PIXELS},
                                        {36, V_ROI_PIXELS},
                                        {37, H_BIN},
                                        {38, V_BIN},
                                        {41, SENSOR_TAPS_IDX},
                                        {42, SENSOR_TAPS_VAL},
                                        {43, TDI_TRIGGERS},
                                        {44, TDI_LINESHIFTS},
                                        {45, TDI_TRIM_MODE},
                                        {46, TDI_TRIM_LINES},
                                        {47, CAMERA_NAME},
                                        {48, CDS_GAIN_VAL},
                                        {49, PIXEL_SIZE},
                                        {50, BITS_PER_PIXEL},
                                        {51, BYTES_PER_PIXEL},
                                        {52, READOUT_TIME},
                                        {54, HW_TRIG_SOURCE},
                                        {55, HW_TRIG_POLARITY},
                                        {59, TDI_LINE_SHIFT_TIME},
                                        {60, TDI_LINE_READ_TIME},
                                        {61, TDI_AF},
                                        {63, FEATURELIST},
                                        {64, FEATURESVALID}};
    const std::vector<int> host = {10, 15, 53, 56, 57, 58, 62, 65, 66, 67, 68, 69, 70, 71, 72};
    std::vector<Row> rows;
    for (int id = 0; id < ZEL_MAX_PARAMS; ++id) {
        if (const auto found = entries.find(id); found != entries.end()) {
            rows.push_back({id, SyncTableIsBlock(found->second) ? Home::kBlock : Home::kTable, found->second});
        } else {
            const bool is_host = std::find(host.begin(), host.end(), id) != host.end();
            rows.push_back({id, is_host ? Home::kHost : Home::kNowhere, -1});
        }
    }
    return rows;
}

// Exchanges that reading a host-side parameter costs.
int HostReadExchanges(int id) {
    switch (id) {
        case ZEL_PARAM_ROI_BIN:
            return 6;
        case ZEL_PARAM_EXPOSURE_TIME_US:
        case ZEL_PARAM_COLOR_FILTER_TYPE:
        case ZEL_PARAM_COLOR_IR_FILTER_TYPE:
        case ZEL_PARAM_CCM_OUTPUT_COLOR_SPACE:
            return 1;
        default:
            return 0;
    }
}

class EveryParameter : public CameraTest, public testing::WithParamInterface<Row> {};

TEST_P(EveryParameter, ReadsFromItsHomeAndNowhereElse) {
    const Row row = GetParam();
    const bool from_index = row.id == ZEL_PARAM_TAPS_VALUE || row.id == ZEL_PARAM_READOUT_SPEED;
    m_Table.m_Values[row.entry] = 4711;
    if (row.home == Home::kBlock) m_Table.m_Blocks[row.entry] = TextBytes("some text");
    m_Transport.ForgetSent();
    Buffer buffer;
    const bool read = m_Camera->GetParameter(static_cast<unsigned>(row.id), sizeof buffer.bytes, buffer.bytes);
    switch (row.home) {
        case Home::kTable:
            EXPECT_TRUE(read);
            EXPECT_EQ(buffer.Int(), row.id == ZEL_PARAM_TAPS_VALUE ? 1 : from_index ? 20000000 : 4711);
            EXPECT_EQ(m_Transport.CountSent(GetRequest(row.entry)), from_index ? 0 : 1);
            break;
        case Home::kBlock:
            EXPECT_TRUE(read);
            EXPECT_EQ(std::memcmp(buffer.bytes, "some text", 9), 0);
            break;
        case Home::kHost:
            EXPECT_EQ(read, row.id != ZEL_PARAM_UPDATE_PARAMETERS);
            EXPECT_EQ(m_Transport.Exchanges(), HostReadExchanges(row.id));
            break;
        case Home::kNowhere:
            // The selection starts out as entry 0, which the camera is asked about.
            EXPECT_EQ(m_Transport.Exchanges(), row.id == ZEL_PARAM_ATTR ? 1 : 0);
            break;
    }
}

TEST_P(EveryParameter, WritesToItsHomeAndReportsSuccessEvenWhenRefused) {
    const Row row = GetParam();
    if (row.home == Home::kHost || row.id == ZEL_PARAM_CMD_ID_ATTR_ID) return;
    if (row.home != Home::kNowhere) Refuse(row.entry);
    m_Transport.ForgetSent();
    const int value = 37;
    EXPECT_TRUE(m_Camera->SetParameter(row.id, &value));
    EXPECT_EQ(m_Transport.Exchanges(), row.home == Home::kNowhere ? 0 : 1);
    if (row.home != Home::kNowhere) {
        EXPECT_EQ(m_Transport.Sent()[0], SetRequest(row.entry, value));
    }
}

TEST_P(EveryParameter, NullDataIsRefusedWithoutTraffic) {
    const Row row = GetParam();
    m_Transport.ForgetSent();
    if (row.id == ZEL_PARAM_EXPOSURE_TIME_US) {
        EXPECT_FALSE(m_Camera->GetParameter(static_cast<unsigned>(row.id), 0, nullptr));
        EXPECT_FALSE(m_Camera->SetParameter(row.id, nullptr));
        return;
    }
    EXPECT_FALSE(m_Camera->GetParameter(static_cast<unsigned>(row.id), 0, nullptr));
    if (row.id != ZEL_PARAM_UPDATE_PARAMETERS) {
        EXPECT_FALSE(m_Camera->SetParameter(row.id, nullptr));
    }
    EXPECT_EQ(m_Transport.Exchanges(), 0);
}

INSTANTIATE_TEST_SUITE_P(, EveryParameter, testing::ValuesIn(AllParameters()),
                         [](const auto& row) { return std::string(ParameterName(row.param.id)); });

class ParameterTest : public CameraTest {};

TEST_F(ParameterTest, IdsOutsideTheTable) {
    for (const int id : {-1, 73, 74, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        Buffer buffer;
        EXPECT_FALSE(m_Camera->SetParameter(id, buffer.bytes)) << id;
        if (id >= 0) {
            EXPECT_FALSE(m_Camera->GetParameter(static_cast<unsigned>(id), 4, buffer.bytes)) << id;
        }
        EXPECT_TRUE(buffer.Untouched());
    }
    EXPECT_FALSE(m_Camera->GetParameter(0x80000000u, 4, Buffer().bytes));
    EXPECT_EQ(m_Transport.Exchanges(), 0);
    EXPECT_EQ(m_Camera->GetParameterValue(74), 0);
    EXPECT_EQ(m_Camera->GetParameterValue(73), 73);
}

TEST_F(ParameterTest, AFailedReadOfAValueAnswersTheId) {
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_PIXEL_OFFSET), ZEL_PARAM_PIXEL_OFFSET);
    m_Table.m_Exceptions[H_SIZE] = kExceptionBadIndex;
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_HSIZE), ZEL_PARAM_HSIZE);
}

TEST_F(ParameterTest, ExtendedIds) {
    ASSERT_TRUE(m_Camera->Open());
    const std::uint64_t expected[6] = {35000000, 63400000, kNoModelValue, 68900000, 123000000, kNoModelValue};
    for (unsigned n = 0; n < 6; ++n) {
        std::uint64_t value = 0;
        EXPECT_TRUE(m_Camera->GetParameter(ZEL_PARAM_MODEL_VALUE_1 + n, 8, &value));
        EXPECT_EQ(value, expected[n]) << n;
    }
    Buffer buffer;
    EXPECT_TRUE(m_Camera->GetParameter(ZEL_PARAM_MODEL_VALUE_6 + 1, 8, buffer.bytes));
    EXPECT_TRUE(m_Camera->GetParameter(0xFFFFFFFFu, 8, buffer.bytes));
    EXPECT_TRUE(m_Camera->GetParameter(ZEL_PARAM_MODEL_VALUE_1, 8, nullptr));
    EXPECT_TRUE(buffer.Untouched());
}

TEST_F(ParameterTest, ExposureUnitScalesOnlyTheTimeWithoutUnit) {
    const int unit = 1, five = 5, other = 2;
    EXPECT_TRUE(m_Camera->SetParameter(ZEL_PARAM_EXPOSURE_UNIT, &unit));
    EXPECT_TRUE(m_Camera->SetParameter(ZEL_PARAM_EXPOSURE_TIME, &five));
    EXPECT_EQ(m_Table.m_Values[EXPOSURE_TIME], 5000);
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_EXPOSURE_TIME), 5);
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_EXPOSURE_TIME_US), 5000);
    EXPECT_TRUE(m_Camera->SetParameter(ZEL_PARAM_EXPOSURE_UNIT, &other));
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_EXPOSURE_UNIT), 1);
    EXPECT_TRUE(m_Camera->SetParameterValue(ZEL_PARAM_EXPOSURE_TIME_US, 1999));
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_EXPOSURE_TIME), 1);
}

TEST_F(ParameterTest, ExposureInMicrosecondsReportsARefusal) {
    Refuse(EXPOSURE_TIME);
    EXPECT_FALSE(m_Camera->SetParameterValue(ZEL_PARAM_EXPOSURE_TIME_US, 10));
    EXPECT_TRUE(m_Camera->SetParameterValue(ZEL_PARAM_EXPOSURE_TIME, 10));
}

TEST_F(ParameterTest, TapsAndSpeedFollowTheIndexWrittenLastWithoutTraffic) {
    const int taps[] = {1, 2, 4}, hertz[] = {20000000, 40000000};
    for (int index = 0; index < 3; ++index) {
        m_Camera->SetParameter(ZEL_PARAM_TAPS_INDEX, &index);
        m_Transport.ForgetSent();
        EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_TAPS_VALUE), taps[index]);
        EXPECT_EQ(m_Transport.Exchanges(), 0);
    }
    for (int index = 0; index < 2; ++index) {
        m_Camera->SetParameter(ZEL_PARAM_READOUT_SPEED_INDEX, &index);
        EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_READOUT_SPEED), hertz[index]);
    }
    const int unknown = 7;
    m_Camera->SetParameter(ZEL_PARAM_TAPS_INDEX, &unknown);
    m_Camera->SetParameter(ZEL_PARAM_READOUT_SPEED_INDEX, &unknown);
    m_Table.m_Values[SENSOR_TAPS_VAL] = 9;
    m_Table.m_Values[CLOCK_SPEED_VAL] = 99;
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_TAPS_VALUE), 9);
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_READOUT_SPEED), 99);
}

TEST_F(ParameterTest, RegionAndBinningAreSixEntriesInOrder) {
    const ZelRoiBin wanted{1, 2, 10, 5, 2, 4};
    m_Transport.ForgetSent();
    EXPECT_TRUE(m_Camera->SetParameter(ZEL_PARAM_ROI_BIN, &wanted));
    EXPECT_THAT(SentLines(),
                testing::ElementsAre("set 17 1", "set 19 2", "set 18 10", "set 20 5", "set 15 2", "set 16 4"));
    ZelRoiBin read{};
    EXPECT_TRUE(m_Camera->GetParameter(ZEL_PARAM_ROI_BIN, sizeof read, &read));
    EXPECT_EQ(std::memcmp(&read, &wanted, sizeof read), 0);
}

TEST_F(ParameterTest, FrameCountReachesTheTransportToo) {
    m_Camera->SetParameterValue(ZEL_PARAM_FRAME_COUNT, 12);
    EXPECT_EQ(m_Table.m_Values[FRAME_COUNT], 12);
    EXPECT_EQ(m_Transport.CountCalls("SetFrameCount 12"), 1);
}

TEST_F(ParameterTest, LedNeedsFourBytesAndAWillingTransport) {
    int led = 5;
    m_Transport.m_Answers.led_state = 1;
    EXPECT_FALSE(m_Camera->GetParameter(ZEL_PARAM_USB_ENABLE_LED, 3, &led));
    EXPECT_TRUE(m_Camera->GetParameter(ZEL_PARAM_USB_ENABLE_LED, 4, &led));
    EXPECT_EQ(led, 1);
    const int off = 0;
    EXPECT_TRUE(m_Camera->SetParameter(ZEL_PARAM_USB_ENABLE_LED, &off));
    EXPECT_EQ(m_Transport.m_Answers.led_state, 0);
    m_Transport.m_Answers.led = false;
    EXPECT_FALSE(m_Camera->GetParameter(ZEL_PARAM_USB_ENABLE_LED, 4, &led));
    EXPECT_FALSE(m_Camera->SetParameter(ZEL_PARAM_USB_ENABLE_LED, &off));
}

TEST_F(ParameterTest, HostValuesKeepWhatWasWritten) {
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS), 8);
    EXPECT_TRUE(m_Camera->SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, -3));
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS), -3);
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_HW_TRIGGER_ACTIVE), 0);
    EXPECT_TRUE(m_Camera->SetParameterValue(ZEL_PARAM_HW_TRIGGER_ACTIVE, 5));
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_HW_TRIGGER_ACTIVE), 1);
    m_Transport.m_Answers.dropped_frames = 17;
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_DROPPED_FRAMES), 17);
    EXPECT_EQ(m_Transport.Exchanges(), 0);
}

TEST_F(ParameterTest, ReadOnlyHostParametersRefuseWrites) {
    const double matrix[9] = {};
    for (const int id : {ZEL_PARAM_DROPPED_FRAMES, ZEL_PARAM_COLOR_FILTER_TYPE, ZEL_PARAM_COLOR_FILTER_PHASE,
                         ZEL_PARAM_COLOR_IR_FILTER_TYPE, ZEL_PARAM_COLOR_CAMERA_CORRECTION_MATRIX,
                         ZEL_PARAM_CCM_OUTPUT_COLOR_SPACE, ZEL_PARAM_DEFAULT_WHITE_BALANCE_MATRIX}) {
        EXPECT_FALSE(m_Camera->SetParameter(id, matrix)) << id;
    }
    EXPECT_EQ(m_Transport.Exchanges(), 0);
}

TEST_F(ParameterTest, TextEntriesThatCantBeReadAreEmptyAndTrue) {
    Buffer buffer;
    EXPECT_TRUE(m_Camera->GetParameter(ZEL_PARAM_COLOR_FILTER_TYPE, 32, buffer.bytes));
    EXPECT_EQ(buffer.bytes[0], 0);
    EXPECT_EQ(buffer.bytes[1], kUntouched);
    m_Table.m_Blocks[IR_FILTER] = Bytes(32, 'x');  // no terminator
    EXPECT_TRUE(m_Camera->GetParameter(ZEL_PARAM_COLOR_IR_FILTER_TYPE, 32, buffer.bytes));
    EXPECT_EQ(std::strlen(reinterpret_cast<char*>(buffer.bytes)), 31u);
}

TEST_F(ParameterTest, UpdateEndsWhenTheCalculationIsDone) {
    EXPECT_TRUE(m_Camera->SetParameter(ZEL_PARAM_UPDATE_PARAMETERS, nullptr));
    EXPECT_EQ(m_Clock.Elapsed(), 120u);
}

TEST_F(ParameterTest, UpdateGivesUpAfterFiveSeconds) {
    m_CalculationEnds = false;
    EXPECT_FALSE(m_Camera->SetParameterValue(ZEL_PARAM_UPDATE_PARAMETERS, 0));
    EXPECT_GT(m_Clock.Elapsed(), 5000u);
    EXPECT_LT(m_Clock.Elapsed(), 5300u);
    Refuse(CALC_STATE);
    EXPECT_FALSE(m_Camera->SetParameterValue(ZEL_PARAM_UPDATE_PARAMETERS, 0));
}

}  // namespace
}  // namespace zel::test
