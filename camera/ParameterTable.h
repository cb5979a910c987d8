// The public parameters: one row says everything about each.
#ifndef CAMERA_PARAMETERTABLE_H
#define CAMERA_PARAMETERTABLE_H

#include "include/ZelParameters.h"
#include "link/SyncTableIndex.h"

namespace zel {

class ZelCameraControl;

// Translations that are no entry of the camera's parameter table.
inline constexpr int kParameterUnsupported = -1;
inline constexpr int kParameterHost = -2;

// The entries behind the fields of ZelRoiBin, in the order in which they are written and read.
inline constexpr int kRoiEntries[6] = {H_ROI_ORIGIN, V_ROI_ORIGIN, H_ROI_PIXELS, V_ROI_PIXELS, H_BIN, V_BIN};

// Attributes of a parameter that the camera is not asked about.
struct FixedAttributes {
    int data_type;
    int array_count;
    unsigned maximum;  // the minimum is 0
    int default_value;
    bool is_double = false;  // minimum, maximum and default are written as 64-bit doubles
    bool per_field = false;  // minimum, maximum and default are those of the six region and binning entries
};

struct ParameterRow {
    // Readers and writers answer what GetParameter and SetParameter answer. Without one, a camera-side parameter is
    // exchanged with its table entry, a host-side one reads as nothing and refuses writes.
    using Reader = bool (*)(ZelCameraControl& camera, unsigned size, void* data);
    using Writer = bool (*)(ZelCameraControl& camera, const void* data);

    const char* name;
    int translation;  // SyncTableIndex, kParameterUnsupported or kParameterHost
    Reader read = nullptr;
    Writer write = nullptr;
    const FixedAttributes* attributes = nullptr;  // null: the camera is asked
    // Answered before the common log lines and checks of a read or a write; its handler checks `data` itself.
    bool direct_read = false;
    bool direct_write = false;
};

// Stands above and below the lines of the trigger parameters.
inline constexpr const char* kLogSeparator = "--------------------------------------------------------";

// The row of a parameter id; null outside 0 to ZEL_MAX_PARAMS - 1.
const ParameterRow* FindParameter(int param_id);

// Name of a parameter or attribute id for log lines; "" outside the tables.
const char* ParameterName(int param_id);
const char* AttributeName(int attribute_id);

// The translation of an attribute id, kParameterUnsupported outside 0 to 6.
inline constexpr int kAttributeCount = 7;
int TranslateAttribute(int attribute_id);

// Translated attribute ids.
enum TableAttribute : int {
    kTableDataType = 4,
    kTableArrayCount = 5,
    kTableMinimum = 6,
    kTableMaximum = 7,
    kTableName = 8,
    kTableFlags = 9,
    kTableDefault = 10
};

// The handlers that rows refer to.
struct ParameterHandlers {
    static bool ReadAttribute(ZelCameraControl& camera, unsigned size, void* data);
    static bool ReadExposureUnit(ZelCameraControl& camera, unsigned size, void* data);
    static bool ReadExposureTime(ZelCameraControl& camera, unsigned size, void* data);
    static bool ReadExposureTimeUs(ZelCameraControl& camera, unsigned size, void* data);
    static bool ReadRoiBin(ZelCameraControl& camera, unsigned size, void* data);
    static bool ReadReadoutSpeed(ZelCameraControl& camera, unsigned size, void* data);
    static bool ReadTapsValue(ZelCameraControl& camera, unsigned size, void* data);
    static bool ReadHwTriggerActive(ZelCameraControl& camera, unsigned size, void* data);
    static bool ReadTapBalanceEnable(ZelCameraControl& camera, unsigned size, void* data);
    static bool ReadDroppedFrames(ZelCameraControl& camera, unsigned size, void* data);
    static bool ReadUpdateParameters(ZelCameraControl& camera, unsigned size, void* data);
    static bool ReadNumImageBuffers(ZelCameraControl& camera, unsigned size, void* data);
    template <int Index>
    static bool ReadTextEntry(ZelCameraControl& camera, unsigned size, void* data);
    static bool ReadColorFilterPhase(ZelCameraControl& camera, unsigned size, void* data);
    static bool ReadCorrectionMatrix(ZelCameraControl& camera, unsigned size, void* data);
    static bool ReadWhiteBalanceMatrix(ZelCameraControl& camera, unsigned size, void* data);
    static bool ReadLed(ZelCameraControl& camera, unsigned size, void* data);

    static bool WriteAttributeSelection(ZelCameraControl& camera, const void* data);
    static bool WriteExposureUnit(ZelCameraControl& camera, const void* data);
    static bool WriteExposureTime(ZelCameraControl& camera, const void* data);
    static bool WriteExposureTimeUs(ZelCameraControl& camera, const void* data);
    static bool WriteRoiBin(ZelCameraControl& camera, const void* data);
    static bool WriteFrameCount(ZelCameraControl& camera, const void* data);
    static bool WriteGain(ZelCameraControl& camera, const void* data);
    static bool WriteReadoutSpeedIndex(ZelCameraControl& camera, const void* data);
    static bool WriteTapsIndex(ZelCameraControl& camera, const void* data);
    static bool WriteHwTriggerActive(ZelCameraControl& camera, const void* data);
    static bool WriteHwTriggerSource(ZelCameraControl& camera, const void* data);
    static bool WriteTapBalanceEnable(ZelCameraControl& camera, const void* data);
    static bool WriteUpdateParameters(ZelCameraControl& camera, const void* data);
    static bool WriteNumImageBuffers(ZelCameraControl& camera, const void* data);
    static bool WriteLed(ZelCameraControl& camera, const void* data);
};

}  // namespace zel

#endif
