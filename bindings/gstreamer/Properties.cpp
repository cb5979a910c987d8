#include "bindings/gstreamer/Properties.h"

#include <type_traits>

namespace zel::gst {

namespace {

constexpr auto kAtRest = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_READY);
constexpr auto kAnyTime =
    static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING);
constexpr auto kReadOnly = static_cast<GParamFlags>(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS);

// A day, beyond what cameras expose.
constexpr guint kLongestExposure = 4000000000u;

GType ModeType() {
    static const GEnumValue values[] = {
        {static_cast<gint>(Order::every), "Each frame, in order", "every"},
        {static_cast<gint>(Order::newest), "The newest frame; older ones that wait are passed over", "newest"},
        {0, nullptr, nullptr},
    };
    static const GType type = g_enum_register_static("ZelSrcMode", values);
    return type;
}

GType TriggerType() {
    static const GEnumValue values[] = {
        {static_cast<gint>(zel::Trigger::as_set), "Frame follows frame", "free-run"},
        {static_cast<gint>(zel::Trigger::software), "The action signal 'trigger' takes a frame", "software"},
        {static_cast<gint>(zel::Trigger::hardware), "The camera's trigger input takes a frame", "hardware"},
        {0, nullptr, nullptr},
    };
    static const GType type = g_enum_register_static("ZelSrcTrigger", values);
    return type;
}

// Hands the setting of a property to `use`, with the word that GLib has for its type.
template <class AnySettings, class Use>
bool WithSetting(AnySettings& settings, guint id, const Use& use) {
    switch (id) {
        case kPropertyCamera:
            return use(settings.camera);
        case kPropertyPlugins:
            return use(settings.plugins);
        case kPropertyExposure:
            return use(settings.exposure_us);
        case kPropertyGain:
            return use(settings.gain);
        case kPropertyMode:
            return use(settings.order);
        case kPropertyTrigger:
            return use(settings.trigger);
        case kPropertyRoi:
            return use(settings.roi);
        case kPropertyBinning:
            return use(settings.binning);
        case kPropertySettings:
            return use(settings.parameters);
        case kPropertyBuffers:
            return use(settings.buffers);
        case kPropertyCalibrated:
            return use(settings.calibrated);
        case kPropertyColor:
            return use(settings.color);
        case kPropertyScale:
            return use(settings.scale);
        case kPropertyReconnect:
            return use(settings.reconnect);
        case kPropertyZeroCopy:
            return use(settings.zero_copy);
        default:
            return false;
    }
}

}  // namespace

void InstallProperties(GObjectClass* object_class) {
    const auto text = [object_class](Property id, const char* name, const char* blurb, const char* standard) {
        g_object_class_install_property(object_class, id, g_param_spec_string(name, name, blurb, standard, kAtRest));
    };
    const auto on_off = [object_class](Property id, const char* name, const char* blurb, bool standard) {
        g_object_class_install_property(object_class, id, g_param_spec_boolean(name, name, blurb, standard, kAtRest));
    };
    const auto choice = [object_class](Property id, const char* name, const char* blurb, GType type) {
        g_object_class_install_property(object_class, id, g_param_spec_enum(name, name, blurb, type, 0, kAtRest));
    };
    text(kPropertyCamera, "camera", "Number or serial number of the camera", "0");
    text(kPropertyPlugins, "plugins", "Where cameras come from: sim, gige or a folder; for the whole program", "");
    g_object_class_install_property(
        object_class, kPropertyExposure,
        g_param_spec_uint("exposure", "exposure", "Exposure time in microseconds; 0: as the camera is set", 0,
                          kLongestExposure, 0, kAnyTime));
    g_object_class_install_property(
        object_class, kPropertyGain,
        g_param_spec_int("gain", "gain", "Amplifier gain in the camera's steps; -1: as the camera is set", -1, 65535,
                         -1, kAnyTime));
    choice(kPropertyMode, "mode", "Which of the frames that wait comes next", ModeType());
    choice(kPropertyTrigger, "trigger", "What starts a frame", TriggerType());
    text(kPropertyRoi, "roi", "Region of interest: x,y,width,height in sensor pixels; empty: as the camera is set", "");
    text(kPropertyBinning, "binning", "So many sensor pixels become one: x,y; empty: as the camera is set", "");
    text(kPropertySettings, "settings", "Any parameters: NAME=VALUE;NAME=VALUE (zelcam params lists them)", "");
    g_object_class_install_property(
        object_class, kPropertyBuffers,
        g_param_spec_uint("buffers", "buffers", "Image buffers of the camera; 0: as it is set", 0, 65535, 0, kAtRest));
    on_off(kPropertyCalibrated, "calibrated", "Open the camera with the tables that even out its taps", false);
    on_off(kPropertyColor, "color", "Color pictures from a color camera; off: the mosaic of its filters", true);
    on_off(kPropertyScale, "scale", "GRAY16 fills all 16 bits, so that it looks right; off: raw counts", true);
    on_off(kPropertyReconnect, "reconnect", "A lost link is waited for; off: it is an error", false);
    on_off(kPropertyZeroCopy, "zero-copy", "Buffers are the camera's memory, and the camera is open while one is held",
           false);
    g_object_class_install_property(
        object_class, kPropertyBits,
        g_param_spec_uint("bits", "bits", "Significant bits of the camera's samples; 0: not open", 0, 16, 0,
                          kReadOnly));
    g_object_class_install_property(
        object_class, kPropertyDropped,
        g_param_spec_uint64("dropped", "dropped", "Frames that were lost since the camera was opened", 0, G_MAXUINT64,
                            0, kReadOnly));
    g_object_class_install_property(
        object_class, kPropertyStats,
        g_param_spec_boxed("stats", "stats", "Frames: handed over, and by cause those that were not",
                           GST_TYPE_STRUCTURE, kReadOnly));
}

bool StoreProperty(Settings& settings, guint id, const GValue* value) {
    return WithSetting(settings, id, [value]<class Type>(Type& setting) {
        if constexpr (std::is_same_v<Type, std::string>) {
            const char* const text = g_value_get_string(value);
            setting = text ? text : "";
        } else if constexpr (std::is_enum_v<Type>) {
            setting = static_cast<Type>(g_value_get_enum(value));
        } else if constexpr (std::is_same_v<Type, bool>) {
            setting = g_value_get_boolean(value) != FALSE;
        } else if constexpr (std::is_same_v<Type, int>) {
            setting = g_value_get_int(value);
        } else {
            setting = g_value_get_uint(value);
        }
        return true;
    });
}

bool LoadProperty(const Settings& settings, guint id, GValue* value) {
    return WithSetting(settings, id, [value]<class Type>(const Type& setting) {
        if constexpr (std::is_same_v<Type, std::string>) {
            g_value_set_string(value, setting.c_str());
        } else if constexpr (std::is_enum_v<Type>) {
            g_value_set_enum(value, static_cast<gint>(setting));
        } else if constexpr (std::is_same_v<Type, bool>) {
            g_value_set_boolean(value, setting);
        } else if constexpr (std::is_same_v<Type, int>) {
            g_value_set_int(value, setting);
        } else {
            g_value_set_uint(value, setting);
        }
        return true;
    });
}

}  // namespace zel::gst
