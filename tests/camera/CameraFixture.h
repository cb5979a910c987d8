// A camera object over a scripted transport, a small table camera behind it, and a clock that costs no time.
#ifndef TESTS_CAMERA_CAMERAFIXTURE_H
#define TESTS_CAMERA_CAMERAFIXTURE_H

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "camera/ZelCameraControl.h"
#include "tests/support/FakeClock.h"
#include "tests/support/ScriptedTransport.h"
#include "tests/support/TableCamera.h"

namespace zel::test {

class CameraTest : public testing::Test {
  protected:
    CameraTest() {
        m_Table.m_Values = {{H_SIZE, 16},         {V_SIZE, 8},           {BITS_PER_PIXEL, 12}, {BYTES_PER_PIXEL, 2},
                            {H_ROI_PIXELS, 16},   {V_ROI_PIXELS, 8},     {H_BIN, 1},           {V_BIN, 1},
                            {SENSOR_TAPS_VAL, 1}, {CLOCK_SPEED_VAL, 20}, {EXPOSURE_TIME, 700}, {CALC_STATE, 2}};
        m_Table.m_Blocks[HW_MODEL] = TextBytes("A30-M");
        m_Table.m_Exceptions[CFA_TYPE] = kExceptionBadIndex;
        m_Transport.SetHandler([this](const Bytes& datagram) {
            Bytes answer = m_Table.Answer(datagram);
            // A calculation that was asked for is done at once.
            if (m_CalculationEnds && m_Table.m_Values[CALC_STATE] == 1) m_Table.m_Values[CALC_STATE] = 2;
            return answer;
        });
        m_Transport.m_Answers.interface_type = CAMERA_TYPE_USB;
        m_Camera = std::make_unique<ZelCameraControl>(&m_Transport, "test");
        m_Transport.SetCameraCommon(m_Camera.get());
    }

    // The text commands sent so far, without their headers.
    std::vector<std::string> SentTexts() const {
        std::vector<std::string> texts;
        for (const Bytes& datagram : m_Transport.Sent()) {
            if (datagram.size() >= 3 && datagram[0] == 9) texts.emplace_back(datagram.begin() + 3, datagram.end());
        }
        return texts;
    }

    // Everything sent so far as one line each: "set 37 1", "get 48", "text trig sw on\r\n".
    std::vector<std::string> SentLines() const {
        std::vector<std::string> lines;
        for (const Bytes& d : m_Transport.Sent()) {
            const auto word = [&](std::size_t at) {
                return std::to_string(static_cast<int>(static_cast<unsigned>(d[at] | d[at + 1] << 8 | d[at + 2] << 16) |
                                                       static_cast<unsigned>(d[at + 3]) << 24));
            };
            if (d[0] == 9) {
                lines.push_back("text " + std::string(d.begin() + 3, d.end()));
            } else if (d[3] == SYNC_TABLE_CMD_SET) {
                lines.push_back("set " + word(6) + " " + word(10));
            } else {
                lines.push_back((d[3] == SYNC_TABLE_CMD_GET ? "get " : "attributes ") + word(6));
            }
        }
        return lines;
    }

    void Refuse(int index) { m_Table.m_Exceptions[index] = kExceptionWriteToReadOnly; }

    FakeClock m_Clock;
    ScriptedTransport m_Transport{&m_Clock};
    TableCamera m_Table;
    bool m_CalculationEnds = true;
    std::unique_ptr<ZelCameraControl> m_Camera;
};

}  // namespace zel::test

#endif
