#include "tools/zelcam/camera/ParameterInfo.h"

#include <charconv>

#include "include/ZelParameters.h"
#include "tools/zelcam/text/EditDistance.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

constexpr const char* kPrefix = "ZEL_PARAM_";

// The name as the table has it: upper case, underscores, no prefix.
std::string PlainName(const std::string& wanted) {
    std::string name = UpperCase(Trim(wanted));
    for (char& letter : name) {
        if (letter == '-' || letter == ' ' || letter == '.') letter = '_';
    }
    if (name.starts_with(kPrefix)) name.erase(0, std::string(kPrefix).size());
    return name;
}

bool NamedById(const std::string& name, unsigned& id) {
    const char* const end = name.data() + name.size();
    const auto [rest, error] = std::from_chars(name.data(), end, id);
    return error == std::errc() && rest == end;
}

}  // namespace

const ParameterInfo& FindParameter(const std::string& wanted) {
    const std::string name = PlainName(wanted);
    unsigned id = 0;
    const bool by_id = NamedById(name, id);
    std::vector<std::string> names;
    for (const ParameterInfo& info : AllParameters()) {
        if (by_id ? info.id == id : name == info.name) return info;
        names.push_back(info.name);
    }
    std::string advice;
    for (const std::string& near : NearestWords(name, names, 3)) advice += (advice.empty() ? "" : ", ") + near;
    if (!advice.empty()) advice = "did you mean " + advice + "? ";
    throw Failure("no parameter '" + wanted + "'", "", advice + "'zelcam params' lists them all", kUsage);
}

const ParameterInfo& ParameterById(unsigned id) {
    for (const ParameterInfo& info : AllParameters()) {
        if (info.id == id) return info;
    }
    return AllParameters().front();
}

const char* AccessText(Access access) {
    switch (access) {
        case Access::kReadWrite:
            return "rw";
        case Access::kReadOnly:
            return "ro";
        case Access::kWriteOnly:
            return "wo";
    }
    return "?";
}

const char* KindText(ValueKind kind) {
    switch (kind) {
        case ValueKind::kNumber:
            return "uint32";
        case ValueKind::kSigned:
            return "int32";
        case ValueKind::kText:
            return "text";
        case ValueKind::kRegion:
            return "region";
        case ValueKind::kMatrix:
            return "double[9]";
        case ValueKind::kWide:
            return "uint64";
        case ValueKind::kSelector:
            return "selector";
    }
    return "?";
}

}  // namespace zelcam
