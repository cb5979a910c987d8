/// @file
/// One parameter of an open camera.
#ifndef ZEL_LAYER_PARAMETER_H
#define ZEL_LAYER_PARAMETER_H

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "zel/ParameterInfo.h"
#include "zel/ParameterValue.h"
#include "zel/Region.h"
#include "zel/ValueRange.h"
#include "zel/detail/CameraState.h"

namespace zel {

/// What became of one write.
struct SetResult {
    const ParameterInfo* info = nullptr;   ///< the parameter
    std::string requested;                 ///< the value that was asked for, as text
    std::optional<ParameterValue> actual;  ///< as read back; empty for write-only parameters and when it can't be read
    ValueRange range;                      ///< what the camera takes
    std::string unit;                      ///< of the value; empty when there is none
    bool accepted = false;                 ///< whether it is what was asked for
    std::string reason;                    ///< why not

    /// Whether the value was taken as it is.
    explicit operator bool() const { return accepted; }
    /// "EXPOSURE_TIME_US: requested 5 -> actual 10 us (range 10..60000000)"
    std::string text() const {
        return std::string(info->name) + ": requested " + requested + " -> actual " +
               (actual ? actual->text() + (unit.empty() ? "" : " " + unit) : "not readable") +
               (range.known ? " (range " + range.text() + ")" : "");
    }
};

/// A parameter of an open camera: Camera::parameter(). Reading and writing talk to the camera where the value is kept
/// there; any thread may do so. A copy is a second handle of the same parameter.
class Parameter {
  public:
    /// For Camera.
    Parameter(std::shared_ptr<detail::CameraState> camera, const ParameterInfo& info)
        : m_Camera(std::move(camera)), m_Info(&info) {}

    /// What is known of it without asking the camera.
    const ParameterInfo& info() const { return *m_Info; }
    /// Its name: "GAIN".
    std::string name() const { return m_Info->name; }
    /// Whether its value is an integer of 32 bits.
    bool is_number() const { return m_Info->kind == ValueKind::number || m_Info->kind == ValueKind::signed_number; }

    /// The value; empty when the camera has no such parameter or did not answer, and for write-only ones.
    std::optional<ParameterValue> try_value() const {
        if (m_Info->access == Access::write_only || m_Info->kind == ValueKind::selector) return std::nullopt;
        ParameterValue value(m_Info->kind);
        const unsigned size = is_number() ? 4u : static_cast<unsigned>(ParameterValue::kCapacity);
        if (!m_Camera->native()->GetParameter(m_Info->id, size, value.data())) return std::nullopt;
        return value;
    }
    /// The value. Throws Error when it can't be read: link_lost or refused.
    ParameterValue value() const {
        if (auto value = try_value()) return *value;
        throw Error(kind_of_refusal(), name() + " can't be read",
                    m_Info->access == Access::write_only ? "it is write-only" : silence());
    }
    /// The value as a whole number (for regions and texts the first word), and as text. Throw as value().
    long long integer() const { return value().integer(); }
    /// Its value as text. Throws Error (refused) when it can't be read.
    std::string text() const { return detail::trimmed(value().text()); }

    /// One of the attributes ZEL_ATTR_... as a 32-bit word; empty when the camera does not tell.
    std::optional<int> attribute(int attribute_id) const { return attribute_of(m_Info->id, attribute_id); }

    /// What a number accepts now; not known for other kinds.
    ValueRange range() const {
        if (!is_number()) return {};
        // The exposure in microseconds has the bounds of the camera's own entry.
        const unsigned id = m_Info->id == ZEL_PARAM_EXPOSURE_TIME_US ? ZEL_PARAM_EXPOSURE_TIME : m_Info->id;
        const auto minimum = attribute_of(id, ZEL_ATTR_MIN_VALUE);
        if (!minimum) return {};
        const auto maximum = attribute_of(id, ZEL_ATTR_MAX_VALUE);
        const auto standard = attribute_of(id, ZEL_ATTR_DEFAULT_VALUE);
        if (!maximum || !standard) return {};
        const ValueRange range = ValueRange::from_words(*minimum, *maximum, *standard);
        // The camera keeps the bounds of the pixel clock in MHz, its value comes in hertz.
        if (m_Info->id == ZEL_PARAM_READOUT_SPEED) return range.scaled(1000000, 1);
        return counts_milliseconds() ? range.scaled(1, 1000) : range;
    }

    /// The unit that the value has with the camera's present settings: "us", "px"; empty when it has none.
    std::string unit() const { return counts_milliseconds() ? "ms" : m_Info->unit; }

    /// Whether it can be written: what the table says, unless the camera says that its entry is read-only.
    Access access() const {
        // Value of ZEL_ATTR_FLAGS for an entry that the camera does not let anyone write.
        constexpr int kFlagReadOnly = 4;
        if (m_Info->access != Access::read_write || m_Info->kind == ValueKind::selector) return m_Info->access;
        return attribute(ZEL_ATTR_FLAGS) == kFlagReadOnly ? Access::read_only : m_Info->access;
    }

    /// Writes a value and reads it back; says in the result whether the camera took it as it was asked for. Throws
    /// Error (invalid_argument) for a text that is no value of this parameter.
    SetResult try_set(std::string_view text) const { return write(ParameterValue::parse(*m_Info, text), text); }
    /// The same with a number.
    SetResult try_set(long long number) const { return try_set(std::to_string(number)); }
    /// The same with region and binning.
    SetResult try_set(const ZelRoiBin& region) const { return try_set(text_of(region)); }
    /// The same; throws Error (refused) with requested, actual and range when the camera did not take the value.
    template <class Value>
    SetResult set(const Value& value) const {
        SetResult result = try_set(value);
        if (!result.accepted) throw Error(kind_of_refusal(), result.text(), result.reason);
        return result;
    }

  private:
    // EXPOSURE_TIME alone has a unit that is set.
    bool counts_milliseconds() const {
        if (m_Info->id != ZEL_PARAM_EXPOSURE_TIME) return false;
        int unit = 0;
        return m_Camera->native()->GetParameter(ZEL_PARAM_EXPOSURE_UNIT, sizeof unit, &unit) && unit == 1;
    }

    std::optional<int> attribute_of(unsigned id, int attribute_id) const {
        const ZelParamAttrId selection{static_cast<int>(id), attribute_id};
        // Attributes of wide values fill as much room as the value does.
        alignas(8) char bytes[ParameterValue::kCapacity] = {};
        const std::lock_guard lock(m_Camera->attribute_mutex);
        if (!m_Camera->native()->SetParameter(ZEL_PARAM_CMD_ID_ATTR_ID, &selection) ||
            !m_Camera->native()->GetParameter(ZEL_PARAM_ATTR, sizeof bytes, bytes)) {
            return std::nullopt;
        }
        int word = 0;
        std::memcpy(&word, bytes, sizeof word);
        return word;
    }

    // The camera's name travels as a text command of its own; every other value is a parameter write.
    bool is_name() const { return m_Info->id == ZEL_PARAM_GLOBAL_CAMERA_NAME; }

    std::optional<ParameterValue> read_back() const {
        if (!is_name()) return try_value();
        const std::string name = detail::trimmed(detail::text_or_empty(m_Camera->native()->GetCameraName()));
        return ParameterValue::parse(*m_Info, std::string_view(name).substr(0, 31));
    }

    SetResult write(const ParameterValue& wanted, std::string_view requested) const {
        SetResult result{m_Info, std::string(requested), {}, range(), unit(), false, {}};
        ZelCamera* const camera = m_Camera->native();
        const bool written = is_name() ? camera->SetCameraName(wanted.text().c_str())
                                       : camera->SetParameter(static_cast<int>(m_Info->id), wanted.data());
        if (m_Info->access == Access::write_only) {
            result.accepted = written;
            if (!written) result.reason = "the camera did not carry it out";
            return result;
        }
        result.actual = read_back();
        result.accepted = written && result.actual && *result.actual == wanted;
        if (!result.accepted) result.reason = refusal(result, wanted);
        return result;
    }

    ErrorKind kind_of_refusal() const { return m_Camera->link_lost() ? ErrorKind::link_lost : ErrorKind::refused; }
    const char* silence() const {
        return m_Camera->link_lost() ? "the link to the camera is lost"
                                     : "this camera does not offer it or did not answer";
    }

    std::string refusal(const SetResult& result, const ParameterValue& wanted) const {
        if (!result.actual) return silence();
        if (access() == Access::read_only) return "it is read-only";
        if (result.range.known && !result.range.contains(wanted.integer())) return "the value is out of range";
        return "the camera refused or changed the value";
    }

    std::shared_ptr<detail::CameraState> m_Camera;
    const ParameterInfo* m_Info;
};

}  // namespace zel

#endif
