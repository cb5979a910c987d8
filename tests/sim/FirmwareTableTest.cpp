#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <thread>

#include "link/ICameraInterface.h"
#include "tests/sim/Datagram.h"

namespace zel::sim {
namespace {

const CameraModel kModels[] = {ModelOfLink(CAMERA_TYPE_EDT_CAMERA_LINK, 0), ModelOfLink(CAMERA_TYPE_PLEORA_EBUS, 0),
                               ModelOfLink(CAMERA_TYPE_USB, 0), ModelOfLink(CAMERA_TYPE_USB, 1)};

int ReplySize(const RegisterRow& row) {
    return row.type == RegisterType::kInteger ? 4 : row.type == RegisterType::kDouble ? 8 : kTextCapacity;
}

// Every entry of every model: reading, attributes and writing agree with its row.
TEST(FirmwareTable, EveryEntryAnswersAsItsRowSays) {
    for (const CameraModel& model : kModels) {
        for (const RegisterRow& row : RegisterRows()) {
            SCOPED_TRACE(std::string(model.model_text) + ' ' + RegisterName(row.index));
            FirmwareHost host(model);
            Bytes value;
            Bytes record;
            const bool missing = row.color_only && !model.Color();
            const int refused = missing ? kExceptionBadIndex : 0;
            EXPECT_EQ(host.Request(SYNC_TABLE_CMD_GET, row.index, {}, value), refused);
            EXPECT_EQ(static_cast<int>(value.size()), missing ? 0 : ReplySize(row));
            EXPECT_EQ(host.Request(SYNC_TABLE_CMD_GET_ATTRIBUTES, row.index, {}, record), refused);
            Bytes reply;
            const int written = host.Request(SYNC_TABLE_CMD_SET, row.index, value, reply);
            if (missing) {
                EXPECT_EQ(written, kExceptionBadIndex);
                continue;
            }
            const bool writable = row.access == RegisterAccess::kWritable;
            EXPECT_EQ(written, writable                                  ? 0
                               : row.access == RegisterAccess::kConstant ? kExceptionWriteToConst
                                                                         : kExceptionWriteToReadOnly);
            ASSERT_EQ(record.size(), 56u);
            SyncTableAttributes attributes;
            std::memcpy(&attributes, record.data(), sizeof(attributes));
            EXPECT_EQ(attributes.index, row.index);
            EXPECT_STREQ(attributes.name, RegisterName(row.index));
            EXPECT_EQ(attributes.data_type, static_cast<int>(row.type));
            EXPECT_EQ(attributes.flags & 1, writable ? 1 : 0);
            EXPECT_LE(attributes.minimum, attributes.maximum);
            if (row.type != RegisterType::kInteger || !writable) continue;
            EXPECT_GE(attributes.default_value, attributes.minimum);
            EXPECT_LE(attributes.default_value, attributes.maximum);
            if (attributes.maximum < INT_MAX) {
                EXPECT_EQ(host.Set(row.index, attributes.maximum + 1), kExceptionChange);
            }
            if (attributes.minimum > INT_MIN) {
                EXPECT_EQ(host.Set(row.index, attributes.minimum - 1), kExceptionChange);
            }
        }
    }
}

TEST(FirmwareTable, ARequestThatMakesNoSenseIsAnsweredWithAnException) {
    FirmwareHost host(kModels[0]);
    Bytes reply;
    EXPECT_EQ(host.Request(SYNC_TABLE_CMD_GET, 89, {}, reply), kExceptionBadIndex);
    EXPECT_EQ(host.Request(SYNC_TABLE_CMD_GET, -1, {}, reply), kExceptionBadIndex);
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

TEST(FirmwareTable, TheRevisionIsFourCharacters) {
    FirmwareHost host(kModels[0]);
    Bytes reply;
    ASSERT_EQ(host.Request(SYNC_TABLE_CMD_GET, SVN_REVISION, {}, reply), 0);
    EXPECT_EQ(reply, (Bytes{0x32, 0x2E, 0x31, 0x30}));
}

TEST(FirmwareTable, RegionsStayOnTheSensor) {
    FirmwareHost host(kModels[0]);  // 2048 x 2048
    EXPECT_EQ(host.Set(H_ROI_ORIGIN, 2048), kExceptionChange);
    EXPECT_EQ(host.Set(H_ROI_ORIGIN, 2000), 0);
    EXPECT_EQ(host.Get(H_ROI_PIXELS), 48) << "the region ends at the sensor's edge";
    EXPECT_EQ(host.Set(H_ROI_PIXELS, 49), kExceptionChange);
    EXPECT_EQ(host.Get(H_ROI_PIXELS), 48);
    EXPECT_EQ(host.Set(H_ROI_PIXELS, 48), 0);
    EXPECT_EQ(host.Set(V_ROI_ORIGIN, 1), 0);
    EXPECT_EQ(host.Set(V_ROI_PIXELS, 2048), kExceptionChange);
    EXPECT_EQ(host.Set(V_ROI_PIXELS, 0), kExceptionChange);
    EXPECT_EQ(host.Set(H_BIN, 128), 0);
    EXPECT_EQ(host.Set(H_BIN, 129), kExceptionChange);
}

TEST(FirmwareTable, FrameTimesFollowTapsClockAndExposure) {
    FirmwareHost host(kModels[0]);
    const struct {
        int taps_idx, clock_idx, readout_us;
    } kCases[] = {{0, 0, 2048 * (2048 + 48) / 20 + 1},
                  {1, 0, (2048 * (1024 + 48) + 19) / 20},
                  {2, 0, (1024 * (1024 + 48) + 19) / 20},
                  {2, 1, (1024 * (1024 + 48) + 39) / 40}};
    for (const auto& c : kCases) {
        ASSERT_EQ(host.Set(SENSOR_TAPS_IDX, c.taps_idx), 0);
        ASSERT_EQ(host.Set(CLOCK_SPEED_IDX, c.clock_idx), 0);
        EXPECT_EQ(host.Get(SENSOR_TAPS_VAL), 1 << c.taps_idx);
        EXPECT_EQ(host.Get(CLOCK_SPEED_VAL), 20 << c.clock_idx);
        EXPECT_EQ(host.Get(READOUT_TIME), c.readout_us);
        EXPECT_EQ(host.Set(EXPOSURE_TIME, 100), 0);
        EXPECT_EQ(host.Get(FRAME_TIME), c.readout_us);
        EXPECT_EQ(host.Set(EXPOSURE_TIME, 2000000), 0);
        EXPECT_EQ(host.Get(FRAME_TIME), 2000000);
        EXPECT_EQ(host.Get(FRAME_RATE), 500);
    }
    FirmwareHost single(kModels[3]);
    EXPECT_EQ(single.Set(SENSOR_TAPS_IDX, 1), kExceptionChange);
}

TEST(FirmwareTable, ARecalculationTakesItsTimeAndLetsTheRunBegin) {
    FirmwareHost host(kModels[0], {40, 1.0});
    EXPECT_EQ(host.Set(SENSOR_TAPS_IDX, 0), 0);
    EXPECT_EQ(host.Set(CAMERA_STATE, 2), kExceptionRequiresCalc);
    EXPECT_EQ(host.Target().Taps(), 4) << "in force with the recalculation only";
    EXPECT_EQ(host.Set(CALC_STATE, 0), 0);
    EXPECT_EQ(host.Get(CALC_STATE), 0);
    EXPECT_EQ(host.Set(CALC_STATE, 1), 0);
    EXPECT_EQ(host.Get(CALC_STATE), 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    EXPECT_EQ(host.Get(CALC_STATE), 2);
    EXPECT_EQ(host.Target().Taps(), 1);
    EXPECT_EQ(host.Set(CAMERA_STATE, 2), 0);
    host.Target().SetCalcNeverEnds(true);
    EXPECT_EQ(host.Set(CALC_STATE, 1), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    EXPECT_EQ(host.Get(CALC_STATE), 1);
}

TEST(FirmwareTable, TheTemperatureDriftsTowardsTheSetPoint) {
    FirmwareHost host(kModels[0]);
    EXPECT_EQ(host.Get(SENSOR_TEMP), 250);
    ASSERT_EQ(host.Set(COOLING_MODE, 2), 0);
    const int soon = host.Get(SENSOR_TEMP);
    EXPECT_GT(soon, -200) << "cooling takes time";
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(host.Get(SENSOR_TEMP), -200);
    EXPECT_EQ(host.Target().Settings().temperature, -20.0);
}

TEST(FirmwareTable, AResetKeepsTheNameOnly) {
    FirmwareHost host(kModels[2]);
    host.Set(EXPOSURE_TIME, 77);
    host.Set(CAMERA_STATE, 2);
    EXPECT_EQ(host.Text("name Bench 4"), "OK");
    EXPECT_EQ(host.Set(CAMERA_RESET, 1), 0);
    EXPECT_EQ(host.Get(EXPOSURE_TIME), 10000);
    EXPECT_EQ(host.Get(CAMERA_STATE), 0);
    EXPECT_FALSE(host.Target().Acquiring());
    EXPECT_EQ(host.Text("name"), "Bench 4");
}

}  // namespace
}  // namespace zel::sim
