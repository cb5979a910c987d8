// **  Takes one frame with the first camera and saves it as frame.tif, without the C++ layer: the classic interface,
// which any C++ compiler reads. Notifications come on the transport's thread.
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>

#include "ZelCamera.h"
#include "ZelSDK.h"
#include "ZelUtil.h"

namespace {

struct Arrivals {
    std::mutex mutex;
    std::condition_variable changed;
    int frames = 0;
};

void ZEL_CALL arrived(int, void* context) {
    auto* const arrivals = static_cast<Arrivals*>(context);
    const std::lock_guard lock(arrivals->mutex);
    ++arrivals->frames;
    arrivals->changed.notify_one();
}

bool wait_for_frame(Arrivals& arrivals) {
    std::unique_lock lock(arrivals.mutex);
    return arrivals.changed.wait_for(lock, std::chrono::seconds(10), [&] { return arrivals.frames > 0; });
}

// Null, or what went wrong.
const char* take_frame(ZelSDK* sdk) {
    Arrivals arrivals;
    if (!sdk->Open() || sdk->GetNumberOfCameras() == 0) return "no camera found";
    ZelCamera* const camera = sdk->GetCamera(0);
    if (!camera || !camera->Open()) return "camera 0 can't be opened";
    const int exposure_us = 20000;
    camera->SetParameter(ZEL_PARAM_EXPOSURE_TIME_US, &exposure_us);
    camera->SetImageNotificationCallback(arrived, &arrivals);
    const bool came = camera->Start() && wait_for_frame(arrivals);
    const bool saved = came && sdk->GetUtil()->SaveTIFF("frame.tif", camera->GetPendingImage());
    camera->Close();  // before `arrivals` are gone: no notification comes any more
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
