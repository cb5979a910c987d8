// An application that was built long ago: its headers are those in frozen/. On Windows as Microsoft's compiler would
// build it: compiled for that compiler's target, linked without any run-time library. It calls the library through the
// C++ interfaces and through the slots by number, and expects the same answers. Every line of output is one check; the
// exit code is the number of failed ones.
#include "OldApplicationSupport.h"
#include "ZelCamera.h"
#include "ZelSDK.h"
#include "ZelUtil.h"

namespace {

// With the conventions that the header declares.
struct EntryPoints {
    decltype(&zel_create_sdk) create;
    decltype(&zel_destroy_sdk) destroy;
    decltype(&zel_set_camera_connect_callback) set_callback;
    decltype(&get_version_str) version, decorated_version;
};

void ZEL_CALL Ignore(int, int, const char*, const char*, const char*, void*) {}

bool FindEntryPoints(EntryPoints& entry) {
    void* library = LoadLibraryA(kLibrary);
    Check("the library is found", library != nullptr);
    if (!library) return false;
    const auto find = [&](auto& function, const char* name) {
        function = reinterpret_cast<decltype(+function)>(GetProcAddress(library, name));
    };
    find(entry.create, "zel_create_sdk");
    find(entry.destroy, "zel_destroy_sdk");
    find(entry.set_callback, "zel_set_camera_connect_callback");
    find(entry.version, "get_version_str");
    find(entry.decorated_version, kDecoratedVersion);
    const bool all = entry.create && entry.destroy && entry.set_callback && entry.version && entry.decorated_version;
    Check("five entry points", all);
    return all;
}

void CheckUtil(ZelSDK* sdk) {
    ZelUtil* util = sdk->GetUtil();
    Check("GetUtil", util && Slot<ZelUtil*>(sdk, 14) == util);
    if (!util) return;
    Check("SaveTIFF refuses a null image", !util->SaveTIFF("none.tif", nullptr));
    Check("SaveTIFF, slot 1", !Slot<bool, const char*, ZelImage*>(util, 1, "none.tif", nullptr));
    Check("SavePNG, slot 2", !Slot<bool, const char*, ZelImage*>(util, 2, "none.png", nullptr));
}

// Arguments that the called side must take off the stack: a wrong convention would end the loop badly.
void CheckReserved(ZelSDK* sdk) {
    for (int round = 0; round < 1000; ++round) {
        if (Slot<long long, int, int>(sdk, 9, 1, 2) != 0 || Slot<int>(sdk, 10) != 0 || Slot<int>(sdk, 11) != 0 ||
            !Slot<bool>(sdk, 12) || !Slot<bool, int, int, int>(sdk, 13, 1, 2, 3)) {
            Check("reserved slots 9 to 13", false);
            return;
        }
    }
    Check("reserved slots 9 to 13", sdk->Reserved1(1, 2) == 0 && sdk->Reserved5(1, 2, 3));
}

void CheckTexts(ZelSDK* sdk, int number) {
    Check("texts of a camera",
          Slot<const char*, int>(sdk, 5, number) == sdk->GetCameraInterfaceTypeStr(number) &&
              Slot<const char*, int, int>(sdk, 6, number, 0) == sdk->GetCameraAddressStr(number, 0) &&
              Slot<const char*, int>(sdk, 7, number) == sdk->GetCameraName(number) &&
              Slot<const char*, int>(sdk, 8, number) == sdk->GetCameraSerialNumStr(number));
}

void CheckClosedCamera(ZelCamera* camera) {
    int by_slot = 77, by_name = 77;
    Check("IsOpen, slot 3", Slot<bool, int*>(camera, 3, &by_slot) && by_slot == 0);
    Check("IsOpen", camera->IsOpen(&by_name) && by_name == 0 && !camera->IsOpen(nullptr));
    Check("GetDataTypeSize, slot 6", Slot<int, int>(camera, 6, 5) == 8 && camera->GetDataTypeSize(3) == 4);
    Check("GetParameterValue, slot 8", Slot<int, unsigned>(camera, 8, 74u) == 0);
    Check("reserved slots 19, 20, 27",
          Slot<int>(camera, 19) == 0 && Slot<int>(camera, 20) == 0 && Slot<bool, int, int, int>(camera, 27, 1, 2, 3));
    Check("ClearLastError, slot 26", Slot<bool>(camera, 26));
    Check("GetLastError, slot 25", Slot<int>(camera, 25) == ZEL_NO_ERROR && camera->GetLastError() == ZEL_NO_ERROR);
    CheckTextStart("GetLastErrorStr, slot 24", Slot<const char*>(camera, 24), "ZEL_NO_ERROR");
    Check("GetPendingImage, slot 12", Slot<ZelImage*>(camera, 12) == nullptr && !camera->FreeImage(nullptr));
    Check("reserved slot 38",
          Slot<bool>(camera, 37 + kDestructorSlots) && static_cast<ZelColorCamera*>(camera)->Reserved38());
}

volatile int g_HandedOver = 0;  // set on another thread
int g_Context = 0;

void ZEL_CALL NoteFrame(ZelImage* image, void* context) {
    const auto* seen = static_cast<ZelColorImage*>(image);
    if (context == &g_Context && seen->pixels && seen->buffer_size >= seen->size_in_bytes) g_HandedOver = 1;
}

void CheckFrame(ZelCamera* camera, int width) {
    g_HandedOver = 0;  // the camera before may have brought more than one
    Check("SetImageCallback", camera->SetImageCallback(&NoteFrame, &g_Context));
    Check("Start", camera->Start());
    for (int waited_ms = 0; !g_HandedOver && waited_ms < 10000; ++waited_ms) Wait(1);
    Check("the image callback was called", g_HandedOver > 0);
    ZelImage* image = camera->GetPendingImage();
    Check("a frame", image != nullptr);
    if (image) {
        const unsigned w = image->w, h = image->h;
        Check("its record", w == static_cast<unsigned>(width) && image->x_pixels == w && image->num_pixels == w * h &&
                                image->bytes_per_pixel == 2 && image->size_in_bytes == 2 * w * h && image->x_bin == 1 &&
                                image->exposure_time_us > 0 && image->pixels[w * h - 1] >> image->bit_depth == 0);
        Check("FreeImage", camera->FreeImage(image));
    }
    Check("Stop", camera->Stop());
}

void CheckOpenCamera(ZelCamera* camera) {
    Check("Open, slot 1", Slot<bool>(camera, 1));
    int open = 0;
    Check("IsOpen of an open camera", camera->IsOpen(&open) && open == 1);
    const int width = camera->GetParameterValue(ZEL_PARAM_HSIZE);
    Check("GetParameterValue of an open camera", width > 0 && Slot<int, unsigned>(camera, 8, ZEL_PARAM_HSIZE) == width);
    // The count goes to the transport, which counts down as frames come.
    const auto near = [](int left, int count) { return left <= count && left > count - 900; };
    Check("Start with a count, slot 16",
          Slot<bool, int>(camera, 16, 5000) && near(camera->QueryTransportValue(), 5000));
    Check("Start with a count", camera->Start(3000) && near(Slot<int>(camera, 21), 3000));
    Check("SetTransportValue, slot 22", Slot<bool, int>(camera, 22, 0));
    Check("Start, slot 17", Slot<bool>(camera, 17));
    Check("the camera runs", camera->GetParameterValue(ZEL_PARAM_CAMSTATE) == 2);
    Check("Stop, slot 18", Slot<bool>(camera, 18));
    CheckFrame(camera, width);
    Check("Close, slot 2", Slot<bool>(camera, 2));
}

void CheckSdk(const EntryPoints& entry, ZelSDK* sdk) {
    Check("zel_create_sdk again", entry.create() == sdk);
    Check("callback before Open", entry.set_callback(&Ignore, nullptr) == 0);
    Check("no cameras before Open", sdk->GetNumberOfCameras() == 0 && Slot<int>(sdk, 3) == 0);
    Check("no camera object before Open", !sdk->GetCamera(0) && !Slot<ZelCamera*, int>(sdk, 4, 0));
    CheckReserved(sdk);
    CheckUtil(sdk);
    Check("Open", sdk->Open() && Slot<bool>(sdk, 1));
    Check("callback after Open", entry.set_callback(&Ignore, nullptr) == 1);

    const int cameras = sdk->GetNumberOfCameras();
    Check("GetNumberOfCameras, slot 3", cameras > 0 && cameras <= 8 && Slot<int>(sdk, 3) == cameras);
    Check("GetCamera(8)", sdk->GetCamera(8) == nullptr);
    for (int number = 0; number < cameras; ++number) {
        ZelCamera* camera = sdk->GetCamera(number);
        Check("GetCamera, slot 4", camera && Slot<ZelCamera*, int>(sdk, 4, number) == camera);
        CheckTexts(sdk, number);
        if (!camera) continue;
        CheckClosedCamera(camera);
        CheckOpenCamera(camera);
    }
    Check("Close, slot 2", Slot<bool>(sdk, 2) && sdk->Close());
}

}  // namespace

PROGRAM {
    EntryPoints entry;
    if (FindEntryPoints(entry)) {
        CheckTextStart("version text", entry.version(), "zel_sdk.dll         - 3.6.0.0.");
        CheckTextStart("build version", entry.decorated_version(), "zel_sdk.dll version 0.000003");
        ZelSDK* sdk = entry.create();
        CheckSdk(entry, sdk);
        entry.destroy(sdk);

        // The destructor's slot, as an application would call it that leaves the memory alone. GCC's answers nothing.
        sdk = entry.create();
        const void* answer = Slot<void*, unsigned>(sdk, 15, 0u);
        Check("destructor, slot 15", answer == sdk || kDestructorSlots == 2);
    }
    End(g_Failed);
}
