/// @file
/// What is known about each parameter beside what the camera tells: its name, how its value is laid out, its unit and
/// one line of description.
#ifndef ZEL_LAYER_PARAMETERINFO_H
#define ZEL_LAYER_PARAMETERINFO_H

#include <charconv>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "zel/Error.h"
#include "zel/ParameterTable.h"
#include "zel/detail/NearestWords.h"
#include "zel/detail/Texts.h"

namespace zel {

/// Every parameter in order of id, the model-dependent 64-bit values last.
inline std::span<const ParameterInfo> all_parameters() { return detail::kParameterTable; }

/// The row of an id; null for an id that is no parameter.
inline const ParameterInfo* parameter_by_id(unsigned id) {
    for (const ParameterInfo& info : all_parameters()) {
        if (info.id == id) return &info;
    }
    return nullptr;
}

/// The parameter that a user names: "EXPOSURE_TIME_US", "exposure-time-us", "ZEL_PARAM_EXPOSURE_TIME_US" or "58".
/// Throws Error (invalid_argument) with the nearest names for an unknown one.
inline const ParameterInfo& find_parameter(std::string_view wanted) {
    constexpr std::string_view kPrefix = "ZEL_PARAM_";
    std::string name = detail::upper_case(detail::trimmed(wanted));
    for (char& letter : name) {
        if (letter == '-' || letter == ' ' || letter == '.') letter = '_';
    }
    if (name.starts_with(kPrefix)) name.erase(0, kPrefix.size());
    unsigned id = 0;
    const auto [rest, error] = std::from_chars(name.data(), name.data() + name.size(), id);
    const bool by_id = error == std::errc() && rest == name.data() + name.size();
    std::vector<std::string> names;
    for (const ParameterInfo& info : all_parameters()) {
        if (by_id ? info.id == id : name == info.name) return info;
        names.push_back(info.name);
    }
    throw Error(ErrorKind::invalid_argument, "no parameter '" + std::string(wanted) + "'", "",
                detail::did_you_mean(name, names) + "'zelcam params' lists them all");
}

/// "rw", "ro" or "wo".
inline const char* text_of(Access access) {
    return access == Access::read_write ? "rw" : access == Access::read_only ? "ro" : "wo";
}

/// "uint32", "int32", "text", "region", "double[9]", "uint64" or "selector".
inline const char* text_of(ValueKind kind) {
    switch (kind) {
        case ValueKind::number:
            return "uint32";
        case ValueKind::signed_number:
            return "int32";
        case ValueKind::text:
            return "text";
        case ValueKind::region:
            return "region";
        case ValueKind::matrix:
            return "double[9]";
        case ValueKind::wide:
            return "uint64";
        case ValueKind::selector:
            return "selector";
    }
    return "?";
}

}  // namespace zel

#endif
