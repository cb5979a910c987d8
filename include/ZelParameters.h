// Parameter, attribute and error ids, and the values that are wider than 32 bits.
//
// A parameter is read with ZelCamera::GetParameter() and written with SetParameter(); its value is a 32-bit integer
// unless a comment says otherwise. Texts are zero-terminated in a field of 32 bytes.
#ifndef ZEL_PARAMETERS_H
#define ZEL_PARAMETERS_H

#define ZEL_PARAM_CMD_ID_ATTR_ID 0  // ZelParamAttrId: selects the attribute that ATTR reads
#define ZEL_PARAM_ATTR 1            // the attribute selected last
#define ZEL_PARAM_PROTOCOL 2
#define ZEL_PARAM_FW_VER 3
#define ZEL_PARAM_HW_VER 4
#define ZEL_PARAM_HW_MODEL 5
#define ZEL_PARAM_HW_SER_NUM 6
#define ZEL_PARAM_CAMSTATE 7  // 0 = stopped, 2 = running
#define ZEL_PARAM_CAM_EXPOSURE_STATE 8
#define ZEL_PARAM_CAM_TRIGGER_STATE 9
#define ZEL_PARAM_EXPOSURE_UNIT 10  // 0 = microseconds, 1 = milliseconds, for EXPOSURE_TIME
#define ZEL_PARAM_EXPOSURE_TIME 11  // in EXPOSURE_UNIT
#define ZEL_PARAM_ACTUAL_EXPOSURE_TIME 12
#define ZEL_PARAM_HSIZE 13
#define ZEL_PARAM_VSIZE 14
#define ZEL_PARAM_ROI_BIN 15      // ZelRoiBin
#define ZEL_PARAM_FRAME_COUNT 16  // frames of a sequence; 0 = until stopped
#define ZEL_PARAM_CURRENT_FRAME 17
#define ZEL_PARAM_OP_MODE 18
#define ZEL_PARAM_CDS_GAIN_INDEX 19
#define ZEL_PARAM_VGA_GAIN 20
#define ZEL_PARAM_GAIN 21
#define ZEL_PARAM_OPTICAL_BLACK_LEVEL 22
#define ZEL_PARAM_PIXEL_OFFSET 23
#define ZEL_PARAM_READOUT_SPEED_INDEX 24
#define ZEL_PARAM_READOUT_SPEED 25  // pixel clock in hertz
#define ZEL_PARAM_FRAME_TIME 26     // microseconds
#define ZEL_PARAM_FRAME_RATE 27     // frames per 1000 seconds
#define ZEL_PARAM_COOLING_MODE 28
#define ZEL_PARAM_COOLING_SETPOINT 29
#define ZEL_PARAM_TEMPERATURE 30  // sensor, in tenths of a degree Celsius
#define ZEL_PARAM_QX_OPTION_MODE 31
#define ZEL_PARAM_TURBO_MODE 32
#define ZEL_PARAM_XORIGIN 33
#define ZEL_PARAM_YORIGIN 34
#define ZEL_PARAM_XPIXELS 35
#define ZEL_PARAM_YPIXELS 36
#define ZEL_PARAM_XBIN 37
#define ZEL_PARAM_YBIN 38
#define ZEL_PARAM_IMAGE_ACQUISTION_MODE 39  // spelt so
#define ZEL_PARAM_NAMED_VALUE 40
#define ZEL_PARAM_TAPS_INDEX 41
#define ZEL_PARAM_TAPS_VALUE 42
#define ZEL_PARAM_RESERVED_1 43
#define ZEL_PARAM_RESERVED_2 44
#define ZEL_PARAM_RESERVED_3 45
#define ZEL_PARAM_RESERVED_4 46
#define ZEL_PARAM_GLOBAL_CAMERA_NAME 47
#define ZEL_PARAM_CDS_GAIN_VALUE 48
#define ZEL_PARAM_PIXEL_SIZE 49
#define ZEL_PARAM_BITS_PER_PIXEL 50
#define ZEL_PARAM_BYTES_PER_PIXEL 51
#define ZEL_PARAM_READOUT_TIME 52       // microseconds
#define ZEL_PARAM_HW_TRIGGER_ACTIVE 53  // 1: the next start waits for the trigger input
#define ZEL_PARAM_HW_TRIG_SOURCE 54     // 0 = off
#define ZEL_PARAM_HW_TRIG_POLARITY 55   // 1 = active low
#define ZEL_PARAM_TAP_BALANCE_ENABLE 56
#define ZEL_PARAM_DROPPED_FRAMES 57    // frames the link lost since the start
#define ZEL_PARAM_EXPOSURE_TIME_US 58  // always microseconds
#define ZEL_PARAM_RESERVED_5 59
#define ZEL_PARAM_RESERVED_6 60
#define ZEL_PARAM_RESERVED_7 61
#define ZEL_PARAM_UPDATE_PARAMETERS 62  // write only: the camera recalculates its settings
#define ZEL_PARAM_FEATURE_LIST 63
#define ZEL_PARAM_FEATURE_VALID 64
#define ZEL_PARAM_NUM_IMAGE_BUFFERS 65  // pool size of the next start
#define ZEL_PARAM_COLOR_FILTER_TYPE 66
#define ZEL_PARAM_COLOR_FILTER_PHASE 67
#define ZEL_PARAM_COLOR_IR_FILTER_TYPE 68
#define ZEL_PARAM_COLOR_CAMERA_CORRECTION_MATRIX 69  // nine doubles, row by row
#define ZEL_PARAM_CCM_OUTPUT_COLOR_SPACE 70
#define ZEL_PARAM_DEFAULT_WHITE_BALANCE_MATRIX 71  // nine doubles, row by row
#define ZEL_PARAM_USB_ENABLE_LED 72                // needs a 4-byte buffer

#define ZEL_MAX_PARAMS 73

// Six model-dependent 64-bit values, recognised when the camera is opened (all ones: the model has none).
#define ZEL_PARAM_MODEL_VALUE_1 0x80000001u
#define ZEL_PARAM_MODEL_VALUE_2 0x80000002u
#define ZEL_PARAM_MODEL_VALUE_3 0x80000003u
#define ZEL_PARAM_MODEL_VALUE_4 0x80000004u
#define ZEL_PARAM_MODEL_VALUE_5 0x80000005u
#define ZEL_PARAM_MODEL_VALUE_6 0x80000006u

// Attributes of a parameter. Reading one takes two calls: SetParameter(ZEL_PARAM_CMD_ID_ATTR_ID, &selection), then
// GetParameter(ZEL_PARAM_ATTR, size, buffer). The selection is one register of the camera object: two threads that
// interleave such pairs get each other's answers.
#define ZEL_ATTR_NAME 0
#define ZEL_ATTR_DATA_TYPE 1
#define ZEL_ATTR_ARRAY_COUNT 2
#define ZEL_ATTR_FLAGS 3
#define ZEL_ATTR_MIN_VALUE 4
#define ZEL_ATTR_MAX_VALUE 5
#define ZEL_ATTR_DEFAULT_VALUE 6

// Data type codes that the attribute ZEL_ATTR_DATA_TYPE answers.
#define ZEL_DATA_TYPE_INT32 3
#define ZEL_DATA_TYPE_TEXT 5
#define ZEL_DATA_TYPE_COUNTER 7
#define ZEL_DATA_TYPE_TABLE_7 9
#define ZEL_DATA_TYPE_DOUBLE 10

// Error codes: ZelCamera::GetLastError().
#define ZEL_NO_ERROR 0
#define ZEL_ERROR_UNSUPPORTED 1
#define ZEL_ERROR_PARAMETER_UNSUPPORTED 2
#define ZEL_ERROR_INVALID_ROI 3
#define ZEL_ERROR_INVALID_BINNING 4
#define ZEL_ERROR_INVALID_PARAMETER 5
#define ZEL_ERROR_INVALID_PARAMETER_SIZE 6
#define ZEL_ERROR_PARAMETER_UNDERFLOW 7
#define ZEL_ERROR_PARAMETER_OVERFLOW 8
#define ZEL_ERROR_CAMERA_COMM_FAILURE 9
#define ZEL_ERROR_CAMERA_INVALID_DATA 10
#define ZEL_ERROR_NULL_POINTER_SUPPLIED 11
#define ZEL_ERROR_CAMERA_INVALID_DATA_SIZE_OR_TYPE 12
#define ZEL_ERROR_INVALID_NUMBER_OF_IMAGE_BUFFERS 13
#define ZEL_ERROR_IMAGE_BUFFER_ALLOCATION_FAILURE 14
#define ZEL_ERROR_TOO_MANY_IMAGE_BUFFERS 15
#define ZEL_ERROR_INVALID_BINNING_SELECTION 16
#define ZEL_ERROR_UNKNOWN 17

// Value of ZEL_PARAM_ROI_BIN: region of interest in sensor pixels, and binning factors.
struct ZelRoiBin {
    unsigned XOrigin;
    unsigned YOrigin;
    unsigned XPixels;
    unsigned YPixels;
    unsigned XBin;
    unsigned YBin;
};

// Value of ZEL_PARAM_CMD_ID_ATTR_ID.
struct ZelParamAttrId {
    int ParamID;  // ZEL_PARAM_...
    int AttrID;   // ZEL_ATTR_...
};

#endif
