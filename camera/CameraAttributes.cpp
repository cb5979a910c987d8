// What ZEL_PARAM_ATTR answers: one attribute of the parameter that was selected with ZEL_PARAM_CMD_ID_ATTR_ID.
#include <cstring>

#include "camera/RawValue.h"
#include "camera/ZelCameraControl.h"

namespace zel {

namespace {
constexpr const char* kGet = "ZelCameraControl::GetParameter";
constexpr const char* kSet = "ZelCameraControl::SetParameter";

constexpr std::size_t kNameSize = 32;
constexpr int kFlagWritable = 1;     // bit 0 of the camera's flags
constexpr int kPublicReadOnly = 4;   // of ZEL_ATTR_FLAGS
constexpr int kTableTypeDouble = 6;  // data types of the camera's records
constexpr int kTableTypeText = 7;

// Minimum, maximum or default of a row that says so.
void StoreBound(void* data, const FixedAttributes& attributes, unsigned value) {
    if (attributes.is_double) {
        const double number = value;
        std::memcpy(data, &number, sizeof number);
    } else {
        std::memcpy(data, &value, sizeof value);
    }
}

void StoreFixed(void* data, const FixedAttributes& attributes, int attribute) {
    switch (attribute) {
        case kTableDataType:
            StoreInt(data, attributes.data_type);
            break;
        case kTableArrayCount:
            StoreInt(data, attributes.array_count);
            break;
        case kTableMinimum:
            StoreBound(data, attributes, 0);
            break;
        case kTableMaximum:
            StoreBound(data, attributes, attributes.maximum);
            break;
        case kTableFlags:
            StoreInt(data, 0);
            break;
        case kTableDefault:
            StoreBound(data, attributes, static_cast<unsigned>(attributes.default_value));
            break;
        default:
            break;
    }
}

int PublicDataType(int table_type) {
    if (table_type == kTableTypeText) return ZEL_DATA_TYPE_TABLE_7;
    if (table_type == kTableTypeDouble) return ZEL_DATA_TYPE_DOUBLE;
    return ZEL_DATA_TYPE_INT32;
}

// 0 to 3 are aliases of 4 to 7.
int WithoutAlias(int attribute) { return attribute >= 0 && attribute <= 3 ? attribute + 4 : attribute; }

int BoundOf(const SyncTableAttributes& record, int attribute) {
    if (attribute == kTableMinimum) return record.minimum;
    return attribute == kTableMaximum ? record.maximum : record.default_value;
}
}  // namespace

bool ParameterHandlers::WriteAttributeSelection(ZelCameraControl& camera, const void* data) {
    ZelParamAttrId selection;
    std::memcpy(&selection, data, sizeof selection);
    camera.SelectAttribute(selection);
    return true;
}

bool ParameterHandlers::ReadAttribute(ZelCameraControl& camera, unsigned, void* data) {
    return camera.ReadAttribute(data);
}

void ZelCameraControl::SelectAttribute(const ZelParamAttrId& selection) {
    const ParameterRow* parameter = FindParameter(selection.ParamID);
    m_ZELParamIndex = selection.ParamID;
    m_ZELAttrID = selection.AttrID;
    m_SyncTableParamIndex = parameter ? parameter->translation : kParameterUnsupported;
    m_SyncTableAttrIndex = TranslateAttribute(selection.AttrID);
    ZEL_LOG(m_Logger, kLogTrace, kSet, "param_attr_id->ParamID:%d", selection.ParamID);
    ZEL_LOG(m_Logger, kLogTrace, kSet, "m_ParameterAttrTranslateTable[param_attr_id->ParamID]:%d",
            m_SyncTableParamIndex.load());
    LogSelection(kSet);
    if (!m_Camera) return;
    // The pair is written to the entry that the selector itself translates to. It has none, so the table refuses.
    unsigned char request[SyncTable::kBlockDataOffset + 8] = {};
    const int pair[2] = {m_SyncTableParamIndex, m_SyncTableAttrIndex};
    std::memcpy(request, pair, sizeof pair);
    std::memcpy(request + SyncTable::kBlockDataOffset, pair, sizeof pair);
    m_SyncTable->Set(kParameterUnsupported, request, static_cast<int>(sizeof pair));
}

void ZelCameraControl::LogSelection(const char* function_name) {
    ZEL_LOG(m_Logger, kLogTrace, function_name, "m_ZELParamIndex:%d  m_ZELAttrID:%d  m_SyncTableAttrIndex:%d",
            m_ZELParamIndex.load(), m_ZELAttrID.load(), m_SyncTableAttrIndex.load());
    ZEL_LOG(m_Logger, kLogTrace, function_name, "m_ZELParamInedx:%s, m_ZELAttrID:%s", ParameterName(m_ZELParamIndex),
            AttributeName(m_ZELAttrID));
}

bool ZelCameraControl::ReadAttribute(void* data) {
    const ParameterRow* parameter = FindParameter(m_ZELParamIndex);
    if (!parameter) return false;
    const int attribute = WithoutAlias(m_SyncTableAttrIndex);
    if (attribute == kTableName) {
        char name[kNameSize] = {};
        std::memcpy(name, parameter->name, strnlen(parameter->name, kNameSize));
        std::memcpy(data, name, sizeof name);
        return true;
    }
    const FixedAttributes* fixed = parameter->attributes;
    if (!fixed) return ReadTableAttribute(attribute, data);
    const bool bound = attribute == kTableMinimum || attribute == kTableMaximum || attribute == kTableDefault;
    if (fixed->per_field && bound) return ReadRoiAttribute(attribute, data);
    StoreFixed(data, *fixed, attribute);
    return true;
}

bool ZelCameraControl::ReadRoiAttribute(int attribute, void* data) {
    int values[6];
    for (int i = 0; i < 6; ++i) {
        SyncTableAttributes record{};
        if (!m_Camera || !m_SyncTable->GetAttribute(kRoiEntries[i], &record)) return false;
        values[i] = BoundOf(record, attribute);
    }
    std::memcpy(data, values, sizeof values);
    return true;
}

bool ZelCameraControl::ReadTableAttribute(int attribute, void* data) {
    LogSelection(kGet);
    SyncTableAttributes record{};
    if (!m_Camera || !m_SyncTable->GetAttribute(m_SyncTableParamIndex, &record)) return false;
    record.name[sizeof record.name - 1] = '\0';
    ZEL_LOG(m_Logger, kLogTrace, kGet, "node.index     :%d", record.index);
    ZEL_LOG(m_Logger, kLogTrace, kGet, "node.name      :%s", record.name);
    ZEL_LOG(m_Logger, kLogTrace, kGet, "node.data_type :%d", record.data_type);
    ZEL_LOG(m_Logger, kLogTrace, kGet, "node.flags     :%d", record.flags);
    ZEL_LOG(m_Logger, kLogTrace, kGet, "node.min       :%d", record.minimum);
    ZEL_LOG(m_Logger, kLogTrace, kGet, "node.max       :%d", record.maximum);
    ZEL_LOG(m_Logger, kLogTrace, kGet, "node.def       :%d", record.default_value);

    int value = 0;
    const char* line = nullptr;
    switch (attribute) {
        case kTableDataType:
            value = PublicDataType(record.data_type);
            line = "DATA_TYPE :%d";
            break;
        case kTableArrayCount:
            value = 1;
            line = "ARRAY_COUNT :%d";
            break;
        case kTableMinimum:
            value = record.minimum;
            line = "ATTRIBUTE - MIN_VALUE:%d";
            break;
        case kTableMaximum:
            value = record.maximum;
            line = "ATTRIBUTE - MAX_VALUE:%d";
            break;
        case kTableFlags:
            value = (record.flags & kFlagWritable) ? 0 : kPublicReadOnly;
            line = "ATTR_FLAGS :%d";
            break;
        case kTableDefault:
            value = record.default_value;
            line = "DEFAULT :%d";
            break;
        default:
            ZEL_LOG(m_Logger, kLogError, kGet, "***ERROR***:UNKNOWN :%d", attribute);
            return true;
    }
    ZEL_LOG(m_Logger, kLogTrace, kGet, line, value);
    StoreInt(data, value);
    return true;
}

}  // namespace zel
