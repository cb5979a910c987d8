// Parameters: what they are, reading and writing them.
#include <algorithm>
#include <iterator>
#include <optional>

#include "bindings/c/Call.h"

using zel::c::Call;
using zel::c::Failure;
using zel::c::Guard;

namespace {

zel_parameter_info ToStruct(const zel::ParameterInfo& from) {
    zel_parameter_info info{};
    info.struct_size = sizeof info;
    info.id = from.id;
    info.kind = static_cast<int32_t>(from.kind);
    info.access = static_cast<int32_t>(from.access);
    zel::c::CutInto(info.name, from.name);
    zel::c::CutInto(info.unit, from.unit);
    zel::c::CutInto(info.description, from.description);
    return info;
}

// Both structs that tell a range have it under the same names.
template <class Struct>
void SetRange(Struct& to, const zel::ValueRange& range) {
    to.range_known = range.known;
    to.minimum = range.minimum;
    to.maximum = range.maximum;
    to.standard = range.standard;
}

zel_value ToStruct(const zel::ParameterValue& from) {
    zel_value value{};
    value.struct_size = sizeof value;
    value.kind = static_cast<int32_t>(from.kind());
    value.integer = from.integer();
    zel::c::CutInto(value.text, zel::detail::trimmed(from.text()));
    if (from.kind() == zel::ValueKind::matrix) {
        const zel::Matrix matrix = from.matrix();
        std::copy(matrix.begin(), matrix.end(), value.matrix);
    }
    if (from.kind() == zel::ValueKind::region) {
        const ZelRoiBin region = from.region();
        const unsigned words[] = {region.XOrigin, region.YOrigin, region.XPixels,
                                  region.YPixels, region.XBin,    region.YBin};
        std::copy(std::begin(words), std::end(words), value.region);
    }
    return value;
}

zel_set_result ToStruct(const zel::SetResult& from) {
    zel_set_result result{};
    result.struct_size = sizeof result;
    result.accepted = from.accepted;
    result.actual_known = from.actual.has_value();
    SetRange(result, from.range);
    zel::c::CutInto(result.requested, from.requested);
    zel::c::CutInto(result.unit, from.unit);
    zel::c::CutInto(result.reason, from.reason);
    if (from.actual) {
        result.actual = from.actual->integer();
        zel::c::CutInto(result.actual_text, from.actual->text());
    }
    return result;
}

// A parameter by its id or its name, and a value as Parameter::try_set() takes it.
template <class Key, class Value>
void Set(Call& call, zel_camera* camera, const Key& key, const Value& value, zel_set_result* result) {
    const zel::Camera& opened = call.FindCamera(camera).camera();
    if (result) zel::c::RequireStruct(result, "result");
    const zel::SetResult done = opened.parameter(key).try_set(value);
    if (result) zel::c::FillStruct(result, ToStruct(done));
    if (!done.accepted) throw zel::Error(zel::ErrorKind::refused, done.text(), done.reason);
}

}  // namespace

zel_status zel_parameter_count(uint32_t* count) {
    return Guard(__func__, [&](Call&) {
        zel::c::RequirePointer(count, "count");
        *count = static_cast<uint32_t>(zel::all_parameters().size());
    });
}

zel_status zel_parameter_at(uint32_t index, zel_parameter_info* info) {
    return Guard(__func__, [&](Call&) {
        zel::c::RequireStruct(info, "info");
        const auto all = zel::all_parameters();
        if (index >= all.size()) {
            throw Failure(ZEL_STATUS_INVALID_ARGUMENT, "no parameter at " + std::to_string(index),
                          "there are " + std::to_string(all.size()));
        }
        zel::c::FillStruct(info, ToStruct(all[index]));
    });
}

zel_status zel_parameter_find(const char* name, zel_parameter_info* info) {
    return Guard(__func__, [&](Call&) {
        zel::c::RequirePointer(name, "name");
        zel::c::RequireStruct(info, "info");
        zel::c::FillStruct(info, ToStruct(zel::find_parameter(name)));
    });
}

zel_status zel_camera_get_parameter_info(zel_camera* camera, uint32_t id, zel_parameter_info* info) {
    return Guard(__func__, [&](Call& call) {
        const zel::Parameter parameter = call.FindCamera(camera).camera().parameter(id);
        zel::c::RequireStruct(info, "info");
        zel_parameter_info full = ToStruct(parameter.info());
        full.access = static_cast<int32_t>(parameter.access());
        zel::c::CutInto(full.unit, parameter.unit());
        SetRange(full, parameter.range());
        zel::c::FillStruct(info, full);
    });
}

zel_status zel_camera_get_attribute(zel_camera* camera, uint32_t id, int32_t attribute, int32_t* word) {
    return Guard(__func__, [&](Call& call) {
        const zel::Parameter parameter = call.FindCamera(camera).camera().parameter(id);
        zel::c::RequirePointer(word, "word");
        const auto told = parameter.attribute(attribute);
        if (!told) {
            throw Failure(ZEL_STATUS_REFUSED, parameter.name() + " has no attribute " + std::to_string(attribute),
                          "this camera does not tell it or did not answer");
        }
        *word = *told;
    });
}

zel_status zel_camera_get_value(zel_camera* camera, uint32_t id, zel_value* value) {
    return Guard(__func__, [&](Call& call) {
        const zel::Parameter parameter = call.FindCamera(camera).camera().parameter(id);
        zel::c::RequireStruct(value, "value");
        zel::c::FillStruct(value, ToStruct(parameter.value()));
    });
}

zel_status zel_camera_set_value(zel_camera* camera, uint32_t id, const zel_value* value, zel_set_result* result) {
    return Guard(__func__, [&](Call& call) {
        const zel::ParameterInfo& info = call.FindCamera(camera).camera().parameter(id).info();
        zel::c::RequirePointer(value, "value");
        const zel_value wanted = zel::c::TakeStruct(value, "value");
        if (zel::c::TakeEnum(wanted.kind, zel::ValueKind::selector, "value->kind") != info.kind) {
            throw Failure(ZEL_STATUS_INVALID_ARGUMENT, std::string(info.name) + " takes another kind of value",
                          std::string("it is of the kind ") + zel::text_of(info.kind));
        }
        const auto& r = wanted.region;
        switch (info.kind) {
            case zel::ValueKind::number:
            case zel::ValueKind::signed_number:
                return Set(call, camera, id, static_cast<long long>(wanted.integer), result);
            case zel::ValueKind::region:
                return Set(call, camera, id, ZelRoiBin{r[0], r[1], r[2], r[3], r[4], r[5]}, result);
            default:
                // What can't be written is said by the parameter itself.
                const char* const end = std::find(std::begin(wanted.text), std::end(wanted.text), '\0');
                return Set(call, camera, id, std::string_view(wanted.text, end), result);
        }
    });
}

zel_status zel_camera_get_integer(zel_camera* camera, const char* name, int64_t* value) {
    return Guard(__func__, [&](Call& call) {
        const zel::Camera& opened = call.FindCamera(camera).camera();
        zel::c::RequirePointer(name, "name");
        zel::c::RequirePointer(value, "value");
        *value = opened.parameter(name).integer();
    });
}

zel_status zel_camera_set_integer(zel_camera* camera, const char* name, int64_t value, zel_set_result* result) {
    return Guard(__func__, [&](Call& call) {
        call.FindCamera(camera);
        zel::c::RequirePointer(name, "name");
        Set(call, camera, name, static_cast<long long>(value), result);
    });
}

zel_status zel_camera_get_text(zel_camera* camera, const char* name, char* text, size_t size, size_t* length) {
    return Guard(__func__, [&](Call& call) {
        const zel::Camera& opened = call.FindCamera(camera).camera();
        zel::c::RequirePointer(name, "name");
        zel::c::AnswerText(opened.parameter(name).text(), text, size, length);
    });
}

zel_status zel_camera_set_text(zel_camera* camera, const char* name, const char* text, zel_set_result* result) {
    return Guard(__func__, [&](Call& call) {
        call.FindCamera(camera);
        zel::c::RequirePointer(name, "name");
        zel::c::RequirePointer(text, "text");
        Set(call, camera, name, std::string_view(text), result);
    });
}
