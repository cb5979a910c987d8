/// @file
/// A camera interface library made of back ends. A plug-in derives a class from Plugin, which adds its cameras, and
/// names it once:
///
///     class Gradients : public zel::kit::Plugin {
///       public:
///         explicit Gradients(zel::kit::Cameras& cameras) { cameras.Add(std::make_unique<Gradient>()); }
///     };
///     ZEL_CAMERA_PLUGIN(Gradients, "GigE", "gradients 1.0", CAMERA_TYPE_PLEORA_EBUS)
#ifndef DEVICES_KIT_PLUGIN_H
#define DEVICES_KIT_PLUGIN_H

#include <memory>

#include "devices/kit/BackEnd.h"
#include "link/CameraInterfaceLibrary.h"
#include "link/ICameraInterface.h"

namespace zel::kit {

/// The cameras of one library. A camera keeps its number as long as the library is in use, plugged or not. Every
/// operation may be called on any thread.
class Cameras {
  public:
    /// One more camera, plugged in, behind those there are; the SDK hears of it when it listens. At most 64.
    /// @return its number, or -1: no room or no memory
    virtual int Add(std::unique_ptr<BackEnd> camera) = 0;
    /// A camera came back or went away: an open one hears event 9 or 8, the SDK a connect or disconnect event. A run
    /// ends. Does nothing when it was so already.
    virtual void SetPlugged(int camera, bool plugged) = 0;
    /// Whether a camera is plugged in; false for a number that is none.
    virtual bool Plugged(int camera) const = 0;
    /// How many cameras were added, plugged in or not.
    virtual int Count() const = 0;

  protected:
    ~Cameras() = default;
};

/// What a library does besides its cameras. Made when the SDK first asks for cameras, destroyed by a lib_unload that
/// finds no transport alive, on the SDK's thread, with no lock held; it must join what threads it has. Its cameras and
/// the Cameras object outlive it.
class Plugin {
  public:
    virtual ~Plugin() = default;
    /// The SDK asks how many cameras there are: a chance to look for them. Bounded, a second or two.
    /// @return false: the search failed
    virtual bool Search() { return true; }
};

/// What the macro tells of a library. Texts live as long as it.
struct LibraryFacts {
    const char* interface_type_text;                    ///< kind of link: "GigE"
    const char* version_text;                           ///< name and number, for the SDK's version text
    int interface_type;                                 ///< CAMERA_TYPE_..., the same for all its cameras
    std::unique_ptr<Plugin> (*make)(Cameras& cameras);  ///< makes the library's plug-in
};

/// Of this library; defined by ZEL_CAMERA_PLUGIN.
extern const LibraryFacts kLibraryFacts;

// What the exports call.
namespace detail {

int GetNumCameras();
ICameraInterface* CreateCameraInterface(int camera);
void DestroyCameraInterface(ICameraInterface* transport);
const char* GetCameraAddress(int camera, int select);
const char* GetCameraName(int camera);
const char* GetCameraSerialNumber(int camera);
const char* GetCameraPortType(int camera);
void UnloadLibrary();
void SetConnectionEventCallback(ConnectionEventCallback callback, int context);

}  // namespace detail

}  // namespace zel::kit

/// Makes the exports of this library, once in it. Link with the static library zel_camera_kit (CMake:
/// ZelSDK::CameraKit).
#define ZEL_CAMERA_PLUGIN(Class, interface_type_text, version_text, interface_type) \
    const zel::kit::LibraryFacts zel::kit::kLibraryFacts = {                        \
        interface_type_text, version_text, interface_type,                          \
        [](zel::kit::Cameras& cameras) -> std::unique_ptr<zel::kit::Plugin> {       \
            return std::make_unique<Class>(cameras);                                \
        }};                                                                         \
    ZEL_CAMERA_PLUGIN_EXPORTS

/// The exports alone, for a library that defines its kLibraryFacts by itself.
#define ZEL_CAMERA_PLUGIN_EXPORTS                                                                             \
    ZEL_PLUGIN_EXPORT int ZEL_CALL get_num_cameras() { return zel::kit::detail::GetNumCameras(); }            \
    ZEL_PLUGIN_EXPORT ICameraInterface* ZEL_CALL create_camera_interface(int camera, char*) {                 \
        return zel::kit::detail::CreateCameraInterface(camera);                                               \
    }                                                                                                         \
    ZEL_PLUGIN_EXPORT void ZEL_CALL destroy_camera_interface(ICameraInterface* transport) {                   \
        zel::kit::detail::DestroyCameraInterface(transport);                                                  \
    }                                                                                                         \
    ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_interface_type_str() {                                  \
        return zel::kit::kLibraryFacts.interface_type_text;                                                   \
    }                                                                                                         \
    ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_address_str(int camera, int select) {                   \
        return zel::kit::detail::GetCameraAddress(camera, select);                                            \
    }                                                                                                         \
    ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_name(int camera) {                                      \
        return zel::kit::detail::GetCameraName(camera);                                                       \
    }                                                                                                         \
    ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_serial_num_str(int camera) {                            \
        return zel::kit::detail::GetCameraSerialNumber(camera);                                               \
    }                                                                                                         \
    ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_port_type(int camera) {                                 \
        return zel::kit::detail::GetCameraPortType(camera);                                                   \
    }                                                                                                         \
    ZEL_PLUGIN_EXPORT void ZEL_CALL lib_unload() { zel::kit::detail::UnloadLibrary(); }                       \
    ZEL_PLUGIN_EXPORT void ZEL_CALL set_camera_connection_event_callback(ConnectionEventCallback callback,    \
                                                                         int context) {                       \
        zel::kit::detail::SetConnectionEventCallback(callback, context);                                      \
    }                                                                                                         \
    ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_version_str() { return zel::kit::kLibraryFacts.version_text; } \
    static_assert(true)

#endif
