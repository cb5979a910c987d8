// Start and stop: what goes over the wire, in which order, and how each failure ends.
#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

struct AcquisitionTest : CameraTest, testing::WithParamInterface<int> {
    void SetUp() override { m_Transport.m_Answers.interface_type = GetParam(); }
    ~AcquisitionTest() override { EXPECT_EQ(platform::TimerResolution::LiveCount(), 0); }
    bool EBus() const { return GetParam() == CAMERA_TYPE_PLEORA_EBUS; }
};
INSTANTIATE_TEST_SUITE_P(AllLinks, AcquisitionTest,
                         testing::Values(CAMERA_TYPE_EDT_CAMERA_LINK, CAMERA_TYPE_PLEORA_EBUS, CAMERA_TYPE_USB));

TEST_P(AcquisitionTest, StartsInOrder) {
    for (const bool hardware : {false, true}) {
        Write(ZEL_PARAM_HW_TRIGGER_ACTIVE, hardware);
        m_Transport.ForgetCalls();
        m_Transport.ForgetSent();
        ASSERT_TRUE(m_Camera->Start());
        EXPECT_THAT(m_Transport.Calls(), testing::ElementsAre("Start", "PrepareAcquisition 8"));
        EXPECT_THAT(Sent(), testing::StartsWith(EBus() ? "set 37 0 set 37 1 get 37 " : "set 37 1 get 37 "));
        const std::string trigger = !hardware ? "set 47 0 " : EBus() ? "set 47 1 arm; " : "set 47 1 ";
        EXPECT_THAT(Sent(), testing::EndsWith(trigger + "set 6 2 "));
    }
}

TEST_P(AcquisitionTest, ACalculationThatNeverEndsEndsTheStart) {
    m_CalculationEnds = false;
    EXPECT_EQ(m_Camera->StartCommon(), 1);
    EXPECT_GT(m_Clock.Elapsed(), 5000u);
    EXPECT_LT(m_Clock.Elapsed(), 5300u);
    EXPECT_EQ(m_Camera->StartTriggerCommon(), 1);
    EXPECT_LT(m_Clock.Elapsed(), 10400u);
    EXPECT_EQ(m_Camera->GetLastError(), 0) << "the 1 is returned, not stored";
    Refuse(CALC_STATE);
    m_Transport.ForgetSent();
    EXPECT_TRUE(m_Camera->StartCommon() == 1 && m_Camera->StartTriggerCommon() == 1);
    EXPECT_EQ(m_Transport.Exchanges(), 2) << "nothing follows the refused write";
    EXPECT_FALSE(m_Camera->Start());
}

TEST_P(AcquisitionTest, EachPreparationCanEndTheStartWithItsCode) {
    m_Transport.m_Answers.prepare_acquisition = ZEL_ERROR_TOO_MANY_IMAGE_BUFFERS;
    EXPECT_EQ(m_Camera->StartCommon(), ZEL_ERROR_TOO_MANY_IMAGE_BUFFERS);
    EXPECT_EQ(m_Camera->GetLastError(), ZEL_ERROR_TOO_MANY_IMAGE_BUFFERS);
    m_Transport.m_Answers.prepare_acquisition = 0;
    for (const auto& [buffers, code] : {std::pair(-1, ZEL_ERROR_INVALID_NUMBER_OF_IMAGE_BUFFERS),
                                        {2000000000, ZEL_ERROR_IMAGE_BUFFER_ALLOCATION_FAILURE},
                                        {0, 0}}) {
        Write(ZEL_PARAM_NUM_IMAGE_BUFFERS, buffers);
        EXPECT_EQ(m_Camera->StartCommon(), code) << buffers;
    }
    EXPECT_EQ(m_Camera->GetFreeImage(), nullptr);
    m_Camera->SetImageAveraging(1 << 30, 0);
    EXPECT_EQ(m_Camera->StartCommon(), 1) << "no memory for the averaging ring";
    EXPECT_EQ(m_Camera->StartCommon(), 0) << "averaging is off afterwards";

    for (const auto& [entry, value] :
         {std::pair(H_SIZE, 0), {H_SIZE, -5}, {V_SIZE, 1 << 20}, {BITS_PER_PIXEL, 17}, {BYTES_PER_PIXEL, 9}}) {
        const int before = std::exchange(m_Table.m_Values[entry], value);
        EXPECT_EQ(m_Camera->StartCommon(), ZEL_ERROR_CAMERA_INVALID_DATA) << entry << " " << value;
        m_Table.m_Values[entry] = before;
    }
    m_Table.m_Exceptions[V_SIZE] = kExceptionBadIndex;
    EXPECT_EQ(m_Camera->StartCommon(), ZEL_ERROR_CAMERA_COMM_FAILURE);
}

TEST_P(AcquisitionTest, RefusedStatesAreRetried) {
    EXPECT_TRUE(m_Camera->Stop());
    EXPECT_EQ(m_Transport.CountSent(SetRequest(CAMERA_STATE, 0)), 1);
    Refuse(CAMERA_STATE);
    EXPECT_EQ(m_Camera->StopCommon(), 1);
    EXPECT_EQ(m_Transport.CountSent(SetRequest(CAMERA_STATE, 0)), 3);
    EXPECT_FALSE(m_Camera->Stop());
    EXPECT_TRUE(m_Camera->Start()) << "and not reported";
    EXPECT_EQ(m_Transport.CountSent(SetRequest(CAMERA_STATE, 2)), EBus() ? 1 : 4);
}

}  // namespace
}  // namespace zel::test
