// The parameter table: reading, writing, and what a write sets off.
#include <algorithm>
#include <bit>

#include "devices/kit/Conversation.h"
#include "devices/kit/Wire.h"

namespace zel::kit {

namespace {

void AppendLittle64(std::vector<std::uint8_t>& to, std::uint64_t value) {
    AppendLittle32(to, static_cast<std::uint32_t>(value));
    AppendLittle32(to, static_cast<std::uint32_t>(value >> 32));
}

void AppendText(std::vector<std::uint8_t>& to, std::string_view text) {
    const std::size_t length = std::min<std::size_t>(text.size(), kTextCapacity - 1);
    to.insert(to.end(), text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length));
    to.resize(to.size() + kTextCapacity - length);
}

// A value of another type than its entry's travels as 0 or "".
void AppendValue(std::vector<std::uint8_t>& to, EntryType type, const Value& value) {
    const int* const number = std::get_if<int>(&value);
    const double* const real = std::get_if<double>(&value);
    const std::string* const text = std::get_if<std::string>(&value);
    switch (type) {
        case EntryType::kInteger:
            return AppendLittle32(to, static_cast<std::uint32_t>(number ? *number : 0));
        case EntryType::kDouble:
            return AppendLittle64(to, std::bit_cast<std::uint64_t>(real ? *real : 0.0));
        case EntryType::kText:
            return AppendText(to, text ? std::string_view(*text) : std::string_view());
    }
}

// index (4) | name (32) | type (4) | flags (4) | minimum (4) | maximum (4) | default (4)
void AppendAttributes(std::vector<std::uint8_t>& to, int index, const Attributes& attributes) {
    AppendLittle32(to, static_cast<std::uint32_t>(index));
    AppendText(to, EntryName(index));
    const int numbers[] = {static_cast<int>(attributes.type), attributes.access == EntryAccess::kWritable ? 1 : 0,
                           attributes.minimum, attributes.maximum, attributes.default_value};
    for (const int number : numbers) AppendLittle32(to, static_cast<std::uint32_t>(number));
}

}  // namespace

int Conversation::Request(int command, int index, std::span<const std::uint8_t> data,
                          std::vector<std::uint8_t>& reply) {
    if (command == SYNC_TABLE_CMD_UNREAD_COUNT) {
        AppendLittle32(reply, static_cast<std::uint32_t>(UnreadIndices().size()));
        return 0;
    }
    if (command == SYNC_TABLE_CMD_UNREAD_INDICES) {
        reply = UnreadIndices();
        return 0;
    }
    const bool known = index >= 0 && index < SYNC_TABLE_SELECT_MAX;
    const std::optional<Attributes> attributes = known ? m_BackEnd.AttributesOf(index) : std::nullopt;
    if (!attributes) return kExceptionBadIndex;
    switch (command) {
        case SYNC_TABLE_CMD_GET:
            return Get(index, attributes->type, reply);
        case SYNC_TABLE_CMD_SET:
            return Set(index, *attributes, data);
        case SYNC_TABLE_CMD_GET_ATTRIBUTES:
            AppendAttributes(reply, index, *attributes);
            return 0;
        case SYNC_TABLE_CMD_GET_DATAFLAGS:
            AppendLittle32(reply, attributes->access == EntryAccess::kWritable ? 1u : 0u);
            return 0;
        default:
            return kExceptionIncompleteData;
    }
}

// What the run tells is brought up to date before it is read.
void Conversation::Refresh(int index) {
    if (index == CURRENT_FRAME) {
        m_Table.Store(index, m_Control.FramesDone());
    } else if (index == TRIGGER_STATE) {
        m_Table.Store(index, m_Control.Triggered() ? 1 : 0);
    } else if (index == CAMERA_STATE) {
        const bool acquiring = m_Control.Acquiring();
        if (acquiring || m_Table.Number(index) == 2) m_Table.Store(index, acquiring ? 2 : 0);
    } else if (index == CALC_STATE && m_Table.Number(index) == 1) {
        m_Table.Store(index, 2);
    }
}

int Conversation::Get(int index, EntryType type, std::vector<std::uint8_t>& reply) {
    Refresh(index);
    Value value = m_Table.Get(index);
    if (const int exception = m_BackEnd.Read(index, value)) return exception;
    m_Table.Store(index, value);
    AppendValue(reply, type, m_Table.Get(index));
    m_Table.MarkRead(index);
    return 0;
}

int Conversation::Set(int index, const Attributes& attributes, std::span<const std::uint8_t> data) {
    if (attributes.access == EntryAccess::kConstant) return kExceptionWriteToConst;
    if (attributes.access == EntryAccess::kReadOnly) return kExceptionWriteToReadOnly;
    if (attributes.type == EntryType::kText) {
        const auto end = std::find(data.begin(), data.end(), std::uint8_t{0});
        return Write(index, std::string(data.begin(), end));
    }
    if (attributes.type == EntryType::kDouble) {
        if (data.size() < 8) return kExceptionIncompleteData;
        const double number = std::bit_cast<double>(Little32(data) | (std::uint64_t{Little32(data.subspan(4))} << 32));
        if (!(number >= attributes.minimum && number <= attributes.maximum)) return kExceptionChange;
        return Write(index, number);
    }
    if (data.size() < 4) return kExceptionIncompleteData;
    const int number = static_cast<int>(Little32(data));
    if (number < attributes.minimum || number > attributes.maximum) return kExceptionChange;
    if (!RegionFits(index, number)) return kExceptionChange;
    return Write(index, number);
}

int Conversation::Write(int index, Value value) {
    if (const int exception = m_BackEnd.Write(index, value)) return exception;
    m_Table.Store(index, std::move(value));
    Follow(index);
    return 0;
}

// A region's length is refused when it would reach over the sensor's edge.
bool Conversation::RegionFits(int index, int value) const {
    if (index == H_ROI_PIXELS) return value <= m_Table.Number(H_SIZE) - m_Table.Number(H_ROI_ORIGIN);
    if (index == V_ROI_PIXELS) return value <= m_Table.Number(V_SIZE) - m_Table.Number(V_ROI_ORIGIN);
    return true;
}

// A new origin shortens the region to what is left of the sensor, so that the two can be written one after the other.
void Conversation::FollowRegion(int index) {
    const bool columns = index == H_ROI_ORIGIN;
    const int length = columns ? H_ROI_PIXELS : V_ROI_PIXELS;
    const int left = m_Table.Number(columns ? H_SIZE : V_SIZE) - m_Table.Number(index);
    m_Table.Store(length, std::min(m_Table.Number(length), left));
}

void Conversation::Follow(int index) {
    const int value = m_Table.Number(index);
    switch (index) {
        case CAMERA_STATE:
            if (value != 2) {
                Halt();
            } else if (!m_Control.Triggered()) {
                Begin(m_Table.Number(HW_TRIG_SOURCE) != 0);
            }
            break;
        case TRIGGER_STATE:
            value == 1 ? Begin(true) : Halt();
            break;
        case SW_TRIG:
            if (value == 1) SoftwareTrigger();
            m_Table.Store(SW_TRIG, 0);
            break;
        case CALC_STATE:
            if (value != 0) m_Table.Store(CALC_STATE, 1);
            break;
        case CAMERA_RESET:
            if (value == 1) PowerOn();
            break;
        case FRAME_COUNT:
            SetSequence(value);
            break;
        case H_ROI_ORIGIN:
        case V_ROI_ORIGIN:
            FollowRegion(index);
            break;
        default:
            break;
    }
}

std::vector<std::uint8_t> Conversation::UnreadIndices() {
    for (const int index : {CURRENT_FRAME, TRIGGER_STATE, CAMERA_STATE}) Refresh(index);
    std::vector<std::uint8_t> indices;
    for (int i = 0; i < SYNC_TABLE_SELECT_MAX; ++i) {
        if (m_Table.Unread(i) && m_BackEnd.AttributesOf(i)) indices.push_back(static_cast<std::uint8_t>(i));
    }
    return indices;
}

}  // namespace zel::kit
