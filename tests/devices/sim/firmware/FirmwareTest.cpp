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
        for (const RegisterRow& row : RegisterRows()) {
            SCOPED_TRACE(std::string(model.model_text) + ' ' + RegisterName(row.index));
            FirmwareHost host(model);
            Bytes value, record, reply;
            const int refused = row.color_only && !model.Color() ? kExceptionBadIndex : 0;
            EXPECT_EQ(host.Request(SYNC_TABLE_CMD_GET, row.index, {}, value), refused);
            EXPECT_EQ(host.Request(SYNC_TABLE_CMD_GET_ATTRIBUTES, row.index, {}, record), refused);
            if (refused) continue;
            const int written = host.Request(SYNC_TABLE_CMD_SET, row.index, value, reply);
            const bool writable = row.access == RegisterAccess::kWritable;
            EXPECT_EQ(written, writable                                  ? 0
                               : row.access == RegisterAccess::kConstant ? kExceptionWriteToConst
                                                                         : kExceptionWriteToReadOnly);
            SyncTableAttributes attributes;
            ASSERT_EQ(record.size(), sizeof(attributes));
            std::memcpy(&attributes, record.data(), sizeof(attributes));
            if (row.type != RegisterType::kInteger || !writable) continue;
            EXPECT_GE(attributes.default_value, attributes.minimum);
            EXPECT_LE(attributes.default_value, attributes.maximum);
            for (const std::int64_t beyond : {attributes.minimum - 1LL, attributes.maximum + 1LL}) {
                const int wrapped = static_cast<int>(beyond);
                EXPECT_TRUE(wrapped != beyond || host.Set(row.index, wrapped) == kExceptionChange) << beyond;
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
    EXPECT_EQ(host.Target().Taps(), 4) << "in force with the recalculation only";
    EXPECT_EQ(host.Set(CALC_STATE, 1), 0);
    EXPECT_EQ(host.Get(CALC_STATE), 1);
    host.Target().SetCalcDelay(40);
    EXPECT_EQ(host.Set(CALC_STATE, 1), 0);
    while (host.Get(CALC_STATE) == 1) std::this_thread::yield();
    EXPECT_EQ(host.Get(CALC_STATE), 2);
    EXPECT_EQ(host.Target().Taps(), 1);
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

TEST(FirmwareTrigger, TheInputObeysItsPolarity) {
    const std::tuple<const char*, TriggerEdge, bool> cases[] = {{"trig cl hi", TriggerEdge::kRising, true},
                                                                {"trig cl hi", TriggerEdge::kFalling, false},
                                                                {"trig cl lo", TriggerEdge::kFalling, true},
                                                                {"trig cl low", TriggerEdge::kRising, false},
                                                                {"trig a hi", TriggerEdge::kActive, true}};
    for (const auto& [polarity, edge, taken] : cases) {
        FirmwareHost host(kModels[0]);
        for (const char* command : {"trig cl on", polarity, "arm"}) host.Text(command);
        EXPECT_EQ(host.Target().HardwareTrigger(edge), taken) << polarity;
        EXPECT_EQ(host.Target().FrameDue(), taken);
        host.Text("trig cl off");
        EXPECT_FALSE(host.Target().HardwareTrigger(TriggerEdge::kActive)) << "the input is off";
    }
}

}  // namespace
}  // namespace zel::sim
