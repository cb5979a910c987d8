#include <gtest/gtest.h>

#include <thread>

#include "link/ICameraInterface.h"
#include "tests/devices/sim/firmware/FirmwareHost.h"

namespace zel::sim {

using zel::test::TextBytes, zel::test::TextReply, zel::test::TextRequest;

const CameraModel kModel = ModelOfLink(CAMERA_TYPE_EDT_CAMERA_LINK, 0);

TEST(FirmwareTable, ARecalculationTakesItsTimeAndLetsTheRunBegin) {
    FirmwareHost host(kModel, {3600000, 1.0});
    EXPECT_EQ(host.Set(SENSOR_TAPS_IDX, 0), 0);
    EXPECT_EQ(host.Set(CAMERA_STATE, 2), kExceptionRequiresCalc);
    EXPECT_EQ(host.Device().Now().taps, 4) << "in force with the recalculation only";
    EXPECT_EQ(host.Set(CALC_STATE, 1), 0);
    EXPECT_EQ(host.Get(CALC_STATE), 1);
    host.Device().SetCalcDelay(40);
    EXPECT_EQ(host.Set(CALC_STATE, 1), 0);
    while (host.Get(CALC_STATE) == 1) std::this_thread::yield();
    EXPECT_EQ(host.Get(CALC_STATE), 2);
    EXPECT_EQ(host.Device().Now().taps, 1);
    EXPECT_EQ(host.Set(CAMERA_STATE, 2), 0);
}

TEST(FirmwareText, CommandsComeWithAndWithoutHeaderAndLineEnd) {
    FirmwareHost host(kModel);
    const Bytes reply = TextReply(kModel.name);
    for (const Bytes& request : {TextRequest("name"), TextRequest("name\r\n"), TextBytes("name\r\n")})
        EXPECT_EQ(host.Raw(request), reply);
    EXPECT_EQ(host.Raw({9, 0, 7, 'n', 'a', 'm', 'e'}), TextReply("ERR")) << "a header that disagrees is text";
    EXPECT_EQ(host.Raw({}), TextReply("ERR"));
    for (const char* command : {"trig b on", "trig cl", "cam.fly", "armed", "INFO"})
        EXPECT_EQ(host.Text(command), "ERR") << command;
}

TEST(FirmwareTrigger, TheInputIsSwitchedAndHasAPolarity) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"trig cl on", "trig cl hi", false}, {"trig cl on", "trig cl lo", true}, {"trig a on", "trig a low", true}};
    for (const auto& [input, polarity, active_low] : cases) {
        FirmwareHost host(kModel);
        EXPECT_FALSE(host.Talk().HardwareTriggered());
        for (const char* command : {input, polarity, "arm"}) EXPECT_EQ(host.Text(command), "OK");
        EXPECT_EQ(host.Talk().ActiveLow(), active_low) << polarity;
        EXPECT_TRUE(host.Talk().HardwareTriggered()) << input;
        EXPECT_TRUE(host.Control().Triggered());
        host.Text("trig cl off");
        EXPECT_EQ(host.Talk().HardwareTriggered(), std::string(input) == "trig a on")
            << "each input has its own switch";
    }
}

}  // namespace zel::sim
