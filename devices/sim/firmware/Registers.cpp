#include "devices/sim/firmware/Registers.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "devices/sim/firmware/ColorMatrices.h"

namespace zel::sim {

void AppendLittle32(std::vector<std::uint8_t>& to, std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) to.push_back(static_cast<std::uint8_t>(value >> shift));
}

std::uint32_t Little32(std::span<const std::uint8_t> bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4 && i < bytes.size(); ++i) value |= std::uint32_t{bytes[i]} << (8 * i);
    return value;
}

Registers::Registers(const CameraModel& model) : m_Rows(RegisterRows()), m_Color(model.Color()) {
    FitToModel(model);
    Reset();
}

void Registers::Bound(int index, int minimum, int maximum, int default_value) {
    RegisterRow& row = m_Rows[static_cast<unsigned>(index)];
    row.minimum = minimum;
    row.maximum = maximum;
    row.default_value = default_value;
}

void Registers::FitToModel(const CameraModel& model) {
    const int w = static_cast<int>(model.width);
    const int h = static_cast<int>(model.height);
    Bound(H_SIZE, w, w, w);
    Bound(V_SIZE, h, h, h);
    Bound(H_RO_PIXELS, w, w, w);
    Bound(V_RO_LINES, h, h, h);
    Bound(H_ROI_ORIGIN, 0, w - 1, 0);
    Bound(V_ROI_ORIGIN, 0, h - 1, 0);
    Bound(H_ROI_PIXELS, 1, w, w);
    Bound(V_ROI_PIXELS, 1, h, h);
    Bound(SENSOR_TAPS_IDX, 0, model.largest_taps_idx, model.default_taps_idx);
    Bound(BITS_PER_PIXEL, model.bits, model.bits, model.bits);
    m_Rows[EXPOSURE_TIME].default_value = model.exposure_us;
    m_Rows[EXPOSURE_ACTUAL].default_value = model.exposure_us;
    m_Rows[VGA_GAIN].default_value = model.gain;
    Bound(PIXEL_SIZE, model.pixel_size_nm, model.pixel_size_nm, model.pixel_size_nm);
    Bound(CFA_PHASE, model.cfa_phase, model.cfa_phase, model.cfa_phase);
    StoreText(FW_VERSION, "2.10");
    StoreText(HW_MODEL, model.model_text);
    StoreText(SERIAL_NUMBER, model.serial);
    StoreText(CAMERA_NAME, model.name);
    StoreText(IR_FILTER, "IR650");
    StoreText(CFA_TYPE, "Bayer");
    StoreText(CCM_OUTPUT_COLOR_SPACE, model.color_space);
}

void Registers::Reset() {
    for (int i = 0; i < SYNC_TABLE_SELECT_MAX; ++i) {
        Cell& cell = m_Values[static_cast<unsigned>(i)];
        cell.word = Row(i).default_value;
        cell.number = static_cast<double>(Row(i).default_value);
    }
    const ColorMatrices matrices = MakeColorMatrices(Text(CCM_OUTPUT_COLOR_SPACE));
    for (int i = 0; i < 9; ++i) {
        const auto row = static_cast<std::size_t>(i / 3);
        const auto column = static_cast<std::size_t>(i % 3);
        StoreNumber(CCM_1_1 + i, matrices.correction[row][column]);
        StoreNumber(DWB_1_1 + i, matrices.white_balance[row][column]);
    }
    m_Unread.set();
}

bool Registers::Has(int index) const {
    return index >= 0 && index < SYNC_TABLE_SELECT_MAX && (m_Color || !Row(index).color_only);
}

void Registers::Store(int index, int value) {
    Cell& cell = m_Values[static_cast<unsigned>(index)];
    if (cell.word != value) m_Unread.set(static_cast<unsigned>(index));
    cell.word = value;
}

void Registers::StoreText(int index, const std::string& text) {
    Cell& cell = m_Values[static_cast<unsigned>(index)];
    cell.text.fill(0);
    std::copy_n(text.begin(), std::min<std::size_t>(text.size(), kTextCapacity - 1), cell.text.begin());
    m_Unread.set(static_cast<unsigned>(index));
}

void Registers::StoreNumber(int index, double number) {
    m_Values[static_cast<unsigned>(index)].number = number;
    m_Unread.set(static_cast<unsigned>(index));
}

int Registers::Write(int index, std::span<const std::uint8_t> data) {
    if (!Has(index)) return kExceptionBadIndex;
    const RegisterRow& row = Row(index);
    if (row.access == RegisterAccess::kConstant) return kExceptionWriteToConst;
    if (row.access == RegisterAccess::kReadOnly) return kExceptionWriteToReadOnly;
    switch (row.type) {
        case RegisterType::kInteger:
            return WriteInteger(index, data);
        case RegisterType::kText: {
            const auto end = std::find(data.begin(), data.end(), std::uint8_t{0});
            StoreText(index, std::string(data.begin(), end));
            return 0;
        }
        case RegisterType::kDouble:
            break;
    }
    if (data.size() < 8) return kExceptionIncompleteData;
    const std::uint64_t bits = Little32(data) | (std::uint64_t{Little32(data.subspan(4))} << 32);
    const double number = std::bit_cast<double>(bits);
    if (!(number >= row.minimum && number <= row.maximum)) return kExceptionChange;
    StoreNumber(index, number);
    return 0;
}

int Registers::WriteInteger(int index, std::span<const std::uint8_t> data) {
    if (data.size() < 4) return kExceptionIncompleteData;
    const int value = static_cast<int>(Little32(data));
    if (value < Row(index).minimum || value > Row(index).maximum) return kExceptionChange;
    if (!RegionFits(index, value)) return kExceptionChange;
    Store(index, value);
    FollowRegion(index);
    return 0;
}

// A region's length is refused when it would reach over the sensor's edge.
bool Registers::RegionFits(int index, int value) const {
    if (index == H_ROI_PIXELS) return value <= Value(H_SIZE) - Value(H_ROI_ORIGIN);
    if (index == V_ROI_PIXELS) return value <= Value(V_SIZE) - Value(V_ROI_ORIGIN);
    return true;
}

// A new origin shortens the region to what is left of the sensor, so that the two can be written one after the other.
void Registers::FollowRegion(int index) {
    if (index == H_ROI_ORIGIN) {
        Store(H_ROI_PIXELS, std::min(Value(H_ROI_PIXELS), Value(H_SIZE) - Value(H_ROI_ORIGIN)));
    } else if (index == V_ROI_ORIGIN) {
        Store(V_ROI_PIXELS, std::min(Value(V_ROI_PIXELS), Value(V_SIZE) - Value(V_ROI_ORIGIN)));
    }
}

void Registers::AppendValue(int index, std::vector<std::uint8_t>& to) const {
    const Cell& cell = m_Values[static_cast<unsigned>(index)];
    switch (Row(index).type) {
        case RegisterType::kInteger:
            AppendLittle32(to, static_cast<std::uint32_t>(cell.word));
            break;
        case RegisterType::kText:
            to.insert(to.end(), cell.text.begin(), cell.text.end());
            break;
        case RegisterType::kDouble: {
            const auto bits = std::bit_cast<std::uint64_t>(cell.number);
            AppendLittle32(to, static_cast<std::uint32_t>(bits));
            AppendLittle32(to, static_cast<std::uint32_t>(bits >> 32));
            break;
        }
    }
}

void Registers::AppendAttributes(int index, std::vector<std::uint8_t>& to) const {
    const RegisterRow& row = Row(index);
    AppendLittle32(to, static_cast<std::uint32_t>(index));
    char name[32] = {};
    std::strncpy(name, RegisterName(index), sizeof(name) - 1);
    to.insert(to.end(), name, name + sizeof(name));
    AppendLittle32(to, static_cast<std::uint32_t>(row.type));
    AppendLittle32(to, row.access == RegisterAccess::kWritable ? 1u : 0u);
    AppendLittle32(to, static_cast<std::uint32_t>(row.minimum));
    AppendLittle32(to, static_cast<std::uint32_t>(row.maximum));
    AppendLittle32(to, static_cast<std::uint32_t>(row.default_value));
}

std::vector<std::uint8_t> Registers::Unread() const {
    std::vector<std::uint8_t> indices;
    for (int i = 0; i < SYNC_TABLE_SELECT_MAX; ++i) {
        if (Has(i) && m_Unread.test(static_cast<unsigned>(i))) indices.push_back(static_cast<std::uint8_t>(i));
    }
    return indices;
}

}  // namespace zel::sim
