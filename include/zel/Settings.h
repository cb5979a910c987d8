/// @file
/// The settings that programs use most, with the types of their values:
///
///     camera.set(zel::settings::exposure, 20ms);
///     if (camera.get(zel::settings::temperature) > -20.0) ...
#ifndef ZEL_LAYER_SETTINGS_H
#define ZEL_LAYER_SETTINGS_H

#include <chrono>
#include <concepts>
#include <string>

#include "zel/Error.h"
#include "zel/ParameterValue.h"

namespace zel {

/// A parameter and the type of its value.
template <class Value>
struct Setting {
    unsigned id;  ///< ZEL_PARAM_...
};

/// Degrees Celsius; the camera counts tenths.
struct Celsius {
    double degrees = 0.0;  ///< degrees Celsius

    /// As a number.
    operator double() const { return degrees; }
};

namespace settings {

inline constexpr Setting<std::chrono::microseconds> exposure{ZEL_PARAM_EXPOSURE_TIME_US};  ///< exposure time
inline constexpr Setting<unsigned> gain{ZEL_PARAM_GAIN};  ///< amplifier gain, in the camera's steps
inline constexpr Setting<unsigned> black_level{ZEL_PARAM_OPTICAL_BLACK_LEVEL};  ///< counts of a sample in the dark
/// Image buffers in the pool, for the next start.
inline constexpr Setting<unsigned> buffers{ZEL_PARAM_NUM_IMAGE_BUFFERS};
/// Region of interest and binning, for the next start; Camera::set_region() and set_binning() check them first.
inline constexpr Setting<ZelRoiBin> region_and_binning{ZEL_PARAM_ROI_BIN};
inline constexpr Setting<unsigned> taps_index{ZEL_PARAM_TAPS_INDEX};  ///< number of taps: 0, 1, 2 = 1, 2, 4
/// The pixel clock: 0 = 20 MHz, 1 = 40 MHz.
inline constexpr Setting<unsigned> readout_speed_index{ZEL_PARAM_READOUT_SPEED_INDEX};
/// The trigger input: 0 = off.
inline constexpr Setting<unsigned> trigger_source{ZEL_PARAM_HW_TRIG_SOURCE};
inline constexpr Setting<unsigned> trigger_polarity{ZEL_PARAM_HW_TRIG_POLARITY};  ///< 1 = active low
/// A text of up to 31 characters that is kept in the camera.
inline constexpr Setting<std::string> camera_name{ZEL_PARAM_GLOBAL_CAMERA_NAME};

/// Columns of the sensor. This one and the next ones are read-only.
inline constexpr Setting<unsigned> sensor_width{ZEL_PARAM_HSIZE};
inline constexpr Setting<unsigned> sensor_height{ZEL_PARAM_VSIZE};                     ///< rows of the sensor
inline constexpr Setting<unsigned> bits{ZEL_PARAM_BITS_PER_PIXEL};                     ///< significant bits of a sample
inline constexpr Setting<std::chrono::microseconds> frame_time{ZEL_PARAM_FRAME_TIME};  ///< from frame to frame
inline constexpr Setting<std::chrono::microseconds> readout_time{ZEL_PARAM_READOUT_TIME};  ///< to read a frame out
inline constexpr Setting<Celsius> temperature{ZEL_PARAM_TEMPERATURE};                      ///< the sensor's
inline constexpr Setting<std::string> model{ZEL_PARAM_HW_MODEL};                           ///< its model
inline constexpr Setting<std::string> firmware{ZEL_PARAM_FW_VER};                          ///< version of its firmware
inline constexpr Setting<std::string> color_filter{ZEL_PARAM_COLOR_FILTER_TYPE};           ///< empty without one
inline constexpr Setting<Matrix> white_balance{ZEL_PARAM_DEFAULT_WHITE_BALANCE_MATRIX};    ///< nine numbers, row by row

}  // namespace settings

namespace detail {

template <class Value>
Value value_as(const ParameterValue& value) {
    if constexpr (std::same_as<Value, Celsius>) {
        return {static_cast<double>(value.integer()) / 10.0};
    } else if constexpr (std::same_as<Value, std::string>) {
        return trimmed(value.text());
    } else if constexpr (std::same_as<Value, ZelRoiBin>) {
        return value.region();
    } else if constexpr (std::same_as<Value, Matrix>) {
        return value.matrix();
    } else {
        return static_cast<Value>(value.integer());
    }
}

// What Parameter::set() takes for it.
template <class Value>
auto value_to_set(const Value& value) {
    if constexpr (requires { value.count(); }) {
        return static_cast<long long>(value.count());
    } else {
        return value;
    }
}

}  // namespace detail

}  // namespace zel

#endif
