#include "tools/zelcam/CameraParameters.h"

#include <gmock/gmock.h>

#include <optional>

#include "include/ZelCamera.h"
#include "include/ZelSDK.h"
#include "tests/zelcam/SimControl.h"
#include "tools/zelcam/Failure.h"
#include "tools/zelcam/Session.h"

namespace zelcam {

class CameraParametersTest : public testing::Test {
  protected:
    CameraParametersTest() { UseFastCameras(); }

    void SetUp() override {
        m_Session.emplace();
        m_Camera.emplace(*m_Session, "0");
    }

    std::optional<Session> m_Session;
    std::optional<OpenCamera> m_Camera;
};

TEST_F(CameraParametersTest, WritesAreReadBack) {
    const struct {
        const char *name, *value, *actual;
        bool accepted;
        const char* reason;
    } cases[] = {
        {"EXPOSURE_TIME_US", "12345", "12345", true, ""},
        {"EXPOSURE_TIME_US", "0", "12345", false, "out of range"},
        {"VGA_GAIN", "5", "5", true, ""},
        {"GAIN", "2000", "5", false, "out of range"},
        {"NUM_IMAGE_BUFFERS", "3", "3", true, ""},
        {"ROI_BIN", "2,4,32,16,2,2", "2,4,32,16,2,2", true, ""},
        {"GLOBAL_CAMERA_NAME", "left eye", "left eye", true, ""},
        {"HSIZE", "10", "64", false, "read-only"},
        {"EXPOSURE_UNIT", "2", "0", false, "refused or changed"},
        {"TEMPERATURE", "-5", nullptr, false, "read-only"},
        {"PIXEL_OFFSET", "1", nullptr, false, "does not offer it"},
        {"COLOR_FILTER_PHASE", "1", nullptr, false, "read-only"},
    };
    for (const auto& c : cases) {
        const WriteOutcome outcome = WriteParameter(m_Camera->Get(), FindParameter(c.name), c.value);
        EXPECT_EQ(outcome.accepted, c.accepted) << outcome.Text() << " " << outcome.reason;
        EXPECT_THAT(outcome.reason, testing::HasSubstr(c.reason)) << c.name;
        if (!c.actual) continue;
        ASSERT_TRUE(outcome.actual) << c.name;
        EXPECT_EQ(outcome.actual->Text(), c.actual) << c.name;
    }
}

TEST_F(CameraParametersTest, OutcomeSaysRequestedActualAndRange) {
    const WriteOutcome outcome = WriteParameter(m_Camera->Get(), FindParameter("GAIN"), "2000");
    EXPECT_EQ(outcome.Text(), "GAIN: requested 2000 -> actual 0 (range 0..1023)");
    EXPECT_THROW(RequireParameter(m_Camera->Get(), FindParameter("GAIN"), "2000"), Failure);
}

TEST_F(CameraParametersTest, TextsWiderThanAWordAreReadWhole) {
    for (const unsigned id : {ZEL_PARAM_FW_VER, ZEL_PARAM_HW_MODEL, ZEL_PARAM_HW_SER_NUM}) {
        EXPECT_GT(ReadText(m_Camera->Get(), id).size(), 0u) << id;
    }
    EXPECT_EQ(ReadText(m_Camera->Get(), ZEL_PARAM_HW_SER_NUM), m_Camera->Entry().serial);
}

TEST_F(CameraParametersTest, AccessIsWhatTheCameraSays) {
    const struct {
        const char* name;
        Access access;
    } cases[] = {{"EXPOSURE_TIME", Access::kReadWrite},
                 {"HSIZE", Access::kReadOnly},
                 {"UPDATE_PARAMETERS", Access::kWriteOnly},
                 {"NUM_IMAGE_BUFFERS", Access::kReadWrite}};
    for (const auto& c : cases) EXPECT_EQ(ReadAccess(m_Camera->Get(), FindParameter(c.name)), c.access) << c.name;
}

TEST_F(CameraParametersTest, RecalculationIsAWriteWithoutReadingBack) {
    EXPECT_TRUE(WriteParameter(m_Camera->Get(), FindParameter("UPDATE_PARAMETERS"), "1").accepted);
}

}  // namespace zelcam
