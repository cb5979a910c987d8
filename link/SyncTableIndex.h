// The entries of a camera's parameter table: index on the wire, and name in every log line.
#ifndef LINK_SYNCTABLEINDEX_H
#define LINK_SYNCTABLEINDEX_H

namespace zel {

// X(name), in index order, 0 to 88.
#define ZEL_SYNC_TABLE_ENTRIES(X) \
    X(HOST_PORT_PROTOCOL)         \
    X(FW_VERSION)                 \
    X(HW_VERSION)                 \
    X(HW_MODEL)                   \
    X(SERIAL_NUMBER)              \
    X(CAMERA_NAME)                \
    X(CAMERA_STATE)               \
    X(EXPOSURE_STATE)             \
    X(TRIGGER_STATE)              \
    X(EXPOSURE_TIME)              \
    X(EXPOSURE_ACTUAL)            \
    X(CLOCK_SPEED_IDX)            \
    X(CLOCK_SPEED_VAL)            \
    X(H_SIZE)                     \
    X(V_SIZE)                     \
    X(H_BIN)                      \
    X(V_BIN)                      \
    X(H_ROI_ORIGIN)               \
    X(H_ROI_PIXELS)               \
    X(V_ROI_ORIGIN)               \
    X(V_ROI_PIXELS)               \
    X(FRAME_COUNT)                \
    X(CURRENT_FRAME)              \
    X(OP_MODE)                    \
    X(CDS_GAIN_IDX)               \
    X(CDS_GAIN_VAL)               \
    X(VGA_GAIN)                   \
    X(OB_LEVEL)                   \
    X(COOLING_MODE)               \
    X(SENSOR_TEMP)                \
    X(QX_OPTION_MODE)             \
    X(TDI_TRIGGERS)               \
    X(TDI_LINESHIFTS)             \
    X(TDI_TRIM_MODE)              \
    X(TDI_TRIM_LINES)             \
    X(SENSOR_TAPS_IDX)            \
    X(SENSOR_TAPS_VAL)            \
    X(CALC_STATE)                 \
    X(TURBO_MODE)                 \
    X(PIXEL_SIZE)                 \
    X(BITS_PER_PIXEL)             \
    X(BYTES_PER_PIXEL)            \
    X(FRAME_RATE)                 \
    X(FRAME_TIME)                 \
    X(READOUT_TIME)               \
    X(CAMERA_RESET)               \
    X(SVN_REVISION)               \
    X(HW_TRIG_SOURCE)             \
    X(HW_TRIG_POLARITY)           \
    X(SW_TRIG)                    \
    X(FPGA_INHIBIT)               \
    X(H_RO_PIXELS)                \
    X(IMAGE_METADATA)             \
    X(TDI_LINE_SHIFT_TIME)        \
    X(TDI_LINE_READ_TIME)         \
    X(V_RO_LINES)                 \
    X(TDI_AF)                     \
    X(HW_SKU)                     \
    X(FEATURESVALID)              \
    X(FEATURELIST)                \
    X(RESERVED_NEW_A)             \
    X(RESERVED_NEW_B)             \
    X(RESERVED_NEW_C)             \
    X(SET_AMP_FILTER)             \
    X(SET_AVG_MODE)               \
    X(SET_STROBE_DELAY)           \
    X(TDI_EXP_COR)                \
    X(CCM_1_1)                    \
    X(CCM_1_2)                    \
    X(CCM_1_3)                    \
    X(CCM_2_1)                    \
    X(CCM_2_2)                    \
    X(CCM_2_3)                    \
    X(CCM_3_1)                    \
    X(CCM_3_2)                    \
    X(CCM_3_3)                    \
    X(IR_FILTER)                  \
    X(CFA_TYPE)                   \
    X(CFA_PHASE)                  \
    X(CCM_OUTPUT_COLOR_SPACE)     \
    X(DWB_1_1)                    \
    X(DWB_1_2)                    \
    X(DWB_1_3)                    \
    X(DWB_2_1)                    \
    X(DWB_2_2)                    \
    X(DWB_2_3)                    \
    X(DWB_3_1)                    \
    X(DWB_3_2)                    \
    X(DWB_3_3)

enum SyncTableIndex : int {
#define ZEL_SYNC_TABLE_ENUMERATOR(name) name,
    ZEL_SYNC_TABLE_ENTRIES(ZEL_SYNC_TABLE_ENUMERATOR)
#undef ZEL_SYNC_TABLE_ENUMERATOR
        SYNC_TABLE_SELECT_MAX
};
static_assert(SYNC_TABLE_SELECT_MAX == 89 && CFA_PHASE == 78 && DWB_3_3 == 88, "the numbers go over the wire");

// The entry's name; "UNKNOWN" for an index outside 0 to 88.
const char* SyncTableName(int index);

// Whether the entry is read as a block of bytes (up to 32) instead of one 32-bit value. On purpose: CFA_PHASE and
// HW_VERSION are values although their neighbours are blocks.
constexpr bool SyncTableIsBlock(int index) {
    return index == FW_VERSION || (index >= HW_MODEL && index <= CAMERA_NAME) ||
           (index >= CCM_1_1 && index <= CFA_TYPE) || (index >= CCM_OUTPUT_COLOR_SPACE && index <= DWB_3_3);
}

// Commands and exception codes on the wire.
enum SyncTableCommand : int {
    SYNC_TABLE_CMD_GET = 77,
    SYNC_TABLE_CMD_SET = 78,
    SYNC_TABLE_CMD_UNREAD_COUNT = 79,
    SYNC_TABLE_CMD_UNREAD_INDICES = 80,
    SYNC_TABLE_CMD_GET_ATTRIBUTES = 81,
    SYNC_TABLE_CMD_GET_DATAFLAGS = 82
};

enum SyncTableException : int {
    kExceptionChange = 0x11,
    kExceptionIncompleteData = 0x12,
    kExceptionWriteToConst = 0x13,
    kExceptionBadIndex = 0x14,
    kExceptionWriteToReadOnly = 0x15,
    kExceptionRequiresCalc = 0x16
};

// The attribute record of an entry, little-endian on the wire:
//
//    offset  size  field
//    0       4     index
//    4       32    name, zero-terminated
//    36      4     data type
//    40      4     flags (bit 0: the application may write the entry)
//    44      4     minimum, signed
//    48      4     maximum, signed
//    52      4     default, signed
struct SyncTableAttributes {
    int index;
    char name[32];
    int data_type;
    int flags;
    int minimum;
    int maximum;
    int default_value;
};
static_assert(sizeof(SyncTableAttributes) == 56, "the record is copied from the wire as it stands");

}  // namespace zel

#endif
