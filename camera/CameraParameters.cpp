// Reading and writing parameters: the steps that all of them share. What a single parameter does stands in its row of
// ParameterTable.cpp.
#include <algorithm>
#include <cstring>
#include <tuple>

#include "camera/RawValue.h"
#include "camera/ZelCameraControl.h"

namespace zel {

namespace {
constexpr const char* kGet = "ZelCameraControl::GetParameter";
constexpr const char* kSet = "ZelCameraControl::SetParameter";

// The widest value is a matrix of nine doubles.
constexpr std::size_t kWidestValue = 72;

bool IsTriggerParameter(int param_id) {
    return param_id == ZEL_PARAM_HW_TRIG_POLARITY || param_id == ZEL_PARAM_HW_TRIGGER_ACTIVE ||
           param_id == ZEL_PARAM_HW_TRIG_SOURCE;
}
}  // namespace

bool ZelCameraControl::GetParameter(unsigned param_id, unsigned size, void* data) {
    const Operation entry(*this);
    if (!entry) return false;
    if (param_id > 0x80000000u) {
        const unsigned number = param_id - ZEL_PARAM_MODEL_VALUE_1;
        const CameraModel* const model = m_KnownModel;
        if (data && number < std::tuple_size_v<ModelValues>) {
            const std::uint64_t value = model ? model->values[number] : kNoModelValue;
            std::memcpy(data, &value, sizeof value);
        }
        return true;
    }
    // On purpose: 73 passes this test; it has no row and is refused below without a log line.
    if (param_id > ZEL_MAX_PARAMS) {
        ZEL_LOG(m_Logger, kLogError, kGet, "((param_id < 0) || (param_id > ZEL_MAX_PARAMS))");
        return false;
    }
    const ParameterRow* parameter = FindParameter(static_cast<int>(param_id));
    if (!parameter) return false;
    ZEL_LOG(m_Logger, kLogTrace, kGet, "%s", parameter->name);
    if (parameter->direct_read) return parameter->read(*this, size, data);

    const bool host = parameter->translation == kParameterHost;
    if (host) {
        ZEL_LOG(m_Logger, kLogTrace, kGet, "[[[ HOST SIDE PARAMETER ]]] %s", parameter->name);
    } else {
        // On purpose: the line names the parameter selected for attribute reads, not the one asked for.
        ZEL_LOG(m_Logger, kLogTrace, kGet, ">>> CAMERA SIDE PARAMETER <<< %s", ParameterName(m_ZELParamIndex));
    }
    if (!data && param_id != ZEL_PARAM_UPDATE_PARAMETERS) return false;
    if (parameter->read) return parameter->read(*this, size, data);
    return host || ReadTableParameter(parameter->translation, data);
}

bool ZelCameraControl::ReadTableParameter(int index, void* data) {
    if (!m_Camera) return false;
    if (SyncTableIsBlock(index)) {
        if (!m_SyncTable->Get(index, data)) return false;
    } else {
        int value = 0;
        if (!m_SyncTable->Get(index, &value)) return false;
        StoreInt(data, value);
    }
    ZEL_LOG(m_Logger, kLogTrace, kGet, "Returning true");
    return true;
}

int ZelCameraControl::GetParameterValue(unsigned param_id) {
    if (param_id > ZEL_MAX_PARAMS) return 0;
    // On purpose: a failed read answers the id, and so does one that succeeds without writing anything.
    unsigned char scratch[kWidestValue] = {};
    std::memcpy(scratch, &param_id, sizeof param_id);
    return GetParameter(param_id, 4, scratch) ? LoadInt(scratch) : static_cast<int>(param_id);
}

bool ZelCameraControl::SetParameterValue(int param_id, int value) {
    unsigned char scratch[kWidestValue] = {};
    std::memcpy(scratch, &value, sizeof value);
    return SetParameter(param_id, scratch);
}

bool ZelCameraControl::SetParameter(int param_id, const void* data) {
    const Operation entry(*this);
    if (!entry) return false;
    const ParameterRow* parameter = FindParameter(param_id);
    if (!parameter) return false;
    ZEL_LOG(m_Logger, kLogTrace, kSet, "%s", parameter->name);
    if (parameter->direct_write) return parameter->write(*this, data);
    const bool read_only = parameter->translation == kParameterHost && !parameter->write;
    if (!data && param_id != ZEL_PARAM_UPDATE_PARAMETERS && !read_only) return false;
    if (IsTriggerParameter(param_id)) {
        ZEL_LOG(m_Logger, kLogTrace, kSet, "%s", kLogSeparator);
        ZEL_LOG(m_Logger, kLogTrace, kSet, "%s :%d\n", parameter->name, LoadInt(data));
        ZEL_LOG(m_Logger, kLogTrace, kSet, "%s", kLogSeparator);
    }
    LogAttributeTranslations(kSet);
    if (parameter->write) return parameter->write(*this, data);
    if (read_only) {
        ZEL_LOG(m_Logger, kLogWarning, kSet, "%s is a read-only parameter!", parameter->name);
        return false;
    }
    // On purpose: a write to the camera is true even when the camera refused it; who must know reads it back.
    if (m_Camera) m_SyncTable->Set(parameter->translation, LoadInt(data));
    return true;
}

void ZelCameraControl::LogAttributeTranslations(const char* function_name) {
    for (int i = 0; i < kAttributeCount; ++i) {
        ZEL_LOG(m_Logger, kLogTrace, function_name, "m_ParameterAttrTranslateTable[%d]  :%d", i, TranslateAttribute(i));
    }
}

// Parameters of the camera's table with something of their own.

bool ZelCameraControl::ReadExposure(int& microseconds) {
    if (!m_Camera || !m_SyncTable->Get(EXPOSURE_TIME, &microseconds)) return false;
    m_ExposureTimeUs = static_cast<unsigned>(microseconds);
    return true;
}

bool ZelCameraControl::WriteExposure(int microseconds) {
    if (!m_Camera || !m_SyncTable->Set(EXPOSURE_TIME, microseconds)) return false;
    m_ExposureTimeUs = static_cast<unsigned>(microseconds);
    return true;
}

// Exposure times are unsigned throughout, as wide as the camera's entry.
bool ParameterHandlers::ReadExposureTime(ZelCameraControl& camera, unsigned, void* data) {
    int time = 0;
    if (!camera.ReadExposure(time)) return false;
    StoreInt(data, camera.m_ExposureUnit == 1 ? static_cast<int>(static_cast<unsigned>(time) / 1000) : time);
    ZEL_LOG(camera.m_Logger, kLogTrace, kGet, "Returning true");
    return true;
}

bool ParameterHandlers::WriteExposureTime(ZelCameraControl& camera, const void* data) {
    const std::uint64_t factor = camera.m_ExposureUnit == 1 ? 1000 : 1;
    const std::uint64_t microseconds = static_cast<unsigned>(LoadInt(data)) * factor;
    camera.WriteExposure(static_cast<int>(std::min<std::uint64_t>(microseconds, UINT32_MAX)));
    return true;
}

bool ParameterHandlers::ReadExposureTimeUs(ZelCameraControl& camera, unsigned, void* data) {
    int microseconds = 0;
    if (!camera.ReadExposure(microseconds) || !data) {
        ZEL_LOG(camera.m_Logger, kLogError, kGet, "ZEL_PARAM_EXPOSURE_TIME_US - failed");
        return false;
    }
    std::memcpy(data, &microseconds, sizeof microseconds);
    ZEL_LOG(camera.m_Logger, kLogTrace, kGet, "ZEL_PARAM_EXPOSURE_TIME_US - returning true (%d us)", microseconds);
    return true;
}

bool ParameterHandlers::WriteExposureTimeUs(ZelCameraControl& camera, const void* data) {
    ZEL_LOG(camera.m_Logger, kLogTrace, kSet, "ZEL_PARAM_EXPOSURE_TIME_US - data:%s", PointerText(data).text);
    if (!data) {
        ZEL_LOG(camera.m_Logger, kLogError, kSet, "ZEL_PARAM_EXPOSURE_TIME_US - data is 0");
        return false;
    }
    if (!camera.WriteExposure(LoadInt(data))) {
        ZEL_LOG(camera.m_Logger, kLogError, kSet, "ZEL_PARAM_EXPOSURE_TIME_US - Set(EXPOSURE_TIME) failed");
        return false;
    }
    ZEL_LOG(camera.m_Logger, kLogTrace, kSet, "ZEL_PARAM_EXPOSURE_TIME_US - returning true");
    return true;
}

bool ParameterHandlers::ReadRoiBin(ZelCameraControl& camera, unsigned, void* data) {
    int fields[6];
    std::memcpy(fields, data, sizeof fields);  // one that can't be read stays as it is
    if (camera.m_Camera) {
        for (int i = 0; i < 6; ++i) {
            int value = 0;
            if (camera.m_SyncTable->Get(kRoiEntries[i], &value)) fields[i] = value;
        }
    }
    std::memcpy(data, fields, sizeof fields);
    return true;
}

bool ParameterHandlers::WriteRoiBin(ZelCameraControl& camera, const void* data) {
    int fields[6];
    std::memcpy(fields, data, sizeof fields);
    if (camera.m_Camera) {
        for (int i = 0; i < 6; ++i) camera.m_SyncTable->Set(kRoiEntries[i], fields[i]);
    }
    ZEL_LOG(camera.m_Logger, kLogTrace, kSet, "zel_roi_bin->XBin:%d zel_roi_bin->YBin:%d", fields[4], fields[5]);
    return true;
}

// The clock and the number of taps follow from the index written last, without asking the camera.
bool ParameterHandlers::ReadReadoutSpeed(ZelCameraControl& camera, unsigned, void* data) {
    const int index = camera.m_ReadoutSpeedIndex;
    if (index != 0 && index != 1) return camera.ReadTableParameter(CLOCK_SPEED_VAL, data);
    const int hertz = index == 0 ? 20000000 : 40000000;
    std::memcpy(data, &hertz, sizeof hertz);
    return true;
}

bool ParameterHandlers::ReadTapsValue(ZelCameraControl& camera, unsigned, void* data) {
    const int index = camera.m_TapsIndex;
    if (index < 0 || index > 2) return camera.ReadTableParameter(SENSOR_TAPS_VAL, data);
    const int taps = 1 << index;
    std::memcpy(data, &taps, sizeof taps);
    return true;
}

bool ParameterHandlers::WriteReadoutSpeedIndex(ZelCameraControl& camera, const void* data) {
    if (camera.m_Camera) camera.m_SyncTable->Set(CLOCK_SPEED_IDX, LoadInt(data));
    camera.m_ReadoutSpeedIndex = LoadInt(data);
    return true;
}

bool ParameterHandlers::WriteTapsIndex(ZelCameraControl& camera, const void* data) {
    if (camera.m_Camera) camera.m_SyncTable->Set(SENSOR_TAPS_IDX, LoadInt(data));
    camera.m_TapsIndex = LoadInt(data);
    return true;
}

bool ParameterHandlers::WriteFrameCount(ZelCameraControl& camera, const void* data) {
    if (!camera.m_Camera) return true;
    camera.m_SyncTable->Set(FRAME_COUNT, LoadInt(data));
    camera.m_Camera->SetFrameCount(LoadInt(data));
    return true;
}

bool ParameterHandlers::WriteGain(ZelCameraControl& camera, const void* data) {
    if (camera.m_Camera) camera.m_SyncTable->Set(VGA_GAIN, LoadInt(data));
    camera.m_TapBalance.SetGain(static_cast<float>(LoadInt(data)));
    return true;
}

bool ParameterHandlers::WriteHwTriggerSource(ZelCameraControl& camera, const void* data) {
    camera.m_HWTriggerSource = LoadInt(data);
    if (camera.m_Camera) camera.m_SyncTable->Set(HW_TRIG_SOURCE, LoadInt(data));
    return true;
}

}  // namespace zel
