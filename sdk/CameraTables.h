// The process-wide tables that describe the cameras, indexed by camera number (0 to 7) unless said otherwise.
//
// A camera search writes them under the manager's mutex; hot-plug events write them without it, on a plug-in's thread.
// `lock` keeps the two from mixing their bytes. It is never held while an application, a plug-in or a camera is called.
//
// Who works with the tables is inside `gate`, which is open while the SDK is.
#ifndef SDK_CAMERATABLES_H
#define SDK_CAMERATABLES_H

#include <array>
#include <atomic>
#include <cstdint>
#include <vector>

#include "platform/Locks.h"
#include "platform/Mutex.h"
#include "platform/OperationGate.h"
#include "sdk/CameraRegister.h"
#include "sdk/InterfaceLibrary.h"
#include "sdk/TextSlot.h"

namespace zel {

class ZelCameraManager;

inline constexpr int kMaxCameras = 8;
inline constexpr int kAddressesPerCamera = 3;
inline constexpr int kMaxAddressSelect = 4;
inline constexpr int kPortTypeSelect = 3;  // asks the USB library instead of the table

struct CameraTables {
    // The table of a full house is still indexed by the number of cameras: one guard slot.
    static constexpr int kNameSlots = kMaxCameras + 1;
    static constexpr int kLibraryIndexEntries = kMaxCameras + 1;
    // The last camera's highest address selection.
    static constexpr int kAddressSlots = kAddressesPerCamera * (kMaxCameras - 1) + kMaxAddressSelect + 1;
    static_assert(kAddressSlots == 26);

    platform::Mutex lock;

    // Why `gate` is shut.
    static constexpr unsigned kNotOpen = 1;
    static constexpr unsigned kClosing = 2;
    platform::OperationGate gate;
    // Hot-plug events of each library that are under way.
    std::array<platform::OperationGate, kNumInterfaceLibraries> events;
    // One thread at a time gives a transport a camera object. Held while the transport stores the pointers to it.
    platform::RecursiveLock adopting;

    std::atomic<ZelCameraManager*> manager{nullptr};  // the one instance

    std::array<ZelCamera*, kMaxCameras> _zel_camera_array ZEL_GUARDED_BY(lock){};
    // The texts are under the lock too, by way of StoreText and CopyText; their places are known to applications.
    std::array<TextSlot, kNameSlots> names;
    std::array<TextSlot, kMaxCameras> _zel_camera_interface_type_str;
    std::array<TextSlot, kMaxCameras> serial_numbers;
    std::array<TextSlot, kAddressSlots> addresses;  // three of each camera, one after the other
    // The camera's index within its library.
    std::array<std::uint8_t, kLibraryIndexEntries> camera_library_index ZEL_GUARDED_BY(lock){};
    int number_of_cameras ZEL_GUARDED_BY(lock) = 0;

    // Per library: the number of its first camera, -1 until it is recorded; and its record.
    std::array<int, kNumInterfaceLibraries> _zel_camera_index_offset ZEL_GUARDED_BY(lock);
    std::array<LibraryRecord, kNumInterfaceLibraries> _icamera_libs ZEL_GUARDED_BY(lock){};

    // What plug-ins are handed as a name: one per camera for the search, one for the events of each library. They
    // outlive the call for a plug-in that keeps the pointer.
    std::array<TextSlot, kNameSlots> names_handed_by_search;
    std::array<TextSlot, kNumInterfaceLibraries> names_handed_by_events;

    CameraRegister cameras ZEL_GUARDED_BY(lock);
    unsigned callback_counter ZEL_GUARDED_BY(lock) = 0;  // camera-connect callbacks made, for the log

    // Forgets camera objects and library records, destroys nothing.
    void Init();
    // Forgets what the last camera search found; library records stay.
    void ClearForSearch();
    LibraryRecord Library(int library);
    void StoreText(TextSlot& slot, const char* text);
    TextSlot CopyText(const TextSlot& slot);
    // Asks a library for a transport. The plug-in is handed `handed`, a copy of the name slot, since it reads and
    // writes without the lock; what it writes goes into the slot.
    ICameraInterface* CreateInterface(CreateCameraInterfaceFunction create_camera_interface, int cam_index,
                                      TextSlot& slot, TextSlot& handed);
    // The camera object with this number, which the application may hold from then on.
    ZelCamera* HandOutCamera(std::size_t number);
    // Puts a camera object into the place of another one, wherever that stands.
    void ReplaceCamera(const ZelCamera* old, ZelCamera* camera) ZEL_REQUIRES(lock);
    // Hands out every camera object, those in the tables first; none is entered any more.
    const std::vector<RegisteredCamera>& TakeCameras();
    // Whether the calling thread is inside the tables or any camera object: it may be waited for.
    bool CallerIsInside();

    CameraTables() {
        gate.Shut(kNotOpen);
        _zel_camera_index_offset.fill(-1);
    }
};

CameraTables& Tables();

}  // namespace zel

#endif
