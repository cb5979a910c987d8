// Reading and writing parameters.
#include <cstring>
#include <limits>

#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

constexpr unsigned char kUntouched = 0xAB;

struct Buffer {
    Buffer() { std::memset(bytes, kUntouched, sizeof bytes); }
    int Int() const {
        int value;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
    bool Untouched() const { return std::ranges::count(bytes, kUntouched) == std::ssize(bytes); }
    unsigned char bytes[72];
};

struct Row {
    int id;
    int entry;  // of the camera's table
};
class EntryTest : public CameraTest, public testing::WithParamInterface<Row> {};

TEST_P(EntryTest, ReadsAndWritesItsEntryAloneAndReportsSuccessEvenWhenRefused) {
    const auto& [id, entry] = GetParam();
    const bool block = SyncTableIsBlock(entry);
    m_Table.m_Values[entry] = 4711;
    if (block) m_Table.m_Blocks[entry] = TextBytes("some text");
    Buffer buffer;
    EXPECT_TRUE(m_Camera->GetParameter(static_cast<unsigned>(id), sizeof buffer.bytes, buffer.bytes));
    EXPECT_TRUE(block ? std::memcmp(buffer.bytes, "some text", 9) == 0 : buffer.Int() == 4711);
    Refuse(entry);
    const int value = 37;
    EXPECT_TRUE(m_Camera->SetParameter(id, &value));
    ASSERT_EQ(m_Transport.Exchanges(), 2);
    EXPECT_EQ(m_Transport.Sent()[0], GetRequest(entry));
    EXPECT_EQ(m_Transport.Sent()[1], SetRequest(entry, value));
}

INSTANTIATE_TEST_SUITE_P(, EntryTest,
                         testing::Values(Row{2, HOST_PORT_PROTOCOL}, Row{5, HW_MODEL}, Row{12, EXPOSURE_ACTUAL},
                                         Row{20, VGA_GAIN}, Row{21, VGA_GAIN}, Row{24, CLOCK_SPEED_IDX},
                                         Row{36, V_ROI_PIXELS}, Row{47, CAMERA_NAME}, Row{64, FEATURESVALID}),
                         [](const auto& row) { return std::string(ParameterName(row.param.id)); });

class ParameterTest : public CameraTest {};

TEST_F(ParameterTest, NullDataIsRefusedWithoutTraffic) {
    for (int id = 0; id < ZEL_MAX_PARAMS; ++id) {
        m_Transport.ForgetSent();
        EXPECT_FALSE(m_Camera->GetParameter(static_cast<unsigned>(id), 0, nullptr)) << id;
        // The update takes no data, and a time in microseconds is read first.
        if (id == ZEL_PARAM_UPDATE_PARAMETERS || id == ZEL_PARAM_EXPOSURE_TIME_US) continue;
        EXPECT_FALSE(m_Camera->SetParameter(id, nullptr)) << id;
        EXPECT_EQ(m_Transport.Exchanges(), 0) << id;
    }
    EXPECT_FALSE(m_Camera->SetParameter(ZEL_PARAM_EXPOSURE_TIME_US, nullptr));
}

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
    // Extended ids are true and write nothing when they are unknown.
    Buffer buffer;
    for (const unsigned id : {ZEL_PARAM_MODEL_VALUE_6 + 1u, 0xFFFFFFFFu}) {
        EXPECT_TRUE(m_Camera->GetParameter(id, 8, buffer.bytes));
    }
    EXPECT_TRUE(m_Camera->GetParameter(ZEL_PARAM_MODEL_VALUE_1, 8, nullptr));
    EXPECT_TRUE(buffer.Untouched());
    m_Table.m_Exceptions[H_SIZE] = kExceptionBadIndex;
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_HSIZE), ZEL_PARAM_HSIZE) << "a failed read answers the id";
}

TEST_F(ParameterTest, ExposureUnitScalesOnlyTheTimeWithoutUnit) {
    const int unit = 1, five = 5, other = 2;
    EXPECT_TRUE(m_Camera->SetParameter(ZEL_PARAM_EXPOSURE_UNIT, &unit));
    EXPECT_TRUE(m_Camera->SetParameter(ZEL_PARAM_EXPOSURE_TIME, &five));
    EXPECT_EQ(m_Table.m_Values[EXPOSURE_TIME], 5000);
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_EXPOSURE_TIME), 5);
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_EXPOSURE_TIME_US), 5000);
    EXPECT_TRUE(m_Camera->SetParameter(ZEL_PARAM_EXPOSURE_UNIT, &other));
    m_Camera->SetParameterValue(ZEL_PARAM_EXPOSURE_TIME, 3000000);
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_EXPOSURE_TIME), 3000000) << "times are unsigned";
    m_Camera->SetParameterValue(ZEL_PARAM_EXPOSURE_TIME, 5000000);
    EXPECT_EQ(m_Table.m_Values[EXPOSURE_TIME], -1) << "too long: as long as can be";
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_EXPOSURE_UNIT), 1);
    EXPECT_TRUE(m_Camera->SetParameterValue(ZEL_PARAM_EXPOSURE_TIME_US, 1999));
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_EXPOSURE_TIME), 1);
    Refuse(EXPOSURE_TIME);
    EXPECT_FALSE(m_Camera->SetParameterValue(ZEL_PARAM_EXPOSURE_TIME_US, 10)) << "the one that reports a refusal";
    EXPECT_TRUE(m_Camera->SetParameterValue(ZEL_PARAM_EXPOSURE_TIME, 10));
}

TEST_F(ParameterTest, TapsAndSpeedFollowTheIndexWrittenLastWithoutTraffic) {
    m_Table.m_Values[SENSOR_TAPS_VAL] = 9;
    m_Table.m_Values[CLOCK_SPEED_VAL] = 99;
    // Beyond the indices that there are, the camera is asked.
    for (const auto& [index, taps, hertz, asked] :
         {std::array{0, 1, 20000000, 0}, {1, 2, 40000000, 0}, {2, 4, 99, 1}, {7, 9, 99, 2}}) {
        m_Camera->SetParameterValue(ZEL_PARAM_TAPS_INDEX, index);
        m_Camera->SetParameterValue(ZEL_PARAM_READOUT_SPEED_INDEX, index);
        m_Transport.ForgetSent();
        EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_TAPS_VALUE), taps);
        EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_READOUT_SPEED), hertz);
        EXPECT_EQ(m_Transport.Exchanges(), asked);
    }
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
    m_Table.m_Exceptions[H_BIN] = kExceptionBadIndex;
    read.XBin = 77;
    EXPECT_TRUE(m_Camera->GetParameter(ZEL_PARAM_ROI_BIN, sizeof read, &read));
    EXPECT_EQ(read.XBin, 77u) << "stays as it was";
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

TEST_F(ParameterTest, UpdateEndsWithTheCalculationOrAfterFiveSeconds) {
    EXPECT_TRUE(m_Camera->SetParameter(ZEL_PARAM_UPDATE_PARAMETERS, nullptr));
    EXPECT_LT(m_Clock.Elapsed(), 200u);
    m_CalculationEnds = false;
    EXPECT_FALSE(m_Camera->SetParameterValue(ZEL_PARAM_UPDATE_PARAMETERS, 0));
    EXPECT_GT(m_Clock.Elapsed(), 5000u);
    EXPECT_LT(m_Clock.Elapsed(), 5500u);
}

}  // namespace
}  // namespace zel::test
