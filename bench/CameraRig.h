// A camera object over a transport in memory.
#ifndef BENCH_CAMERARIG_H
#define BENCH_CAMERARIG_H

#include <algorithm>
#include <cstring>

#include "camera/ZelCameraControl.h"
#include "tests/support/ScriptedTransport.h"
#include "tests/support/TableCamera.h"

namespace zel::bench {

// Answers every read with the same value, at the price of a copy.
class InstantTransport : public test::ScriptedTransport {
  public:
    bool m_Instant = false;

    int SendData(int len, const unsigned char* data) override {
        if (!m_Instant) return ScriptedTransport::SendData(len, data);
        m_Next = 0;
        return len;
    }
    int RecvData(int len, unsigned char* buffer, int timeout_ms) override {
        if (!m_Instant) return ScriptedTransport::RecvData(len, buffer, timeout_ms);
        const int count = std::min(len, static_cast<int>(m_Reply.size()) - m_Next);
        std::memcpy(buffer, m_Reply.data() + m_Next, static_cast<std::size_t>(count));
        m_Next += count;
        return count;
    }

  private:
    const test::Bytes m_Reply = test::ValueReply(640);
    int m_Next = 0;
};

// A camera that is set up for frames of 640 x 512 samples and a pool of 8.
struct CameraRig {
    CameraRig() : camera(&transport, "bench") {
        table.m_Values = {{H_SIZE, 640},        {V_SIZE, 512},        {BITS_PER_PIXEL, 14}, {BYTES_PER_PIXEL, 2},
                          {H_ROI_PIXELS, 640},  {V_ROI_PIXELS, 512},  {H_BIN, 1},           {V_BIN, 1},
                          {SENSOR_TAPS_VAL, 1}, {CLOCK_SPEED_VAL, 20}};
        transport.SetHandler([this](const test::Bytes& datagram) {
            table.m_Values[CALC_STATE] = 2;
            return table.Answer(datagram);
        });
        transport.SetCameraCommon(&camera);
    }
    InstantTransport transport;
    test::TableCamera table;
    ZelCameraControl camera;
};

}  // namespace zel::bench

#endif
