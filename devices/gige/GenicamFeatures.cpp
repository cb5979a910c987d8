#include "devices/gige/GenicamFeatures.h"

#include <algorithm>
#include <cmath>

namespace zel::gige {

namespace {

constexpr double kLargestWhole = 9007199254740992.0;  // up to here a double tells whole numbers apart

bool IsNumber(ArvGcNode* node) {
    if (ARV_IS_GC_ENUMERATION(node) || ARV_IS_GC_BOOLEAN(node)) return false;
    return ARV_IS_GC_FLOAT(node) || ARV_IS_GC_INTEGER(node);
}

double ReadNumber(ArvGcNode* node, GError** error) {
    if (ARV_IS_GC_FLOAT(node)) return arv_gc_float_get_value(ARV_GC_FLOAT(node), error);
    return static_cast<double>(arv_gc_integer_get_value(ARV_GC_INTEGER(node), error));
}

Bounds ReadBounds(ArvGcNode* node, GError** error) {
    if (ARV_IS_GC_FLOAT(node)) {
        const double minimum = arv_gc_float_get_min(ARV_GC_FLOAT(node), error);
        return {minimum, *error ? minimum : arv_gc_float_get_max(ARV_GC_FLOAT(node), error)};
    }
    const auto minimum = static_cast<double>(arv_gc_integer_get_min(ARV_GC_INTEGER(node), error));
    return {minimum, *error ? minimum : static_cast<double>(arv_gc_integer_get_max(ARV_GC_INTEGER(node), error))};
}

// Whole steps from the minimum on.
void WriteWhole(ArvGcInteger* node, double value, GError** error) {
    auto whole = static_cast<gint64>(std::clamp(std::round(value), -kLargestWhole, kLargestWhole));
    ErrorSlot ignored;
    const gint64 minimum = arv_gc_integer_get_min(node, ignored);
    ErrorSlot ignored_too;
    const gint64 step = arv_gc_integer_get_inc(node, ignored_too);
    if (!ignored.Get() && !ignored_too.Get() && step > 1 && whole > minimum) whole -= (whole - minimum) % step;
    arv_gc_integer_set_value(node, whole, error);
}

}  // namespace

// What a call reports through `error` is kept, and tells whether the camera is still there.
bool GenicamFeatures::Failed(const char* what, const ErrorSlot& error) {
    if (!error.Get()) return false;
    const bool unanswered = g_error_matches(error.Get(), ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_TIMEOUT) ||
                            g_error_matches(error.Get(), ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_NOT_CONNECTED);
    const platform::ScopedLock lock(m_ErrorLock);
    m_LastError = std::string(what) + ": " + error.Text();
    if (unanswered) m_Silent = true;
    return true;
}

ArvGcNode* GenicamFeatures::Node(const std::string& name) {
    if (m_Silent || name.empty()) return nullptr;
    return arv_device_get_feature(arv_camera_get_device(m_Camera), name.c_str());
}

bool GenicamFeatures::Do(const char* what, const Call& call) {
    const platform::ScopedLock lock(m_Lock);
    if (m_Silent) return false;
    ErrorSlot error;
    call(m_Camera, error);
    return !Failed(what, error);
}

bool GenicamFeatures::Has(const char* name) {
    const platform::ScopedLock lock(m_Lock);
    if (!Node(name)) return false;
    ErrorSlot error;
    return arv_device_is_feature_available(arv_camera_get_device(m_Camera), name, error) && !Failed(name, error);
}

std::string GenicamFeatures::FirstNumber(std::initializer_list<const char*> names) {
    for (const char* const name : names) {
        if (!Has(name)) continue;
        const platform::ScopedLock lock(m_Lock);
        ArvGcNode* const node = Node(name);
        if (!node || !IsNumber(node)) continue;
        ErrorSlot error;
        const double value = ReadNumber(node, error);
        if (!Failed(name, error) && std::isfinite(value)) return name;
    }
    return {};
}

std::optional<double> GenicamFeatures::Number(const std::string& name) {
    const platform::ScopedLock lock(m_Lock);
    ArvGcNode* const node = Node(name);
    if (!node || !IsNumber(node)) return std::nullopt;
    ErrorSlot error;
    const double value = ReadNumber(node, error);
    if (Failed(name.c_str(), error) || !std::isfinite(value)) return std::nullopt;
    return value;
}

std::optional<Bounds> GenicamFeatures::BoundsOf(const std::string& name) {
    const platform::ScopedLock lock(m_Lock);
    ArvGcNode* const node = Node(name);
    if (!node || !IsNumber(node)) return std::nullopt;
    ErrorSlot error;
    const Bounds bounds = ReadBounds(node, error);
    if (Failed(name.c_str(), error) || !(bounds.minimum <= bounds.maximum)) return std::nullopt;
    return bounds;
}

std::optional<std::string> GenicamFeatures::Text(const char* name) {
    const platform::ScopedLock lock(m_Lock);
    ArvGcNode* const node = Node(name);
    if (!node) return std::nullopt;
    ErrorSlot error;
    const char* text = nullptr;
    if (ARV_IS_GC_ENUMERATION(node)) {
        text = arv_gc_enumeration_get_string_value(ARV_GC_ENUMERATION(node), error);
    } else if (ARV_IS_GC_STRING(node)) {
        text = arv_gc_string_get_value(ARV_GC_STRING(node), error);
    }
    if (Failed(name, error) || !text) return std::nullopt;
    return std::string(text);
}

std::vector<std::string> GenicamFeatures::Choices(const char* name) {
    const platform::ScopedLock lock(m_Lock);
    ArvGcNode* const node = Node(name);
    if (!node || !ARV_IS_GC_ENUMERATION(node)) return {};
    ErrorSlot error;
    guint count = 0;
    const MemoryPtr<const char*> names(
        arv_gc_enumeration_dup_available_string_values(ARV_GC_ENUMERATION(node), &count, error));
    if (Failed(name, error) || !names) return {};
    return {names.get(), names.get() + count};
}

bool GenicamFeatures::HasChoice(const char* name, const char* choice) {
    return std::ranges::count(Choices(name), choice) > 0;
}

bool GenicamFeatures::SetNumber(const std::string& name, double value) {
    const platform::ScopedLock lock(m_Lock);
    ArvGcNode* const node = Node(name);
    if (!node || !IsNumber(node)) return false;
    ErrorSlot error;
    if (ARV_IS_GC_FLOAT(node)) {
        arv_gc_float_set_value(ARV_GC_FLOAT(node), value, error);
    } else {
        WriteWhole(ARV_GC_INTEGER(node), value, error);
    }
    return !Failed(name.c_str(), error);
}

bool GenicamFeatures::SetText(const char* name, const std::string& text) {
    const platform::ScopedLock lock(m_Lock);
    ArvGcNode* const node = Node(name);
    if (!node) return false;
    ErrorSlot error;
    if (ARV_IS_GC_ENUMERATION(node)) {
        arv_gc_enumeration_set_string_value(ARV_GC_ENUMERATION(node), text.c_str(), error);
    } else if (ARV_IS_GC_STRING(node)) {
        arv_gc_string_set_value(ARV_GC_STRING(node), text.c_str(), error);
    } else {
        return false;
    }
    return !Failed(name, error);
}

bool GenicamFeatures::Execute(const char* name) {
    const platform::ScopedLock lock(m_Lock);
    ArvGcNode* const node = Node(name);
    if (!node || !ARV_IS_GC_COMMAND(node)) return false;
    ErrorSlot error;
    arv_gc_command_execute(ARV_GC_COMMAND(node), error);
    return !Failed(name, error);
}

void GenicamFeatures::Prefer(const char* name, const char* choice) {
    if (HasChoice(name, choice)) SetText(name, choice);
}

void GenicamFeatures::Prefer(const char* name, double value) {
    if (Has(name)) SetNumber(name, value);
}

std::string GenicamFeatures::LastError() {
    const platform::ScopedLock lock(m_ErrorLock);
    return m_LastError;
}

void GenicamFeatures::BecomeSilent(const std::string& reason) {
    const platform::ScopedLock lock(m_ErrorLock);
    m_LastError = reason;
    m_Silent = true;
}

}  // namespace zel::gige
