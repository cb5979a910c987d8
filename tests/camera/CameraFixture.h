// A camera object over a scripted transport, a small table camera behind it, and a clock that costs no time.
#ifndef TESTS_CAMERA_CAMERAFIXTURE_H
#define TESTS_CAMERA_CAMERAFIXTURE_H

#include <gmock/gmock.h>

#include <memory>

#include "camera/ZelCameraControl.h"
#include "tests/support/FakeClock.h"
#include "tests/support/ScriptedTransport.h"
#include "tests/support/TableCamera.h"

namespace zel::test {

struct CameraTest : testing::Test {
    CameraTest() {
        m_Table.m_Exceptions[CFA_TYPE] = kExceptionBadIndex;
        m_Transport.SetHandler([this](const Bytes& datagram) {
            Bytes answer = m_Table.Answer(datagram);
            // A calculation that was asked for is done at once.
            if (m_CalculationEnds && m_Table.m_Values[CALC_STATE] == 1) m_Table.m_Values[CALC_STATE] = 2;
            return answer;
        });
        m_Camera = std::make_unique<ZelCameraControl>(&m_Transport, "test");
        m_Transport.SetCameraCommon(m_Camera.get());
    }

    // Everything sent so far in one line; a text's line end is shown as a semicolon: "set 37 1 get 48 trig sw on; ".
    std::string Sent() const {
        std::string all;
        for (const Bytes& d : m_Transport.Sent()) {
            std::string line(d.begin() + 3, d.end());
            if (d[0] != 9) {
                line = (d[3] == SYNC_TABLE_CMD_SET ? "set " : "get ") + std::to_string(TableCamera::Word(d, 6));
                if (d[3] == SYNC_TABLE_CMD_SET) line += " " + std::to_string(TableCamera::Word(d, 10));
            } else if (line.ends_with("\r\n")) {
                line.replace(line.size() - 2, 2, ";");
            }
            all += line + " ";
        }
        return all;
    }

    // The application's: the transport's pending images are raw.
    ZelImage* Next() { return static_cast<ZelCamera&>(*m_Camera).GetPendingImage(); }
    int Value(int id) { return m_Camera->GetParameterValue(static_cast<unsigned>(id)); }
    bool Write(int id, int value) { return m_Camera->SetParameterValue(id, value); }
    void Refuse(int index) { m_Table.m_Exceptions[index] = kExceptionWriteToReadOnly; }

    FakeClock m_Clock;
    ScriptedTransport m_Transport{&m_Clock};
    TableCamera m_Table;
    bool m_CalculationEnds = true;
    std::unique_ptr<ZelCameraControl> m_Camera;
};

}  // namespace zel::test

#endif
