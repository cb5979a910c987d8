// The exports of a library, and the texts of its cameras.
#include <fmt/format.h>

#include <cstring>
#include <functional>
#include <utility>

#include "tools/zelcam/check/CheckedPlugin.h"

namespace zelcam::check {

namespace {

std::string CheckLoad(CheckedPlugin& plugin, int) {
    const auto library =
        plugin.Watch().Run("loading", [&] { return std::make_shared<const PluginLibrary>(plugin.File()); });
    Require(library->Loaded(), library->Why());
    return library->File();
}

// Whether the library is there is another clause's business.
std::string CheckExports(CheckedPlugin& plugin, int) {
    const PluginLibrary library(plugin.File());
    if (!library.Loaded()) throw Skipped("the library can't be loaded");
    std::string required;
    std::string optional;
    const auto look = [](std::string& missing, auto function, const char* name) {
        if (!function) missing += std::string(missing.empty() ? "" : ", ") + name;
    };
    look(required, library.get_num_cameras, "get_num_cameras");
    look(required, library.create_camera_interface, "create_camera_interface");
    look(required, library.destroy_camera_interface, "destroy_camera_interface");
    look(optional, library.get_camera_interface_type_str, "get_camera_interface_type_str");
    look(optional, library.get_version_str, "get_version_str");
    look(optional, library.get_camera_name, "get_camera_name");
    look(optional, library.get_camera_serial_num_str, "get_camera_serial_num_str");
    look(optional, library.get_camera_port_type, "get_camera_port_type");
    look(optional, library.get_camera_address_str, "get_camera_address_str");
    look(optional, library.lib_unload, "lib_unload");
    look(optional, library.set_camera_connection_event_callback, "set_camera_connection_event_callback");
    Require(required.empty(), "missing: " + required);
    return optional.empty() ? "the eight others, too" : "of the eight others it lacks " + optional;
}

std::string CheckCount(CheckedPlugin& plugin, int) {
    const int count = plugin.CountCameras();
    Require(count >= 0 && count <= kMostCameras, fmt::format("it answers {}", count));
    const int again = plugin.CountCameras();
    Require(again == count, fmt::format("first {}, then {}", count, again));
    return std::to_string(count);
}

std::string CheckUnknownCamera(CheckedPlugin& plugin, int) {
    for (const int camera : {-1, plugin.Cameras(), 1000}) {
        Require(!plugin.Create(camera), fmt::format("it made a transport for camera {}", camera));
    }
    return fmt::format("-1, {} and 1000", plugin.Cameras());
}

using NamedText = std::pair<std::string, std::function<const char*()>>;

void AddCameraTexts(const PluginLibrary& library, int camera, std::vector<NamedText>& texts) {
    const std::pair<const char*, GetCameraTextFunction> kOfCamera[] = {
        {"get_camera_name", library.get_camera_name},
        {"get_camera_serial_num_str", library.get_camera_serial_num_str},
        {"get_camera_port_type", library.get_camera_port_type}};
    for (const auto& [name, function] : kOfCamera) {
        if (function) {
            texts.emplace_back(fmt::format("{}({})", name, camera), [camera, text = function] { return text(camera); });
        }
    }
    for (int select = 0; library.get_camera_address_str && select < 3; ++select) {
        texts.emplace_back(fmt::format("get_camera_address_str({}, {})", camera, select),
                           [=, function = library.get_camera_address_str] { return function(camera, select); });
    }
}

std::vector<NamedText> TextsOf(CheckedPlugin& plugin) {
    const PluginLibrary& library = plugin.Library();
    std::vector<NamedText> texts;
    if (library.get_camera_interface_type_str) {
        texts.emplace_back("get_camera_interface_type_str", library.get_camera_interface_type_str);
    }
    if (library.get_version_str) texts.emplace_back("get_version_str", library.get_version_str);
    for (int camera = 0; camera < plugin.Cameras(); ++camera) AddCameraTexts(library, camera, texts);
    if (texts.empty()) throw Skipped("it exports no texts");
    return texts;
}

std::string CheckTextsEnd(CheckedPlugin& plugin, int) {
    const std::vector<NamedText> texts = TextsOf(plugin);
    for (const auto& [name, function] : texts) {
        const char* const text = function();
        Require(text != nullptr, name + " answers null");
        Require(std::memchr(text, 0, kTextSlot) != nullptr,
                fmt::format("{} is longer than {} bytes", name, kTextSlot - 1));
    }
    return fmt::format("{} texts", texts.size());
}

std::string CheckTextsSteady(CheckedPlugin& plugin, int) {
    const std::vector<NamedText> texts = TextsOf(plugin);
    std::vector<std::string> first;
    for (const auto& [name, function] : texts) {
        const char* const text = function();
        first.emplace_back(text ? text : "");
    }
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const char* const text = texts[i].second();
        Require(first[i] == (text ? text : ""),
                fmt::format("{} is first \"{}\", then \"{}\"", texts[i].first, first[i], text ? text : ""));
    }
    return fmt::format("{} texts", texts.size());
}

std::string CheckUnknownTexts(CheckedPlugin& plugin, int) {
    std::vector<NamedText> texts;
    for (const int camera : {-1, plugin.Cameras(), 1000}) AddCameraTexts(plugin.Library(), camera, texts);
    if (const auto address = plugin.Library().get_camera_address_str) {
        for (const int select : {-1, 3}) {
            texts.emplace_back(fmt::format("get_camera_address_str(0, {})", select),
                               [=] { return address(0, select); });
        }
    }
    if (texts.empty()) throw Skipped("it exports no texts of cameras");
    for (const auto& [name, function] : texts) {
        const char* const text = function();
        Require(!text || std::memchr(text, 0, kTextSlot), name + " has no end");
    }
    return fmt::format("{} questions", texts.size());
}

constexpr Clause kLibraryClauses[] = {
    {"library", "load", "the library can be loaded", false, CheckLoad},
    {"library", "required-exports", "it exports get_num_cameras, create_ and destroy_camera_interface", false,
     CheckExports},
    {"library", "camera-count", "get_num_cameras answers 0 to 8, and the same when asked again", false, CheckCount},
    {"library", "unknown-camera", "create_camera_interface refuses numbers that no camera has", false,
     CheckUnknownCamera},
    {"library", "text-ends", "every text is there and ends within 64 bytes", false, CheckTextsEnd},
    {"library", "text-steady", "a text is the same when asked for again", false, CheckTextsSteady},
    {"library", "unknown-text", "texts of cameras and addresses that are not there do no harm", false,
     CheckUnknownTexts},
};

}  // namespace

std::span<const Clause> LibraryClauses() { return kLibraryClauses; }

}  // namespace zelcam::check
