// The parameter table of this system's own cameras, a row for each entry.
#include <algorithm>
#include <array>
#include <climits>
#include <iterator>

#include "devices/kit/Entry.h"

namespace zel::kit {

namespace {

struct Row {
    int index;
    Attributes attributes;
};

constexpr Row Number(int index, int minimum, int maximum, int default_value) {
    return {index, {EntryType::kInteger, EntryAccess::kWritable, minimum, maximum, default_value}};
}
constexpr Row State(int index, int minimum, int maximum, int default_value) {
    return {index, {EntryType::kInteger, EntryAccess::kReadOnly, minimum, maximum, default_value}};
}
constexpr Row Constant(int index, int minimum, int maximum, int value) {
    return {index, {EntryType::kInteger, EntryAccess::kConstant, minimum, maximum, value}};
}
constexpr Row Constant(int index, int value) { return Constant(index, value, value, value); }
constexpr Row Text(int index, EntryAccess access = EntryAccess::kConstant) {
    return {index, {EntryType::kText, access, 0, 127, 0}};
}
constexpr Row Matrix(int index, int default_value) {
    return {index, {EntryType::kDouble, EntryAccess::kWritable, -16, 16, default_value}};
}

constexpr int kLongestTime = 2000000000;  // microseconds

constexpr std::array<Row, SYNC_TABLE_SELECT_MAX> kRows{{
    Number(HOST_PORT_PROTOCOL, 0, 3, 0),
    Text(FW_VERSION),
    Constant(HW_VERSION, 3),
    Text(HW_MODEL),
    Text(SERIAL_NUMBER),
    Text(CAMERA_NAME, EntryAccess::kWritable),
    Number(CAMERA_STATE, 0, 2, 0),
    State(EXPOSURE_STATE, 0, 2, 0),
    Number(TRIGGER_STATE, 0, 1, 0),
    Number(EXPOSURE_TIME, 1, kLongestTime, 10000),
    State(EXPOSURE_ACTUAL, 1, kLongestTime, 10000),
    Number(CLOCK_SPEED_IDX, 0, 1, 0),
    State(CLOCK_SPEED_VAL, 20, 40, 20),
    Constant(H_SIZE, 0),
    Constant(V_SIZE, 0),
    Number(H_BIN, 1, 128, 1),
    Number(V_BIN, 1, 128, 1),
    Number(H_ROI_ORIGIN, 0, 0, 0),
    Number(H_ROI_PIXELS, 1, 0, 0),
    Number(V_ROI_ORIGIN, 0, 0, 0),
    Number(V_ROI_PIXELS, 1, 0, 0),
    Number(FRAME_COUNT, 0, INT_MAX, 0),
    State(CURRENT_FRAME, 0, INT_MAX, 0),
    Number(OP_MODE, 0, 7, 0),
    Number(CDS_GAIN_IDX, 0, 2, 0),
    State(CDS_GAIN_VAL, 0, 6, 0),
    Number(VGA_GAIN, 0, 1023, 0),
    Number(OB_LEVEL, 0, 1023, 64),
    Number(COOLING_MODE, 0, 2, 0),
    State(SENSOR_TEMP, -1000, 1000, 250),
    Number(QX_OPTION_MODE, 0, 1, 0),
    Number(TDI_TRIGGERS, 0, 65535, 0),
    Number(TDI_LINESHIFTS, 0, 65535, 0),
    Number(TDI_TRIM_MODE, 0, 1, 0),
    Number(TDI_TRIM_LINES, 0, 65535, 0),
    Number(SENSOR_TAPS_IDX, 0, 0, 0),
    State(SENSOR_TAPS_VAL, 1, 4, 1),
    Number(CALC_STATE, 0, 2, 2),
    Number(TURBO_MODE, 0, 1, 0),
    Constant(PIXEL_SIZE, 0),
    Constant(BITS_PER_PIXEL, 0),
    Constant(BYTES_PER_PIXEL, 2),
    State(FRAME_RATE, 0, INT_MAX, 0),
    State(FRAME_TIME, 0, INT_MAX, 0),
    State(READOUT_TIME, 0, INT_MAX, 0),
    Number(CAMERA_RESET, 0, 1, 0),
    Constant(SVN_REVISION, 0x30312E32),  // the text "2.10" in the order of the wire
    Number(HW_TRIG_SOURCE, 0, 2, 0),
    Number(HW_TRIG_POLARITY, 0, 1, 0),
    Number(SW_TRIG, 0, 1, 0),
    Number(FPGA_INHIBIT, 0, 1, 0),
    Constant(H_RO_PIXELS, 0),
    Number(IMAGE_METADATA, 0, 1, 0),
    Number(TDI_LINE_SHIFT_TIME, 0, kLongestTime, 0),
    Number(TDI_LINE_READ_TIME, 0, kLongestTime, 0),
    Constant(V_RO_LINES, 0),
    Number(TDI_AF, 0, 1, 0),
    Constant(HW_SKU, 1000),
    Constant(FEATURESVALID, 1),
    Constant(FEATURELIST, 0x07),
    Number(RESERVED_NEW_A, INT_MIN, INT_MAX, 0),
    Number(RESERVED_NEW_B, INT_MIN, INT_MAX, 0),
    Number(RESERVED_NEW_C, INT_MIN, INT_MAX, 0),
    Number(SET_AMP_FILTER, 0, 3, 0),
    Number(SET_AVG_MODE, 0, 3, 0),
    Number(SET_STROBE_DELAY, 0, 1000000, 0),
    Number(TDI_EXP_COR, 0, 1, 0),
    Matrix(CCM_1_1, 1),
    Matrix(CCM_1_2, 0),
    Matrix(CCM_1_3, 0),
    Matrix(CCM_2_1, 0),
    Matrix(CCM_2_2, 1),
    Matrix(CCM_2_3, 0),
    Matrix(CCM_3_1, 0),
    Matrix(CCM_3_2, 0),
    Matrix(CCM_3_3, 1),
    Text(IR_FILTER),
    Text(CFA_TYPE),
    Constant(CFA_PHASE, 0, 4, 0),
    Text(CCM_OUTPUT_COLOR_SPACE),
    Matrix(DWB_1_1, 1),
    Matrix(DWB_1_2, 0),
    Matrix(DWB_1_3, 0),
    Matrix(DWB_2_1, 0),
    Matrix(DWB_2_2, 1),
    Matrix(DWB_2_3, 0),
    Matrix(DWB_3_1, 0),
    Matrix(DWB_3_2, 0),
    Matrix(DWB_3_3, 1),
}};

constexpr bool RowsInOrder() {
    for (int i = 0; i < SYNC_TABLE_SELECT_MAX; ++i) {
        if (kRows[static_cast<unsigned>(i)].index != i) return false;
    }
    return true;
}
static_assert(RowsInOrder(), "a row stands at the position of its index");

constexpr const char* kNames[] = {
#define ZEL_ENTRY_NAME(name) #name,
    ZEL_SYNC_TABLE_ENTRIES(ZEL_ENTRY_NAME)
#undef ZEL_ENTRY_NAME
};

}  // namespace

const Attributes& StandardAttributes(int index) { return kRows[static_cast<std::size_t>(index)].attributes; }

Attributes SensorAttributes(int index, const SensorSize& sensor) {
    const Attributes& standard = StandardAttributes(index);
    const auto& [width, height, bits] = sensor;
    switch (index) {
        case H_SIZE:
        case H_RO_PIXELS:
            return standard.Bounded(width, width, width);
        case V_SIZE:
        case V_RO_LINES:
            return standard.Bounded(height, height, height);
        case H_ROI_ORIGIN:
            return standard.Bounded(0, width - 1, 0);
        case V_ROI_ORIGIN:
            return standard.Bounded(0, height - 1, 0);
        case H_ROI_PIXELS:
            return standard.Bounded(1, width, width);
        case V_ROI_PIXELS:
            return standard.Bounded(1, height, height);
        case BITS_PER_PIXEL:
            return standard.Bounded(bits, bits, bits);
        default:
            return standard;
    }
}

bool IsBasicEntry(int index) {
    constexpr int kBasic[] = {
        FW_VERSION,      HW_VERSION,       HW_MODEL,     SERIAL_NUMBER,  CAMERA_NAME,     CAMERA_STATE,
        TRIGGER_STATE,   H_SIZE,           V_SIZE,       H_BIN,          V_BIN,           H_ROI_ORIGIN,
        H_ROI_PIXELS,    V_ROI_ORIGIN,     V_ROI_PIXELS, FRAME_COUNT,    CURRENT_FRAME,   SENSOR_TAPS_IDX,
        SENSOR_TAPS_VAL, CLOCK_SPEED_VAL,  CALC_STATE,   BITS_PER_PIXEL, BYTES_PER_PIXEL, CAMERA_RESET,
        HW_TRIG_SOURCE,  HW_TRIG_POLARITY, SW_TRIG,      H_RO_PIXELS,    V_RO_LINES};
    return std::ranges::find(kBasic, index) != std::end(kBasic);
}

const char* EntryName(int index) { return index >= 0 && index < SYNC_TABLE_SELECT_MAX ? kNames[index] : "?"; }

int EntryIndex(std::string_view name) {
    for (int i = 0; i < SYNC_TABLE_SELECT_MAX; ++i) {
        if (kNames[i] == name) return i;
    }
    return -1;
}

}  // namespace zel::kit
