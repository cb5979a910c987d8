#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "link/ICameraInterface.h"
#include "tests/devices/sim/firmware/FirmwareHost.h"

namespace zel::sim {
namespace {

using zel::test::TextReply;

const CameraModel kModels[] = {ModelOfLink(CAMERA_TYPE_EDT_CAMERA_LINK, 0), ModelOfLink(CAMERA_TYPE_PLEORA_EBUS, 0),
                               ModelOfLink(CAMERA_TYPE_USB, 0), ModelOfLink(CAMERA_TYPE_USB, 1)};

// Every entry of every model: reading, attributes and writing agree with its row.
TEST(FirmwareTable, EveryEntryKeepsItsRangeAndItsAccess) {
    for (const CameraModel& model : kModels) {
        for (int index = 0; index < SYNC_TABLE_SELECT_MAX; ++index) {
            const kit::Attributes& row = kit::StandardAttributes(index);
            SCOPED_TRACE(std::string(model.model_text) + ' ' + kit::EntryName(index));
            FirmwareHost host(model);
            Bytes value, record, reply;
            const int refused = index >= CCM_1_1 && !model.Color() ? kExceptionBadIndex : 0;
            EXPECT_EQ(host.Request(SYNC_TABLE_CMD_GET, index, {}, value), refused);
            EXPECT_EQ(host.Request(SYNC_TABLE_CMD_GET_ATTRIBUTES, index, {}, record), refused);
            if (refused) continue;
            const int written = host.Request(SYNC_TABLE_CMD_SET, index, value, reply);
            const bool writable = row.access == kit::EntryAccess::kWritable;
            EXPECT_EQ(written, writable                                  ? 0
                               : row.access == kit::EntryAccess::kConstant ? kExceptionWriteToConst
                                                                         : kExceptionWriteToReadOnly);
            SyncTableAttributes attributes;
            ASSERT_EQ(record.size(), sizeof(attributes));
            std::memcpy(&attributes, record.data(), sizeof(attributes));
            if (row.type != kit::EntryType::kInteger || !writable) continue;
            EXPECT_GE(attributes.default_value, attributes.minimum);
            EXPECT_LE(attributes.default_value, attributes.maximum);
            for (const std::int64_t beyond : {attributes.minimum - 1LL, attributes.maximum + 1LL}) {
                const int wrapped = static_cast<int>(beyond);
                EXPECT_TRUE(wrapped != beyond || host.Set(index, wrapped) == kExceptionChange) << beyond;
            }
        }
    }
}

TEST(FirmwareTable, ARequestThatMakesNoSenseIsAnsweredWithAnException) {
    FirmwareHost host(kModels[0]);
    Bytes reply;
    for (const int index : {-1, static_cast<int>(SYNC_TABLE_SELECT_MAX)})
        EXPECT_EQ(host.Request(SYNC_TABLE_CMD_GET, index, {}, reply), kExceptionBadIndex);
    EXPECT_EQ(host.Request(SYNC_TABLE_CMD_SET, EXPOSURE_TIME, {1, 2, 3}, reply), kExceptionIncompleteData);
    EXPECT_EQ(host.Request(99, EXPOSURE_TIME, {}, reply), kExceptionIncompleteData);
    Bytes request = TableRequest(SYNC_TABLE_CMD_GET, H_SIZE);
    for (std::size_t size = 1; size < request.size(); ++size) {
        const Bytes answer = host.Raw(Bytes(request.begin(), request.begin() + static_cast<std::ptrdiff_t>(size)));
        ASSERT_EQ(answer.size(), 12u) << size;
        EXPECT_EQ(answer[11], kExceptionIncompleteData);
    }
    request[2] = 8;
    EXPECT_EQ(host.Raw(request).back(), kExceptionIncompleteData);
}

TEST(FirmwareTable, RegionsStayOnTheSensor) {
    FirmwareHost host(kModels[0]);  // 2048 x 2048
    EXPECT_EQ(host.Set(H_ROI_ORIGIN, 2048), kExceptionChange);
    EXPECT_EQ(host.Set(H_ROI_ORIGIN, 2000), 0);
    EXPECT_EQ(host.Get(H_ROI_PIXELS), 48) << "the region ends at the sensor's edge";
    EXPECT_EQ(host.Set(H_ROI_PIXELS, 49), kExceptionChange);
    EXPECT_EQ(host.Set(V_ROI_ORIGIN, 1), 0);
    EXPECT_EQ(host.Set(V_ROI_PIXELS, 2048), kExceptionChange);
    EXPECT_EQ(host.Set(V_ROI_PIXELS, 0), kExceptionChange);
}

TEST(FirmwareTable, ARecalculationTakesItsTimeAndLetsTheRunBegin) {
    FirmwareHost host(kModels[0], {3600000, 1.0});
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
    FirmwareHost host(kModels[0]);
    const Bytes reply = TextReply(kModels[0].name);
    EXPECT_EQ(host.Raw({9, 0, 4, 'n', 'a', 'm', 'e'}), reply);
    EXPECT_EQ(host.Raw({9, 0, 6, 'n', 'a', 'm', 'e', '\r', '\n'}), reply);
    EXPECT_EQ(host.Raw({'n', 'a', 'm', 'e', '\r', '\n'}), reply);
    EXPECT_EQ(host.Raw({9, 0, 7, 'n', 'a', 'm', 'e'}), TextReply("ERR")) << "a header that disagrees is text";
    EXPECT_EQ(host.Raw({}), TextReply("ERR"));
    for (const char* command : {"trig b on", "trig cl", "cam.fly", "armed", "INFO"})
        EXPECT_EQ(host.Text(command), "ERR") << command;
}

TEST(FirmwareTrigger, TheInputIsSwitchedAndHasAPolarity) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"trig cl on", "trig cl hi", false}, {"trig cl on", "trig cl lo", true}, {"trig a on", "trig a low", true}};
    for (const auto& [input, polarity, active_low] : cases) {
        FirmwareHost host(kModels[0]);
        EXPECT_FALSE(host.Talk().HardwareTriggered());
        for (const char* command : {input, polarity, "arm"}) EXPECT_EQ(host.Text(command), "OK");
        EXPECT_EQ(host.Talk().ActiveLow(), active_low) << polarity;
        EXPECT_TRUE(host.Talk().HardwareTriggered()) << input;
        EXPECT_TRUE(host.Control().Triggered());
        host.Text("trig cl off");
        EXPECT_EQ(host.Talk().HardwareTriggered(), std::string(input) == "trig a on") << "each input has its own switch";
    }
}

}  // namespace
}  // namespace zel::sim
