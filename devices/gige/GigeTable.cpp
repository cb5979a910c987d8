// The entries of the parameter table, and what they are to the camera.
#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdlib>

#include "devices/gige/Failure.h"
#include "devices/gige/GigeCamera.h"

namespace zel::gige {

namespace {

using kit::Attributes;
using kit::EntryAccess;
using kit::EntryType;

constexpr int kGainSteps = 1023;  // VGA_GAIN counts from the camera's smallest gain, 0, to its largest
constexpr double kTenths = 10;    // SENSOR_TEMP
constexpr double kMilli = 1000;   // FRAME_RATE
constexpr double kMicro = 1e6;    // FRAME_TIME

int Whole(double value) { return static_cast<int>(std::clamp(std::round(value), double{INT_MIN}, double{INT_MAX})); }

// The whole numbers inside the bounds, so that each is one that the camera takes.
Bounds Inward(Bounds bounds) { return {std::ceil(bounds.minimum), std::floor(bounds.maximum)}; }

std::string Exposure(GenicamFeatures& f) {
    return f.FirstNumber({"ExposureTime", "ExposureTimeAbs", "ExposureTimeRaw"});
}
std::string Gain(GenicamFeatures& f) { return f.FirstNumber({"Gain", "GainRaw", "GainAbs"}); }
std::string BlackLevel(GenicamFeatures& f) { return f.FirstNumber({"BlackLevel", "BlackLevelRaw"}); }
std::string Temperature(GenicamFeatures& f) { return f.FirstNumber({"DeviceTemperature", "DeviceTemperatureAbs"}); }
std::string RateSet(GenicamFeatures& f) { return f.FirstNumber({"AcquisitionFrameRate", "AcquisitionFrameRateAbs"}); }
std::string RateNow(GenicamFeatures& f) {
    return f.FirstNumber({"AcquisitionResultingFrameRate", "ResultingFrameRate", "ResultingFrameRateAbs",
                          "AcquisitionFrameRate", "AcquisitionFrameRateAbs"});
}

Attributes Number(EntryAccess access, int minimum, int maximum, int default_value) {
    return {EntryType::kInteger, access, minimum, maximum, default_value};
}
Attributes Constant(int value) { return Number(EntryAccess::kConstant, value, value, value); }
Attributes TextEntry(EntryAccess access) { return {EntryType::kText, access, 0, 127, 0}; }

// An entry that follows a feature, one to one after `scale`.
std::optional<Attributes> Follow(GenicamFeatures& features, const std::string& name, double scale) {
    const auto bounds = features.BoundsOf(name);
    const auto value = features.Number(name);
    if (!bounds || !value) return std::nullopt;
    const Bounds whole = Inward({bounds->minimum * scale, bounds->maximum * scale});
    if (whole.minimum > whole.maximum) return std::nullopt;
    return Number(EntryAccess::kWritable, Whole(whole.minimum), Whole(whole.maximum),
                  Whole(std::clamp(*value * scale, whole.minimum, whole.maximum)));
}

int GainStep(double gain, Bounds bounds) {
    const double range = bounds.maximum - bounds.minimum;
    return range > 0 ? std::clamp(Whole((gain - bounds.minimum) / range * kGainSteps), 0, kGainSteps) : 0;
}
double GainOf(int step, Bounds bounds) {
    return bounds.minimum + (bounds.maximum - bounds.minimum) * step / kGainSteps;
}

int ReadScaled(GenicamFeatures& features, const std::string& name, double scale, kit::Value& value) {
    const auto number = features.Number(name);
    if (!number) return kExceptionIncompleteData;
    value = Whole(*number * scale);
    return 0;
}

int WriteScaled(GenicamFeatures& features, const std::string& name, double scale, kit::Value& value) {
    if (!features.SetNumber(name, std::get<int>(value) / scale)) return kExceptionChange;
    return ReadScaled(features, name, scale, value);
}

}  // namespace

std::optional<Attributes> GigeCamera::AttributesOf(int index) {
    const Session session = Opened();
    switch (index) {
        case HOST_PORT_PROTOCOL:
        case CAMERA_STATE:
        case EXPOSURE_STATE:
        case TRIGGER_STATE:
        case FRAME_COUNT:
        case CURRENT_FRAME:
        case CALC_STATE:
        case SW_TRIG:
        case SVN_REVISION:
        case SENSOR_TAPS_VAL:
        case CLOCK_SPEED_VAL:
        case BYTES_PER_PIXEL:
            return kit::StandardAttributes(index);
        case FW_VERSION:
        case HW_MODEL:
        case SERIAL_NUMBER:
            return TextEntry(EntryAccess::kConstant);
        case CAMERA_NAME:
            return TextEntry(session && session->Features().Has("DeviceUserID") ? EntryAccess::kWritable
                                                                                : EntryAccess::kConstant);
        case SENSOR_TAPS_IDX:
            return Number(EntryAccess::kWritable, 0, 0, 0);
        case HW_VERSION:
            return Constant(session ? std::atoi(session->Features().Text("DeviceVersion").value_or("").c_str()) : 0);
        default:
            break;
    }
    if (auto attributes = FrameAttributes(index)) return attributes;
    if (!session) return std::nullopt;
    auto attributes = FeatureAttributes(index, *session);
    LookAfter(session);
    return attributes;
}

// Region and binning are the host's: the camera always sends whole frames.
std::optional<Attributes> GigeCamera::FrameAttributes(int index) const {
    const Session session = Opened();
    const int w = session ? session->Width() : 1;
    const int h = session ? session->Height() : 1;
    const PixelFormat format = session ? session->Format() : PixelFormat{"Mono8", 8, Packing::kBytes, 0};
    Attributes attributes = kit::StandardAttributes(index);
    switch (index) {
        case H_SIZE:
        case H_RO_PIXELS:
            return Constant(w);
        case V_SIZE:
        case V_RO_LINES:
            return Constant(h);
        case BITS_PER_PIXEL:
            return Constant(format.bits);
        case H_BIN:
        case V_BIN:
            return attributes;
        case H_ROI_ORIGIN:
        case V_ROI_ORIGIN:
            return Number(EntryAccess::kWritable, 0, (index == H_ROI_ORIGIN ? w : h) - 1, 0);
        case H_ROI_PIXELS:
            return Number(EntryAccess::kWritable, 1, w, w);
        case V_ROI_PIXELS:
            return Number(EntryAccess::kWritable, 1, h, h);
        default:
            break;
    }
    if (format.phase == 0) return std::nullopt;
    if (index == CFA_PHASE) return Constant(format.phase);
    const bool matrix = (index >= CCM_1_1 && index <= CCM_3_3) || (index >= DWB_1_1 && index <= DWB_3_3);
    if (matrix || index == IR_FILTER || index == CFA_TYPE || index == CCM_OUTPUT_COLOR_SPACE) return attributes;
    return std::nullopt;
}

std::optional<Attributes> GigeCamera::FeatureAttributes(int index, CameraSession& session) {
    GenicamFeatures& f = session.Features();
    switch (index) {
        case EXPOSURE_TIME:
        case EXPOSURE_ACTUAL: {
            auto attributes = Follow(f, Exposure(f), 1);
            // A host does not start a camera whose exposure it can't read: 0 stands for one that nobody knows.
            if (!attributes) return Number(EntryAccess::kReadOnly, 0, 0, 0);
            if (index == EXPOSURE_ACTUAL) attributes->access = EntryAccess::kReadOnly;
            return attributes;
        }
        case VGA_GAIN: {
            const std::string name = Gain(f);
            const auto bounds = f.BoundsOf(name);
            const auto gain = f.Number(name);
            if (!bounds || !gain || !std::isfinite(bounds->maximum - bounds->minimum)) return std::nullopt;
            return Number(EntryAccess::kWritable, 0, kGainSteps, GainStep(*gain, *bounds));
        }
        case OB_LEVEL:
            return Follow(f, BlackLevel(f), 1);
        case SENSOR_TEMP: {
            if (Temperature(f).empty()) return std::nullopt;
            return kit::StandardAttributes(index);
        }
        case FRAME_RATE: {
            auto attributes = Follow(f, RateSet(f), kMilli);
            if (!attributes && !RateNow(f).empty()) attributes = kit::StandardAttributes(index);
            return attributes;
        }
        case FRAME_TIME:
            if (RateNow(f).empty()) return std::nullopt;
            return kit::StandardAttributes(index);
        case HW_TRIG_SOURCE:
            return Number(EntryAccess::kWritable, 0, static_cast<int>(session.TriggerLines().size()), 0);
        case HW_TRIG_POLARITY:
            return Number(EntryAccess::kWritable, 0, f.HasChoice("TriggerActivation", "FallingEdge") ? 1 : 0, 0);
        default:
            return std::nullopt;
    }
}

int GigeCamera::ReadText(int index, CameraSession& session, std::string& text) const {
    GenicamFeatures& f = session.Features();
    const FoundCamera facts = Facts();
    switch (index) {
        case HW_MODEL:
            text = facts.model;
            break;
        case SERIAL_NUMBER:
            text = facts.serial;
            break;
        case FW_VERSION:
            text = f.Text("DeviceFirmwareVersion").value_or(f.Text("DeviceVersion").value_or(""));
            break;
        case CAMERA_NAME:
            text = f.Text("DeviceUserID").value_or("");
            if (text.empty()) text = facts.model;
            break;
        case CFA_TYPE:
            text = "Bayer";
            break;
        case CCM_OUTPUT_COLOR_SPACE:
            text = "CCIR 709";
            break;
        default:
            text = "none";
            break;
    }
    text = Readable(text.c_str());
    return 0;
}

int GigeCamera::Read(int index, kit::Value& value) {
    const Session session = Opened();
    if (!session) return kExceptionIncompleteData;
    GenicamFeatures& f = session->Features();
    int refused = 0;
    switch (index) {
        case EXPOSURE_TIME:
        case EXPOSURE_ACTUAL:
            if (const std::string name = Exposure(f); !name.empty()) refused = ReadScaled(f, name, 1, value);
            break;
        case VGA_GAIN: {
            const std::string name = Gain(f);
            const auto bounds = f.BoundsOf(name);
            const auto gain = f.Number(name);
            refused = bounds && gain ? 0 : kExceptionIncompleteData;
            if (!refused) value = GainStep(*gain, *bounds);
            break;
        }
        case OB_LEVEL:
            refused = ReadScaled(f, BlackLevel(f), 1, value);
            break;
        case SENSOR_TEMP:
            refused = ReadScaled(f, Temperature(f), kTenths, value);
            break;
        case FRAME_RATE:
            refused = ReadScaled(f, RateNow(f), kMilli, value);
            break;
        case FRAME_TIME: {
            const double rate = f.Number(RateNow(f)).value_or(0);
            refused = rate > 0 ? 0 : kExceptionIncompleteData;
            if (!refused) value = Whole(kMicro / rate);
            break;
        }
        default:
            if (auto* const text = std::get_if<std::string>(&value)) refused = ReadText(index, *session, *text);
            break;
    }
    LookAfter(session);
    return refused;
}

int GigeCamera::Write(int index, kit::Value& value) {
    const Session session = Opened();
    if (!session) return kExceptionIncompleteData;
    GenicamFeatures& f = session->Features();
    int refused = 0;
    switch (index) {
        case EXPOSURE_TIME:
            refused = WriteScaled(f, Exposure(f), 1, value);
            break;
        case VGA_GAIN: {
            const std::string name = Gain(f);
            const auto bounds = f.BoundsOf(name);
            const bool set = bounds && f.SetNumber(name, GainOf(std::get<int>(value), *bounds));
            refused = set ? Read(index, value) : kExceptionChange;
            break;
        }
        case OB_LEVEL:
            refused = WriteScaled(f, BlackLevel(f), 1, value);
            break;
        case FRAME_RATE:
            // Aravis knows what else cameras want to be set for a rate to count.
            f.Do("AcquisitionFrameRate", [&](ArvCamera* camera, GError** error) {
                arv_camera_set_frame_rate(camera, std::get<int>(value) / kMilli, error);
            });
            refused = WriteScaled(f, RateSet(f), kMilli, value);
            break;
        case CAMERA_NAME:
            refused = f.SetText("DeviceUserID", std::get<std::string>(value)) ? 0 : kExceptionChange;
            break;
        case HW_TRIG_SOURCE:
            m_TriggerLine = std::get<int>(value);
            break;
        case HW_TRIG_POLARITY:
            m_TriggerLow = std::get<int>(value) == 1;
            break;
        default:
            break;
    }
    LookAfter(session);
    return refused;
}

// "link"; "get NAME", "set NAME VALUE", "do NAME": any feature of the camera.
std::optional<std::string> GigeCamera::Text(std::string_view command) {
    const auto word = [&command] {
        command.remove_prefix(std::min(command.find_first_not_of(' '), command.size()));
        const std::size_t end = std::min(command.find(' '), command.size());
        const std::string taken(command.substr(0, end));
        command.remove_prefix(std::min(end + 1, command.size()));
        return taken;
    };
    const Session session = Opened();
    const std::string verb = word();
    const std::string name = word();
    if (!session) return std::nullopt;
    GenicamFeatures& f = session->Features();
    std::optional<std::string> reply;
    if (verb == "link" && name.empty()) {
        reply = session->LinkText();
    } else if (verb == "get" && !name.empty()) {
        const auto number = f.Number(name);
        const auto text = number ? std::nullopt : f.Text(name.c_str());
        reply = number ? std::to_string(*number) : text ? Readable(text->c_str()) : "ERR no such feature can be read";
    } else if (verb == "set" && !name.empty()) {
        reply = SetFeature(*session, name, std::string(command));
    } else if (verb == "do" && !name.empty()) {
        reply = f.Execute(name.c_str()) ? "OK" : "ERR " + f.LastError();
    }
    LookAfter(session);
    return reply;
}

std::string GigeCamera::SetFeature(CameraSession& session, const std::string& name, const std::string& value) {
    GenicamFeatures& f = session.Features();
    for (const char* const kept : {"Width", "Height", "Offset", "Binning", "Decimation", "Acquisition", "Trigger"}) {
        if (name.starts_with(kept) && !name.starts_with("AcquisitionFrameRate")) {
            return "ERR " + name + " is looked after by the library";
        }
    }
    if (name == "PixelFormat") {
        try {
            session.SetFormat(value);
            return "OK";
        } catch (const Failure& failure) {
            return std::string("ERR ") + failure.what();
        }
    }
    double number = 0;
    const auto parsed = std::from_chars(value.data(), value.data() + value.size(), number);
    const bool is_number = parsed.ec == std::errc{} && parsed.ptr == value.data() + value.size();
    if (is_number && f.SetNumber(name, number)) return "OK";
    if (f.SetText(name.c_str(), value)) return "OK";
    return "ERR " + (f.LastError().empty() ? "no such feature" : f.LastError());
}

}  // namespace zel::gige
