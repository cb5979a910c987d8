/// @file
/// The table of all parameters.
#ifndef ZEL_LAYER_PARAMETERTABLE_H
#define ZEL_LAYER_PARAMETERTABLE_H

#include "ZelParameters.h"

namespace zel {

/// How a parameter's value is laid out.
enum class ValueKind {
    number,         ///< 32-bit integer, unsigned
    signed_number,  ///< 32-bit integer, signed
    text,           ///< zero-terminated text in a field of 32 bytes
    region,         ///< ZelRoiBin
    matrix,         ///< nine doubles, row by row
    wide,           ///< 64-bit integer
    selector,       ///< part of the attribute mechanism, no value of its own
};

/// Whether a parameter can be read and written.
enum class Access {
    read_write,  ///< both
    read_only,   ///< read
    write_only   ///< written
};

/// One parameter.
struct ParameterInfo {
    unsigned id;              ///< ZEL_PARAM_...
    const char* name;         ///< without the leading ZEL_PARAM_
    ValueKind kind;           ///< what its value is
    Access access;            ///< a camera may narrow it: Parameter::access()
    const char* unit;         ///< empty when there is none
    const char* description;  ///< one line
};

namespace detail {

inline constexpr ParameterInfo kParameterTable[] = {
    {ZEL_PARAM_CMD_ID_ATTR_ID, "CMD_ID_ATTR_ID", ValueKind::selector, Access::write_only, "",
     "selects the attribute that ATTR reads"},
    {ZEL_PARAM_ATTR, "ATTR", ValueKind::selector, Access::read_only, "", "attribute selected last"},
    {ZEL_PARAM_PROTOCOL, "PROTOCOL", ValueKind::number, Access::read_write, "",
     "protocol of the camera's control port"},
    {ZEL_PARAM_FW_VER, "FW_VER", ValueKind::text, Access::read_only, "", "firmware version"},
    {ZEL_PARAM_HW_VER, "HW_VER", ValueKind::number, Access::read_only, "", "hardware version"},
    {ZEL_PARAM_HW_MODEL, "HW_MODEL", ValueKind::text, Access::read_only, "", "model"},
    {ZEL_PARAM_HW_SER_NUM, "HW_SER_NUM", ValueKind::text, Access::read_only, "", "serial number"},
    {ZEL_PARAM_CAMSTATE, "CAMSTATE", ValueKind::number, Access::read_write, "", "0 = stopped, 2 = running"},
    {ZEL_PARAM_CAM_EXPOSURE_STATE, "CAM_EXPOSURE_STATE", ValueKind::number, Access::read_only, "",
     "state of the exposure"},
    {ZEL_PARAM_CAM_TRIGGER_STATE, "CAM_TRIGGER_STATE", ValueKind::number, Access::read_write, "",
     "state of the trigger"},
    {ZEL_PARAM_EXPOSURE_UNIT, "EXPOSURE_UNIT", ValueKind::number, Access::read_write, "",
     "unit of EXPOSURE_TIME: 0 = us, 1 = ms"},
    {ZEL_PARAM_EXPOSURE_TIME, "EXPOSURE_TIME", ValueKind::number, Access::read_write, "us",
     "exposure time; in ms when EXPOSURE_UNIT is 1"},
    {ZEL_PARAM_ACTUAL_EXPOSURE_TIME, "ACTUAL_EXPOSURE_TIME", ValueKind::number, Access::read_only, "us",
     "exposure time in force"},
    {ZEL_PARAM_HSIZE, "HSIZE", ValueKind::number, Access::read_only, "px", "sensor width"},
    {ZEL_PARAM_VSIZE, "VSIZE", ValueKind::number, Access::read_only, "px", "sensor height"},
    {ZEL_PARAM_ROI_BIN, "ROI_BIN", ValueKind::region, Access::read_write, "px",
     "region of interest and binning: x,y,width,height,xbin,ybin"},
    {ZEL_PARAM_FRAME_COUNT, "FRAME_COUNT", ValueKind::number, Access::read_write, "frames",
     "frames of a sequence, 0 = until stopped"},
    {ZEL_PARAM_CURRENT_FRAME, "CURRENT_FRAME", ValueKind::number, Access::read_only, "",
     "number of the frame being taken"},
    {ZEL_PARAM_OP_MODE, "OP_MODE", ValueKind::number, Access::read_write, "", "operating mode"},
    {ZEL_PARAM_CDS_GAIN_INDEX, "CDS_GAIN_INDEX", ValueKind::number, Access::read_write, "", "choice of the CDS gain"},
    {ZEL_PARAM_VGA_GAIN, "VGA_GAIN", ValueKind::number, Access::read_write, "", "amplifier gain"},
    {ZEL_PARAM_GAIN, "GAIN", ValueKind::number, Access::read_write, "", "amplifier gain, the same value as VGA_GAIN"},
    {ZEL_PARAM_OPTICAL_BLACK_LEVEL, "OPTICAL_BLACK_LEVEL", ValueKind::number, Access::read_write, "", "black level"},
    {ZEL_PARAM_PIXEL_OFFSET, "PIXEL_OFFSET", ValueKind::signed_number, Access::read_write, "",
     "not offered by these cameras"},
    {ZEL_PARAM_READOUT_SPEED_INDEX, "READOUT_SPEED_INDEX", ValueKind::number, Access::read_write, "",
     "choice of the pixel clock"},
    {ZEL_PARAM_READOUT_SPEED, "READOUT_SPEED", ValueKind::number, Access::read_only, "Hz",
     "pixel clock of the READOUT_SPEED_INDEX written last"},
    {ZEL_PARAM_FRAME_TIME, "FRAME_TIME", ValueKind::number, Access::read_only, "us", "time from frame to frame"},
    {ZEL_PARAM_FRAME_RATE, "FRAME_RATE", ValueKind::number, Access::read_only, "frames/1000 s", "frame rate"},
    {ZEL_PARAM_COOLING_MODE, "COOLING_MODE", ValueKind::number, Access::read_write, "", "cooling"},
    {ZEL_PARAM_COOLING_SETPOINT, "COOLING_SETPOINT", ValueKind::signed_number, Access::read_write, "",
     "not offered by these cameras"},
    {ZEL_PARAM_TEMPERATURE, "TEMPERATURE", ValueKind::signed_number, Access::read_only, "0.1 C", "sensor temperature"},
    {ZEL_PARAM_QX_OPTION_MODE, "QX_OPTION_MODE", ValueKind::number, Access::read_write, "", "option mode"},
    {ZEL_PARAM_TURBO_MODE, "TURBO_MODE", ValueKind::number, Access::read_write, "", "turbo mode"},
    {ZEL_PARAM_XORIGIN, "XORIGIN", ValueKind::number, Access::read_write, "px", "left edge of the region of interest"},
    {ZEL_PARAM_YORIGIN, "YORIGIN", ValueKind::number, Access::read_write, "px", "top edge of the region of interest"},
    {ZEL_PARAM_XPIXELS, "XPIXELS", ValueKind::number, Access::read_write, "px", "width of the region of interest"},
    {ZEL_PARAM_YPIXELS, "YPIXELS", ValueKind::number, Access::read_write, "px", "height of the region of interest"},
    {ZEL_PARAM_XBIN, "XBIN", ValueKind::number, Access::read_write, "px", "horizontal binning"},
    {ZEL_PARAM_YBIN, "YBIN", ValueKind::number, Access::read_write, "px", "vertical binning"},
    {ZEL_PARAM_IMAGE_ACQUISTION_MODE, "IMAGE_ACQUISTION_MODE", ValueKind::number, Access::read_write, "",
     "not offered by these cameras"},
    {ZEL_PARAM_NAMED_VALUE, "NAMED_VALUE", ValueKind::number, Access::read_write, "", "not offered by these cameras"},
    {ZEL_PARAM_TAPS_INDEX, "TAPS_INDEX", ValueKind::number, Access::read_write, "", "choice of the number of taps"},
    {ZEL_PARAM_TAPS_VALUE, "TAPS_VALUE", ValueKind::number, Access::read_only, "",
     "taps of the TAPS_INDEX written last"},
    {ZEL_PARAM_RESERVED_1, "RESERVED_1", ValueKind::number, Access::read_write, "", "time-delay integration: triggers"},
    {ZEL_PARAM_RESERVED_2, "RESERVED_2", ValueKind::number, Access::read_write, "",
     "time-delay integration: line shifts"},
    {ZEL_PARAM_RESERVED_3, "RESERVED_3", ValueKind::number, Access::read_write, "",
     "time-delay integration: trim mode"},
    {ZEL_PARAM_RESERVED_4, "RESERVED_4", ValueKind::number, Access::read_write, "",
     "time-delay integration: trimmed lines"},
    {ZEL_PARAM_GLOBAL_CAMERA_NAME, "GLOBAL_CAMERA_NAME", ValueKind::text, Access::read_write, "",
     "name kept in the camera"},
    {ZEL_PARAM_CDS_GAIN_VALUE, "CDS_GAIN_VALUE", ValueKind::number, Access::read_only, "", "CDS gain"},
    {ZEL_PARAM_PIXEL_SIZE, "PIXEL_SIZE", ValueKind::number, Access::read_only, "", "size of a pixel on the sensor"},
    {ZEL_PARAM_BITS_PER_PIXEL, "BITS_PER_PIXEL", ValueKind::number, Access::read_only, "bit",
     "significant bits of a sample"},
    {ZEL_PARAM_BYTES_PER_PIXEL, "BYTES_PER_PIXEL", ValueKind::number, Access::read_only, "byte",
     "bytes of a stored sample"},
    {ZEL_PARAM_READOUT_TIME, "READOUT_TIME", ValueKind::number, Access::read_only, "us", "time to read a frame out"},
    {ZEL_PARAM_HW_TRIGGER_ACTIVE, "HW_TRIGGER_ACTIVE", ValueKind::number, Access::read_write, "",
     "1: the next start waits for the trigger input"},
    {ZEL_PARAM_HW_TRIG_SOURCE, "HW_TRIG_SOURCE", ValueKind::number, Access::read_write, "", "trigger input, 0 = off"},
    {ZEL_PARAM_HW_TRIG_POLARITY, "HW_TRIG_POLARITY", ValueKind::number, Access::read_write, "", "1 = active low"},
    {ZEL_PARAM_TAP_BALANCE_ENABLE, "TAP_BALANCE_ENABLE", ValueKind::number, Access::read_write, "",
     "1: taps are balanced"},
    {ZEL_PARAM_DROPPED_FRAMES, "DROPPED_FRAMES", ValueKind::number, Access::read_only, "frames",
     "frames the link lost since the start"},
    {ZEL_PARAM_EXPOSURE_TIME_US, "EXPOSURE_TIME_US", ValueKind::number, Access::read_write, "us", "exposure time"},
    {ZEL_PARAM_RESERVED_5, "RESERVED_5", ValueKind::number, Access::read_write, "",
     "time-delay integration: line shift time"},
    {ZEL_PARAM_RESERVED_6, "RESERVED_6", ValueKind::number, Access::read_write, "",
     "time-delay integration: line read time"},
    {ZEL_PARAM_RESERVED_7, "RESERVED_7", ValueKind::number, Access::read_write, "", "time-delay integration: AF"},
    {ZEL_PARAM_UPDATE_PARAMETERS, "UPDATE_PARAMETERS", ValueKind::number, Access::write_only, "",
     "any value: the camera recalculates its settings"},
    {ZEL_PARAM_FEATURE_LIST, "FEATURE_LIST", ValueKind::number, Access::read_only, "", "features switched on"},
    {ZEL_PARAM_FEATURE_VALID, "FEATURE_VALID", ValueKind::number, Access::read_only, "", "features the camera has"},
    {ZEL_PARAM_NUM_IMAGE_BUFFERS, "NUM_IMAGE_BUFFERS", ValueKind::number, Access::read_write, "frames",
     "pool size of the next start"},
    {ZEL_PARAM_COLOR_FILTER_TYPE, "COLOR_FILTER_TYPE", ValueKind::text, Access::read_only, "", "color filter array"},
    {ZEL_PARAM_COLOR_FILTER_PHASE, "COLOR_FILTER_PHASE", ValueKind::number, Access::read_only, "",
     "phase of the color filter array"},
    {ZEL_PARAM_COLOR_IR_FILTER_TYPE, "COLOR_IR_FILTER_TYPE", ValueKind::text, Access::read_only, "", "infrared filter"},
    {ZEL_PARAM_COLOR_CAMERA_CORRECTION_MATRIX, "COLOR_CAMERA_CORRECTION_MATRIX", ValueKind::matrix, Access::read_only,
     "", "color correction"},
    {ZEL_PARAM_CCM_OUTPUT_COLOR_SPACE, "CCM_OUTPUT_COLOR_SPACE", ValueKind::text, Access::read_only, "",
     "color space after the correction"},
    {ZEL_PARAM_DEFAULT_WHITE_BALANCE_MATRIX, "DEFAULT_WHITE_BALANCE_MATRIX", ValueKind::matrix, Access::read_only, "",
     "white balance"},
    {ZEL_PARAM_USB_ENABLE_LED, "USB_ENABLE_LED", ValueKind::number, Access::read_write, "", "indicator LED"},
    {ZEL_PARAM_MODEL_VALUE_1, "MODEL_VALUE_1", ValueKind::wide, Access::read_only, "", "model-dependent value"},
    {ZEL_PARAM_MODEL_VALUE_2, "MODEL_VALUE_2", ValueKind::wide, Access::read_only, "", "model-dependent value"},
    {ZEL_PARAM_MODEL_VALUE_3, "MODEL_VALUE_3", ValueKind::wide, Access::read_only, "", "model-dependent value"},
    {ZEL_PARAM_MODEL_VALUE_4, "MODEL_VALUE_4", ValueKind::wide, Access::read_only, "", "model-dependent value"},
    {ZEL_PARAM_MODEL_VALUE_5, "MODEL_VALUE_5", ValueKind::wide, Access::read_only, "", "model-dependent value"},
    {ZEL_PARAM_MODEL_VALUE_6, "MODEL_VALUE_6", ValueKind::wide, Access::read_only, "", "model-dependent value"},
};

}  // namespace detail

}  // namespace zel

#endif
