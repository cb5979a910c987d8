// The "tb" commands and the calibration tables behind them.
#include <gtest/gtest.h>

#include "link/ICameraInterface.h"
#include "tests/devices/sim/firmware/FirmwareHost.h"

namespace zel::sim {

TEST(CalibrationFlash, CommandsAnswerInTheAgreedForm) {
    FirmwareHost host(ModelOfLink(CAMERA_TYPE_EDT_CAMERA_LINK, 0));
    const std::pair<const char*, const char*> cases[] = {{"tb f s", "OK"},
                                                         {"tb p s\r\n", "108"},
                                                         {"tb p n", "100"},
                                                         {"tb p c", "OK"},
                                                         {"tb r 0 4", "ff ff ff ff"},
                                                         {"tb w 2 10 ff 0 3C\r\n", "OK"},
                                                         {"tb s ff", "OK"},
                                                         {"tb p c", "OK"},
                                                         {"tb g ff", "OK"},
                                                         {"tb r 2 4", "10 ff 0 3c"},
                                                         {"tb g 0", "OK"},
                                                         {"tb r 0 3", "2 20 0"}};
    for (const auto& [command, reply] : cases) EXPECT_EQ(host.Text(command), reply) << command;
    for (const char* wrong : {"tb", "tb x 1", "tb p s s", "tb g 100", "tb g -1", "tb g zz", "tb r 0 0", "tb r 107 2",
                              "tb r ffffffff 2", "tb r 100000000 1", "tb w 107 1 2", "tb w ffffffff 1 2", "tb w 0 100"})
        EXPECT_EQ(host.Text(wrong).substr(0, 4), "ERR ") << wrong;
    EXPECT_EQ(host.Text("tb r 0 3"), "2 20 0");  // nothing of it reached the buffer
    host.PowerOn();
    EXPECT_EQ(host.Text("tb r 2 4"), "ff ff ff ff");
    EXPECT_EQ(host.Text("tb g ff"), "OK");
    EXPECT_EQ(host.Text("tb r 2 4"), "10 ff 0 3c") << "what is stored outlives power";
}

}  // namespace zel::sim
