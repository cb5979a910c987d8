// **  Takes one frame with the first camera and saves it as frame.tif, without the C++ layer: the classic interface,
// which any C++ compiler reads. Notifications come on the transport's thread.
#include <chrono>
#include <cstdio>
#include <semaphore>

#include "ZelCamera.h"
#include "ZelSDK.h"
#include "ZelUtil.h"

namespace {

void ZEL_CALL arrived(int, void* frames) { static_cast<std::counting_semaphore<>*>(frames)->release(); }

// Null, or what went wrong.
const char* take_frame(ZelSDK* sdk) {
    std::counting_semaphore<> frames{0};
    if (!sdk->Open() || sdk->GetNumberOfCameras() == 0) return "no camera found";
    ZelCamera* const camera = sdk->GetCamera(0);
    if (!camera || !camera->Open()) return "camera 0 can't be opened";
    const int exposure_us = 20000;
    camera->SetParameter(ZEL_PARAM_EXPOSURE_TIME_US, &exposure_us);
    camera->SetImageNotificationCallback(arrived, &frames);
    const bool came = camera->Start() && frames.try_acquire_for(std::chrono::seconds(10));
    const bool saved = came && sdk->GetUtil()->SaveTIFF("frame.tif", camera->GetPendingImage());
    camera->Close();  // before `frames` is gone: no notification comes any more
    if (!came) return "no frame came";
    return saved ? nullptr : "frame.tif can't be written";
}

}  // namespace

int main() {
    ZelSDK* const sdk = zel_create_sdk();
    if (!sdk) return 1;
    const char* const failure = take_frame(sdk);
    zel_destroy_sdk(sdk);
    std::puts(failure ? failure : "frame.tif is written");
    return failure ? 1 : 0;
}
