#include "camera/ParameterTable.h"

#include <iterator>

#include "link/SyncTableIndex.h"

namespace zel {

namespace {

using Handlers = ParameterHandlers;

constexpr unsigned kNoLimit = 0xFFFFFFFFu;
constexpr FixedAttributes kCounterOfTransport{ZEL_DATA_TYPE_INT32, 1, kNoLimit, 0};
constexpr FixedAttributes kRegion{
    .data_type = ZEL_DATA_TYPE_INT32, .array_count = 6, .maximum = 0, .default_value = 0, .per_field = true};
constexpr FixedAttributes kSwitchOn{ZEL_DATA_TYPE_INT32, 1, 1, 1};
constexpr FixedAttributes kSwitchOff{ZEL_DATA_TYPE_INT32, 1, 1, 0};
constexpr FixedAttributes kBuffers{ZEL_DATA_TYPE_COUNTER, 1, kNoLimit, 8};
constexpr FixedAttributes kNothing{0, 0, 0, 0};
constexpr FixedAttributes kText{ZEL_DATA_TYPE_TEXT, 32, 127, 0};
constexpr FixedAttributes kCounter{ZEL_DATA_TYPE_COUNTER, 1, kNoLimit, 0};
constexpr FixedAttributes kMatrix{
    .data_type = ZEL_DATA_TYPE_DOUBLE, .array_count = 9, .maximum = 1, .default_value = 0, .is_double = true};

// On purpose: ZEL_PARAM_GAIN and ZEL_PARAM_VGA_GAIN are the same entry of the camera.
// clang-format off
constexpr ParameterRow kParameters[] = {
    {.name = "ZEL_PARAM_CMD_ID_ATTR_ID", .translation = kParameterUnsupported, .write = Handlers::WriteAttributeSelection},
    {.name = "ZEL_PARAM_ATTR", .translation = kParameterUnsupported, .read = Handlers::ReadAttribute},
    {.name = "ZEL_PARAM_PROTOCOL", .translation = HOST_PORT_PROTOCOL},
    {.name = "ZEL_PARAM_FW_VER", .translation = FW_VERSION},
    {.name = "ZEL_PARAM_HW_VER", .translation = HW_VERSION},
    {.name = "ZEL_PARAM_HW_MODEL", .translation = HW_MODEL},
    {.name = "ZEL_PARAM_HW_SER_NUM", .translation = SERIAL_NUMBER},
    {.name = "ZEL_PARAM_CAMSTATE", .translation = CAMERA_STATE},
    {.name = "ZEL_PARAM_CAM_EXPOSURE_STATE", .translation = EXPOSURE_STATE},
    {.name = "ZEL_PARAM_CAM_TRIGGER_STATE", .translation = TRIGGER_STATE},
    {.name = "ZEL_PARAM_EXPOSURE_UNIT", .translation = kParameterHost, .read = Handlers::ReadExposureUnit, .write = Handlers::WriteExposureUnit, .direct_write = true},
    {.name = "ZEL_PARAM_EXPOSURE_TIME", .translation = EXPOSURE_TIME, .read = Handlers::ReadExposureTime, .write = Handlers::WriteExposureTime},
    {.name = "ZEL_PARAM_ACTUAL_EXPOSURE_TIME", .translation = EXPOSURE_ACTUAL},
    {.name = "ZEL_PARAM_HSIZE", .translation = H_SIZE},
    {.name = "ZEL_PARAM_VSIZE", .translation = V_SIZE},
    {.name = "ZEL_PARAM_ROI_BIN", .translation = kParameterHost, .read = Handlers::ReadRoiBin, .write = Handlers::WriteRoiBin, .attributes = &kRegion},
    {.name = "ZEL_PARAM_FRAME_COUNT", .translation = FRAME_COUNT, .write = Handlers::WriteFrameCount},
    {.name = "ZEL_PARAM_CURRENT_FRAME", .translation = CURRENT_FRAME},
    {.name = "ZEL_PARAM_OP_MODE", .translation = OP_MODE},
    {.name = "ZEL_PARAM_CDS_GAIN_INDEX", .translation = CDS_GAIN_IDX},
    {.name = "ZEL_PARAM_VGA_GAIN", .translation = VGA_GAIN, .write = Handlers::WriteGain},
    {.name = "ZEL_PARAM_GAIN", .translation = VGA_GAIN, .write = Handlers::WriteGain},
    {.name = "ZEL_PARAM_OPTICAL_BLACK_LEVEL", .translation = OB_LEVEL},
    {.name = "ZEL_PARAM_PIXEL_OFFSET", .translation = kParameterUnsupported},
    {.name = "ZEL_PARAM_READOUT_SPEED_INDEX", .translation = CLOCK_SPEED_IDX, .write = Handlers::WriteReadoutSpeedIndex},
    {.name = "ZEL_PARAM_READOUT_SPEED", .translation = CLOCK_SPEED_VAL, .read = Handlers::ReadReadoutSpeed},
    {.name = "ZEL_PARAM_FRAME_TIME", .translation = FRAME_TIME},
    {.name = "ZEL_PARAM_FRAME_RATE", .translation = FRAME_RATE},
    {.name = "ZEL_PARAM_COOLING_MODE", .translation = COOLING_MODE},
    {.name = "ZEL_PARAM_COOLING_SETPOINT", .translation = kParameterUnsupported},
    {.name = "ZEL_PARAM_TEMPERATURE", .translation = SENSOR_TEMP},
    {.name = "ZEL_PARAM_QX_OPTION_MODE", .translation = QX_OPTION_MODE},
    {.name = "ZEL_PARAM_TURBO_MODE", .translation = TURBO_MODE},
    {.name = "ZEL_PARAM_XORIGIN", .translation = H_ROI_ORIGIN},
    {.name = "ZEL_PARAM_YORIGIN", .translation = V_ROI_ORIGIN},
    {.name = "ZEL_PARAM_XPIXELS", .translation = H_ROI_PIXELS},
    {.name = "ZEL_PARAM_YPIXELS", .translation = V_ROI_PIXELS},
    {.name = "ZEL_PARAM_XBIN", .translation = H_BIN},
    {.name = "ZEL_PARAM_YBIN", .translation = V_BIN},
    {.name = "ZEL_PARAM_IMAGE_ACQUISTION_MODE", .translation = kParameterUnsupported},
    {.name = "ZEL_PARAM_NAMED_VALUE", .translation = kParameterUnsupported},
    {.name = "ZEL_PARAM_TAPS_INDEX", .translation = SENSOR_TAPS_IDX, .write = Handlers::WriteTapsIndex},
    {.name = "ZEL_PARAM_TAPS_VALUE", .translation = SENSOR_TAPS_VAL, .read = Handlers::ReadTapsValue},
    {.name = "ZEL_PARAM_RESERVED_1", .translation = TDI_TRIGGERS},
    {.name = "ZEL_PARAM_RESERVED_2", .translation = TDI_LINESHIFTS},
    {.name = "ZEL_PARAM_RESERVED_3", .translation = TDI_TRIM_MODE},
    {.name = "ZEL_PARAM_RESERVED_4", .translation = TDI_TRIM_LINES},
    {.name = "ZEL_PARAM_GLOBAL_CAMERA_NAME", .translation = CAMERA_NAME},
    {.name = "ZEL_PARAM_CDS_GAIN_VALUE", .translation = CDS_GAIN_VAL},
    {.name = "ZEL_PARAM_PIXEL_SIZE", .translation = PIXEL_SIZE},
    {.name = "ZEL_PARAM_BITS_PER_PIXEL", .translation = BITS_PER_PIXEL},
    {.name = "ZEL_PARAM_BYTES_PER_PIXEL", .translation = BYTES_PER_PIXEL},
    {.name = "ZEL_PARAM_READOUT_TIME", .translation = READOUT_TIME},
    {.name = "ZEL_PARAM_HW_TRIGGER_ACTIVE", .translation = kParameterHost, .read = Handlers::ReadHwTriggerActive, .write = Handlers::WriteHwTriggerActive, .attributes = &kSwitchOff},
    {.name = "ZEL_PARAM_HW_TRIG_SOURCE", .translation = HW_TRIG_SOURCE, .write = Handlers::WriteHwTriggerSource},
    {.name = "ZEL_PARAM_HW_TRIG_POLARITY", .translation = HW_TRIG_POLARITY},
    {.name = "ZEL_PARAM_TAP_BALANCE_ENABLE", .translation = kParameterHost, .read = Handlers::ReadTapBalanceEnable, .write = Handlers::WriteTapBalanceEnable, .attributes = &kSwitchOn},
    {.name = "ZEL_PARAM_DROPPED_FRAMES", .translation = kParameterHost, .read = Handlers::ReadDroppedFrames, .attributes = &kCounterOfTransport},
    {.name = "ZEL_PARAM_EXPOSURE_TIME_US", .translation = kParameterHost, .read = Handlers::ReadExposureTimeUs, .write = Handlers::WriteExposureTimeUs, .attributes = &kCounterOfTransport, .direct_read = true, .direct_write = true},
    {.name = "ZEL_PARAM_RESERVED_5", .translation = TDI_LINE_SHIFT_TIME},
    {.name = "ZEL_PARAM_RESERVED_6", .translation = TDI_LINE_READ_TIME},
    {.name = "ZEL_PARAM_RESERVED_7", .translation = TDI_AF},
    {.name = "ZEL_PARAM_UPDATE_PARAMETERS", .translation = kParameterHost, .read = Handlers::ReadUpdateParameters, .write = Handlers::WriteUpdateParameters, .attributes = &kNothing},
    {.name = "ZEL_PARAM_FEATURE_LIST", .translation = FEATURELIST},
    {.name = "ZEL_PARAM_FEATURE_VALID", .translation = FEATURESVALID},
    {.name = "ZEL_PARAM_NUM_IMAGE_BUFFERS", .translation = kParameterHost, .read = Handlers::ReadNumImageBuffers, .write = Handlers::WriteNumImageBuffers, .attributes = &kBuffers},
    {.name = "ZEL_PARAM_COLOR_FILTER_TYPE", .translation = kParameterHost, .read = Handlers::ReadTextEntry<CFA_TYPE>, .attributes = &kText},
    {.name = "ZEL_PARAM_COLOR_FILTER_PHASE", .translation = kParameterHost, .read = Handlers::ReadColorFilterPhase, .attributes = &kCounter},
    {.name = "ZEL_PARAM_COLOR_IR_FILTER_TYPE", .translation = kParameterHost, .read = Handlers::ReadTextEntry<IR_FILTER>, .attributes = &kText},
    {.name = "ZEL_PARAM_COLOR_CAMERA_CORRECTION_MATRIX", .translation = kParameterHost, .read = Handlers::ReadCorrectionMatrix, .attributes = &kMatrix},
    {.name = "ZEL_PARAM_CCM_OUTPUT_COLOR_SPACE", .translation = kParameterHost, .read = Handlers::ReadTextEntry<CCM_OUTPUT_COLOR_SPACE>, .attributes = &kText},
    {.name = "ZEL_PARAM_DEFAULT_WHITE_BALANCE_MATRIX", .translation = kParameterHost, .read = Handlers::ReadWhiteBalanceMatrix, .attributes = &kMatrix},
    {.name = "ZEL_PARAM_USB_ENABLE_LED", .translation = kParameterHost, .read = Handlers::ReadLed, .write = Handlers::WriteLed, .attributes = &kSwitchOn, .direct_write = true},
};
// clang-format on
static_assert(std::size(kParameters) == ZEL_MAX_PARAMS);

struct AttributeRow {
    const char* name;
    int translation;
};
constexpr AttributeRow kAttributes[] = {
    {"ZEL_ATTR_NAME", kTableName},
    {"ZEL_ATTR_DATA_TYPE", kTableDataType},
    {"ZEL_ATTR_ARRAY_COUNT", kTableArrayCount},
    {"ZEL_ATTR_FLAGS", kTableFlags},
    {"ZEL_ATTR_MIN_VALUE", kTableMinimum},
    {"ZEL_ATTR_MAX_VALUE", kTableMaximum},
    {"ZEL_ATTR_DEFAULT_VALUE", kTableDefault},
};
static_assert(std::size(kAttributes) == kAttributeCount);

}  // namespace

const ParameterRow* FindParameter(int param_id) {
    return param_id >= 0 && param_id < ZEL_MAX_PARAMS ? &kParameters[param_id] : nullptr;
}

const char* ParameterName(int param_id) {
    const ParameterRow* parameter = FindParameter(param_id);
    return parameter ? parameter->name : "";
}

const char* AttributeName(int attribute_id) {
    return attribute_id >= 0 && attribute_id < kAttributeCount ? kAttributes[attribute_id].name : "";
}

int TranslateAttribute(int attribute_id) {
    return attribute_id >= 0 && attribute_id < kAttributeCount ? kAttributes[attribute_id].translation
                                                               : kParameterUnsupported;
}

}  // namespace zel
