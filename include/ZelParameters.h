/// @file
/// Parameter, attribute and error ids, and the values that are wider than 32 bits.
///
/// A parameter is read with ZelCamera::GetParameter() and written with SetParameter(); its value is a 32-bit integer
/// unless it says otherwise. Texts are zero-terminated in a field of 32 bytes.
#ifndef ZEL_PARAMETERS_H
#define ZEL_PARAMETERS_H

/// @name Parameters
/// Those without a range here have one in the camera: ZEL_ATTR_MIN_VALUE, ZEL_ATTR_MAX_VALUE.
/// @{
#define ZEL_PARAM_CMD_ID_ATTR_ID 0          ///< ZelParamAttrId: selects what ATTR reads; write only
#define ZEL_PARAM_ATTR 1                    ///< the attribute selected last; read only
#define ZEL_PARAM_PROTOCOL 2                ///< protocol of the camera's control port
#define ZEL_PARAM_FW_VER 3                  ///< firmware version, a text; read only
#define ZEL_PARAM_HW_VER 4                  ///< hardware version; read only
#define ZEL_PARAM_HW_MODEL 5                ///< model, a text; read only
#define ZEL_PARAM_HW_SER_NUM 6              ///< serial number, a text; read only
#define ZEL_PARAM_CAMSTATE 7                ///< 0 = stopped, 2 = running
#define ZEL_PARAM_CAM_EXPOSURE_STATE 8      ///< state of the exposure; read only
#define ZEL_PARAM_CAM_TRIGGER_STATE 9       ///< state of the trigger; 1 = waits for triggers
#define ZEL_PARAM_EXPOSURE_UNIT 10          ///< of EXPOSURE_TIME: 0 = microseconds, 1 = milliseconds
#define ZEL_PARAM_EXPOSURE_TIME 11          ///< in EXPOSURE_UNIT, unsigned
#define ZEL_PARAM_ACTUAL_EXPOSURE_TIME 12   ///< exposure time in force, in microseconds; read only
#define ZEL_PARAM_HSIZE 13                  ///< width of the sensor in pixels; read only
#define ZEL_PARAM_VSIZE 14                  ///< height of the sensor in pixels; read only
#define ZEL_PARAM_ROI_BIN 15                ///< ZelRoiBin: region of interest and binning
#define ZEL_PARAM_FRAME_COUNT 16            ///< frames of a sequence; 0 = until stopped
#define ZEL_PARAM_CURRENT_FRAME 17          ///< number of the frame that is being taken; read only
#define ZEL_PARAM_OP_MODE 18                ///< operating mode
#define ZEL_PARAM_CDS_GAIN_INDEX 19         ///< choice of the gain of the sampling stage; CDS_GAIN_VALUE tells it
#define ZEL_PARAM_VGA_GAIN 20               ///< gain of the variable-gain amplifier, in the camera's steps
#define ZEL_PARAM_GAIN 21                   ///< the same value as VGA_GAIN
#define ZEL_PARAM_OPTICAL_BLACK_LEVEL 22    ///< black level in counts; part of every sample
#define ZEL_PARAM_PIXEL_OFFSET 23           ///< not offered
#define ZEL_PARAM_READOUT_SPEED_INDEX 24    ///< choice of the pixel clock: 0 = 20 MHz, 1 = 40 MHz
#define ZEL_PARAM_READOUT_SPEED 25          ///< pixel clock of the index written last, in hertz; read only
#define ZEL_PARAM_FRAME_TIME 26             ///< from frame to frame, in microseconds; read only
#define ZEL_PARAM_FRAME_RATE 27             ///< frames per 1000 seconds; read only
#define ZEL_PARAM_COOLING_MODE 28           ///< cooling: 0 = off
#define ZEL_PARAM_COOLING_SETPOINT 29       ///< not offered
#define ZEL_PARAM_TEMPERATURE 30            ///< sensor, in tenths of a degree Celsius; read only
#define ZEL_PARAM_QX_OPTION_MODE 31         ///< option mode
#define ZEL_PARAM_TURBO_MODE 32             ///< turbo mode
#define ZEL_PARAM_XORIGIN 33                ///< left edge of the region of interest, in sensor pixels
#define ZEL_PARAM_YORIGIN 34                ///< top edge of the region of interest, in sensor pixels
#define ZEL_PARAM_XPIXELS 35                ///< width of the region of interest, in sensor pixels
#define ZEL_PARAM_YPIXELS 36                ///< height of the region of interest, in sensor pixels
#define ZEL_PARAM_XBIN 37                   ///< horizontal binning factor
#define ZEL_PARAM_YBIN 38                   ///< vertical binning factor
#define ZEL_PARAM_IMAGE_ACQUISTION_MODE 39  ///< not offered; spelt so
#define ZEL_PARAM_NAMED_VALUE 40            ///< not offered
#define ZEL_PARAM_TAPS_INDEX 41             ///< choice of the number of taps: 0, 1, 2 = 1, 2, 4 taps
#define ZEL_PARAM_TAPS_VALUE 42             ///< taps of the TAPS_INDEX written last; read only
#define ZEL_PARAM_RESERVED_1 43             ///< time-delay integration: triggers
#define ZEL_PARAM_RESERVED_2 44             ///< time-delay integration: line shifts
#define ZEL_PARAM_RESERVED_3 45             ///< time-delay integration: trim mode
#define ZEL_PARAM_RESERVED_4 46             ///< time-delay integration: trimmed lines
#define ZEL_PARAM_GLOBAL_CAMERA_NAME 47     ///< name kept in the camera, a text; set it with SetCameraName()
#define ZEL_PARAM_CDS_GAIN_VALUE 48         ///< gain of the sampling stage; read only
#define ZEL_PARAM_PIXEL_SIZE 49             ///< size of a pixel on the sensor; read only
#define ZEL_PARAM_BITS_PER_PIXEL 50         ///< significant bits of a sample; read only
#define ZEL_PARAM_BYTES_PER_PIXEL 51        ///< bytes of a stored sample; read only
#define ZEL_PARAM_READOUT_TIME 52           ///< time to read a frame out, in microseconds; read only
#define ZEL_PARAM_HW_TRIGGER_ACTIVE 53      ///< 1: the next start waits for the trigger input
#define ZEL_PARAM_HW_TRIG_SOURCE 54         ///< trigger input; 0 = off
#define ZEL_PARAM_HW_TRIG_POLARITY 55       ///< 1 = active low
#define ZEL_PARAM_TAP_BALANCE_ENABLE 56     ///< 1: frames are corrected; reads 0 when there is nothing to correct with
#define ZEL_PARAM_DROPPED_FRAMES 57         ///< frames the link lost since the start; read only
#define ZEL_PARAM_EXPOSURE_TIME_US 58       ///< exposure time, always microseconds, unsigned
#define ZEL_PARAM_RESERVED_5 59             ///< time-delay integration: line shift time
#define ZEL_PARAM_RESERVED_6 60             ///< time-delay integration: line read time
#define ZEL_PARAM_RESERVED_7 61             ///< time-delay integration: AF
#define ZEL_PARAM_UPDATE_PARAMETERS 62      ///< write only: the camera recalculates its settings, at most 5 s
#define ZEL_PARAM_FEATURE_LIST 63           ///< features switched on; read only
#define ZEL_PARAM_FEATURE_VALID 64          ///< features the camera has; read only
#define ZEL_PARAM_NUM_IMAGE_BUFFERS 65      ///< pool size of the next start, in frames
#define ZEL_PARAM_COLOR_FILTER_TYPE 66      ///< color filter array, a text; empty without; read only
#define ZEL_PARAM_COLOR_FILTER_PHASE 67     ///< top-left filter: 1 red, 2 blue, 3, 4 green beside red, blue; 0 none
#define ZEL_PARAM_COLOR_IR_FILTER_TYPE 68   ///< infrared filter, a text; empty without; read only
#define ZEL_PARAM_COLOR_CAMERA_CORRECTION_MATRIX 69  ///< nine doubles, row by row; read only
#define ZEL_PARAM_CCM_OUTPUT_COLOR_SPACE 70        ///< where the matrices lead, a text: "CCIR 709" or "XYZ"; read only
#define ZEL_PARAM_DEFAULT_WHITE_BALANCE_MATRIX 71  ///< nine doubles, row by row; read only
#define ZEL_PARAM_USB_ENABLE_LED 72                ///< indicator LED, 0 or 1; needs a 4-byte buffer

#define ZEL_MAX_PARAMS 73  ///< number of parameters in the list above

/// @}

/// @name Model values
/// Six model-dependent 64-bit values, recognised when the camera is opened (all ones: the model has none).
/// @{
#define ZEL_PARAM_MODEL_VALUE_1 0x80000001u  ///< read only
#define ZEL_PARAM_MODEL_VALUE_2 0x80000002u  ///< read only
#define ZEL_PARAM_MODEL_VALUE_3 0x80000003u  ///< read only
#define ZEL_PARAM_MODEL_VALUE_4 0x80000004u  ///< read only
#define ZEL_PARAM_MODEL_VALUE_5 0x80000005u  ///< read only
#define ZEL_PARAM_MODEL_VALUE_6 0x80000006u  ///< read only

/// @}

/// @name Attributes
/// What is known of a parameter. Reading one takes two calls: SetParameter(ZEL_PARAM_CMD_ID_ATTR_ID, &selection), then
/// GetParameter(ZEL_PARAM_ATTR, size, buffer). The selection is one register of the camera object: two threads that
/// interleave such pairs get each other's answers. An answer is a 32-bit integer; a name is a text, and the bounds of
/// ZEL_PARAM_ROI_BIN are six integers, those of a matrix a double.
/// @{
#define ZEL_ATTR_NAME 0           ///< the parameter's name: 32 bytes, zero-terminated when shorter
#define ZEL_ATTR_DATA_TYPE 1      ///< ZEL_DATA_TYPE_...
#define ZEL_ATTR_ARRAY_COUNT 2    ///< values of that type
#define ZEL_ATTR_FLAGS 3          ///< 4 = read only in the camera, otherwise 0
#define ZEL_ATTR_MIN_VALUE 4      ///< smallest value
#define ZEL_ATTR_MAX_VALUE 5      ///< largest value
#define ZEL_ATTR_DEFAULT_VALUE 6  ///< value after switching on

/// @}

/// @name Data types
/// Codes that the attribute ZEL_ATTR_DATA_TYPE answers.
/// @{
#define ZEL_DATA_TYPE_INT32 3    ///< 32-bit integer
#define ZEL_DATA_TYPE_TEXT 5     ///< zero-terminated text
#define ZEL_DATA_TYPE_COUNTER 7  ///< unsigned 32-bit integer
#define ZEL_DATA_TYPE_TABLE_7 9  ///< text in the camera's table: the parameters that are texts and not about color
#define ZEL_DATA_TYPE_DOUBLE 10  ///< IEEE double

/// @}

/// @name Error codes
/// ZelCamera::GetLastError(). A transport may answer any of them; those without "for transports" are the SDK's, too.
/// @{
#define ZEL_NO_ERROR 0                      ///< the last operation of the transport succeeded
#define ZEL_ERROR_UNSUPPORTED 1             ///< not now: another thread is in a control operation, or ended this one
#define ZEL_ERROR_PARAMETER_UNSUPPORTED 2   ///< for transports: no such parameter
#define ZEL_ERROR_INVALID_ROI 3             ///< for transports: the region does not fit the sensor
#define ZEL_ERROR_INVALID_BINNING 4         ///< for transports: no such binning
#define ZEL_ERROR_INVALID_PARAMETER 5       ///< for transports: a value makes no sense
#define ZEL_ERROR_INVALID_PARAMETER_SIZE 6  ///< for transports: a value of another size was expected
#define ZEL_ERROR_PARAMETER_UNDERFLOW 7     ///< for transports: a value is too small
#define ZEL_ERROR_PARAMETER_OVERFLOW 8      ///< for transports: a value is too large
#define ZEL_ERROR_CAMERA_COMM_FAILURE 9     ///< the camera does not answer, is being closed, or has gone
#define ZEL_ERROR_CAMERA_INVALID_DATA 10    ///< the camera reports a size, bit depth or sample size that makes no sense
#define ZEL_ERROR_NULL_POINTER_SUPPLIED 11  ///< there is no transport or no camera object
#define ZEL_ERROR_CAMERA_INVALID_DATA_SIZE_OR_TYPE 12  ///< for transports: a reply of another size or type was expected
#define ZEL_ERROR_INVALID_NUMBER_OF_IMAGE_BUFFERS 13   ///< ZEL_PARAM_NUM_IMAGE_BUFFERS is negative
#define ZEL_ERROR_IMAGE_BUFFER_ALLOCATION_FAILURE 14   ///< the start's image pool does not fit into memory
#define ZEL_ERROR_TOO_MANY_IMAGE_BUFFERS 15            ///< for transports: it can not serve so many records
#define ZEL_ERROR_INVALID_BINNING_SELECTION 16         ///< color frames are not binned by both factors
#define ZEL_ERROR_UNKNOWN 17                           ///< for transports: any other reason

/// @}

/// Value of ZEL_PARAM_ROI_BIN: region of interest in sensor pixels, and binning factors.
struct ZelRoiBin {
    unsigned XOrigin;  ///< left edge of the region
    unsigned YOrigin;  ///< top edge of the region
    unsigned XPixels;  ///< width of the region
    unsigned YPixels;  ///< height of the region
    unsigned XBin;     ///< horizontal binning factor
    unsigned YBin;     ///< vertical binning factor
};

/// Value of ZEL_PARAM_CMD_ID_ATTR_ID.
struct ZelParamAttrId {
    int ParamID;  ///< ZEL_PARAM_...
    int AttrID;   ///< ZEL_ATTR_...
};

#endif
