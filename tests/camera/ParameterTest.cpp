// Reading and writing parameters.
#include <cstring>
#include <limits>

#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

constexpr int kUntouched = 0x7B7B7B7B;

using ParameterTest = CameraTest;

TEST_F(ParameterTest, EachReadsAndWritesItsEntryAloneAndReportsSuccessEvenWhenRefused) {
    const std::pair<int, int> rows[] = {
        {2, HOST_PORT_PROTOCOL}, {5, HW_MODEL},      {12, EXPOSURE_ACTUAL}, {20, VGA_GAIN},    {21, VGA_GAIN},
        {24, CLOCK_SPEED_IDX},   {36, V_ROI_PIXELS}, {41, SENSOR_TAPS_IDX}, {47, CAMERA_NAME}, {64, FEATURESVALID}};
    for (const auto& [id, entry] : rows) {
        SCOPED_TRACE(ParameterName(id));
        m_Table.m_Exceptions.clear();
        m_Transport.ForgetSent();
        m_Table.m_Values[entry] = 4711;
        if (SyncTableIsBlock(entry)) m_Table.m_Blocks[entry] = LittleEndian(4711);
        EXPECT_EQ(Value(id), 4711);
        Refuse(entry);
        EXPECT_TRUE(Write(id, 37));
        EXPECT_THAT(m_Transport.Sent(), testing::ElementsAre(GetRequest(entry), SetRequest(entry, 37)));
    }
}

TEST_F(ParameterTest, NullDataIsRefusedWithoutTraffic) {
    for (int id = 0; id < ZEL_MAX_PARAMS; ++id) {
        EXPECT_FALSE(m_Camera->GetParameter(static_cast<unsigned>(id), 0, nullptr)) << id;
        // The update takes no data.
        EXPECT_FALSE(id != ZEL_PARAM_UPDATE_PARAMETERS && m_Camera->SetParameter(id, nullptr)) << id;
        // A time in microseconds is read first.
        EXPECT_EQ(m_Transport.Exchanges(), id < ZEL_PARAM_EXPOSURE_TIME_US ? 0 : 1) << id;
    }
}

TEST_F(ParameterTest, IdsOutsideTheTable) {
    int words[2] = {kUntouched, kUntouched};
    for (const int id :
         {-1, ZEL_MAX_PARAMS, ZEL_MAX_PARAMS + 1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_FALSE(m_Camera->SetParameter(id, words)) << id;
        EXPECT_FALSE(id >= 0 && m_Camera->GetParameter(static_cast<unsigned>(id), 4, words)) << id;
    }
    EXPECT_FALSE(m_Camera->GetParameter(0x80000000u, 4, words));
    EXPECT_EQ(Value(ZEL_MAX_PARAMS + 1), 0);
    EXPECT_EQ(Value(ZEL_MAX_PARAMS), ZEL_MAX_PARAMS);
    // Extended ids are true and write nothing when they are unknown.
    for (const unsigned id : {ZEL_PARAM_MODEL_VALUE_6 + 1u, 0xFFFFFFFFu}) {
        EXPECT_TRUE(m_Camera->GetParameter(id, 8, words));
    }
    EXPECT_TRUE(m_Camera->GetParameter(ZEL_PARAM_MODEL_VALUE_1, 8, nullptr));
    EXPECT_EQ(m_Transport.Exchanges(), 0);
    m_Table.m_Exceptions[H_SIZE] = kExceptionBadIndex;
    EXPECT_EQ(Value(ZEL_PARAM_HSIZE), ZEL_PARAM_HSIZE) << "a failed read answers the id";
    EXPECT_THAT(words, testing::Each(kUntouched));
}

TEST_F(ParameterTest, ExposureUnitScalesOnlyTheTimeWithoutUnit) {
    EXPECT_TRUE(Write(ZEL_PARAM_EXPOSURE_UNIT, 1) && Write(ZEL_PARAM_EXPOSURE_TIME, 5));
    EXPECT_EQ(m_Table.m_Values[EXPOSURE_TIME], 5000);
    EXPECT_EQ(Value(ZEL_PARAM_EXPOSURE_TIME), 5);
    EXPECT_EQ(Value(ZEL_PARAM_EXPOSURE_TIME_US), 5000);
    EXPECT_TRUE(Write(ZEL_PARAM_EXPOSURE_UNIT, 2));
    Write(ZEL_PARAM_EXPOSURE_TIME, 3000000);
    EXPECT_EQ(Value(ZEL_PARAM_EXPOSURE_TIME), 3000000) << "times are unsigned";
    Write(ZEL_PARAM_EXPOSURE_TIME, 5000000);
    EXPECT_EQ(m_Table.m_Values[EXPOSURE_TIME], -1) << "too long: as long as can be";
    EXPECT_EQ(Value(ZEL_PARAM_EXPOSURE_UNIT), 1);
    EXPECT_TRUE(Write(ZEL_PARAM_EXPOSURE_TIME_US, 1999));
    EXPECT_EQ(Value(ZEL_PARAM_EXPOSURE_TIME), 1);
    Refuse(EXPOSURE_TIME);
    EXPECT_FALSE(Write(ZEL_PARAM_EXPOSURE_TIME_US, 10)) << "the one that reports a refusal";
    EXPECT_TRUE(Write(ZEL_PARAM_EXPOSURE_TIME, 10));
}

TEST_F(ParameterTest, TapsAndSpeedFollowTheIndexWrittenLastWithoutTraffic) {
    m_Table.m_Values[SENSOR_TAPS_VAL] = 9;
    m_Table.m_Values[CLOCK_SPEED_VAL] = 99;
    // Beyond the indices that there are, the camera is asked.
    for (const auto& [index, taps, hertz, asked] :
         {std::array{0, 1, 20000000, 0}, {1, 2, 40000000, 0}, {2, 4, 99, 1}, {7, 9, 99, 2}}) {
        Write(ZEL_PARAM_TAPS_INDEX, index);
        Write(ZEL_PARAM_READOUT_SPEED_INDEX, index);
        m_Transport.ForgetSent();
        EXPECT_EQ(Value(ZEL_PARAM_TAPS_VALUE), taps);
        EXPECT_EQ(Value(ZEL_PARAM_READOUT_SPEED), hertz);
        EXPECT_EQ(m_Transport.Exchanges(), asked);
    }
}

TEST_F(ParameterTest, RegionAndBinningAreSixEntriesInOrder) {
    const ZelRoiBin wanted{1, 2, 10, 5, 2, 4};
    EXPECT_TRUE(m_Camera->SetParameter(ZEL_PARAM_ROI_BIN, &wanted));
    EXPECT_EQ(Sent(), "set 17 1 set 19 2 set 18 10 set 20 5 set 15 2 set 16 4 ");
    ZelRoiBin read{};
    EXPECT_TRUE(m_Camera->GetParameter(ZEL_PARAM_ROI_BIN, sizeof read, &read));
    m_Table.m_Exceptions[H_BIN] = kExceptionBadIndex;  // stays as it was
    EXPECT_TRUE(m_Camera->GetParameter(ZEL_PARAM_ROI_BIN, sizeof read, &read));
    EXPECT_EQ(std::memcmp(&read, &wanted, sizeof read), 0);
}

TEST_F(ParameterTest, TextEntriesThatCantBeReadAreEmptyAndTrue) {
    char text[40] = "before";
    EXPECT_TRUE(m_Camera->GetParameter(ZEL_PARAM_COLOR_FILTER_TYPE, 32, text));
    EXPECT_STREQ(text, "");
    EXPECT_STREQ(text + 1, "efore");
    m_Table.m_Blocks[IR_FILTER] = Bytes(32, 'x');  // no terminator
    EXPECT_TRUE(m_Camera->GetParameter(ZEL_PARAM_COLOR_IR_FILTER_TYPE, 32, text));
    EXPECT_EQ(std::string(text), std::string(31, 'x'));
}

TEST_F(ParameterTest, WhatTheHostKeepsIsReadAsItWasWritten) {
    for (const int id : {ZEL_PARAM_HW_TRIGGER_ACTIVE, ZEL_PARAM_NUM_IMAGE_BUFFERS, ZEL_PARAM_USB_ENABLE_LED}) {
        for (const int value : {0, 1}) EXPECT_TRUE(Write(id, value) && Value(id) == value) << id;
    }
    EXPECT_TRUE(Write(ZEL_PARAM_TAP_BALANCE_ENABLE, 1));
    EXPECT_EQ(Value(ZEL_PARAM_TAP_BALANCE_ENABLE), 0) << "there are no tables";
    EXPECT_EQ(Value(ZEL_PARAM_DROPPED_FRAMES) + Value(ZEL_PARAM_COLOR_FILTER_PHASE), 0);
    for (const int id : {ZEL_PARAM_COLOR_CAMERA_CORRECTION_MATRIX, ZEL_PARAM_DEFAULT_WHITE_BALANCE_MATRIX}) {
        double matrix[9] = {};
        EXPECT_TRUE(m_Camera->GetParameter(static_cast<unsigned>(id), sizeof matrix, matrix));
        EXPECT_THAT(matrix, testing::ElementsAre(1, 0, 0, 0, 1, 0, 0, 0, 1));
    }
    EXPECT_EQ(m_Transport.Exchanges(), 0);
    EXPECT_TRUE(Write(ZEL_PARAM_GAIN, 7) && Write(ZEL_PARAM_HW_TRIG_SOURCE, 2) && m_Camera->ResetCamera());
    const int reset[] = {VGA_GAIN, 7, HW_TRIG_SOURCE, 2, CAMERA_RESET, 1, H_BIN, 1, V_BIN, 1};
    std::string sent;
    for (std::size_t i = 0; i < std::size(reset); i += 2) {
        sent += "set " + std::to_string(reset[i]) + " " + std::to_string(reset[i + 1]) + " ";
    }
    EXPECT_EQ(Sent(), sent);
}

TEST_F(ParameterTest, UpdateEndsWithTheCalculationOrAfterFiveSeconds) {
    EXPECT_TRUE(m_Camera->SetParameter(ZEL_PARAM_UPDATE_PARAMETERS, nullptr));
    EXPECT_LT(m_Clock.Elapsed(), 200u);
    m_CalculationEnds = false;
    EXPECT_FALSE(Write(ZEL_PARAM_UPDATE_PARAMETERS, 0));
    EXPECT_GT(m_Clock.Elapsed(), 5000u);
    EXPECT_LT(m_Clock.Elapsed(), 5500u);
}

}  // namespace
}  // namespace zel::test
