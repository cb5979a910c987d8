// Takes one frame with the first camera and saves it as frame.tif.
#include <chrono>
#include <cstdio>
#include <semaphore>

#include "ZelCamera.h"
#include "ZelSDK.h"
#include "ZelUtil.h"

void Arrived(int, void* frames) { static_cast<std::counting_semaphore<>*>(frames)->release(); }

int End(const char* message, int exit_code) {
    std::puts(message);
    zel_destroy_sdk(zel_create_sdk());  // closes the cameras, too
    return exit_code;
}

int main() {
    std::counting_semaphore<> frames{0};
    ZelSDK* sdk = zel_create_sdk();
    if (!sdk || !sdk->Open() || sdk->GetNumberOfCameras() == 0) return End("no camera found", 1);
    ZelCamera* camera = sdk->GetCamera(0);
    if (!camera || !camera->Open()) return End("camera 0 can't be opened", 1);
    const int exposure_us = 20000;
    camera->SetParameter(ZEL_PARAM_EXPOSURE_TIME_US, &exposure_us);
    camera->SetImageNotificationCallback(Arrived, &frames);
    if (!camera->Start() || !frames.try_acquire_for(std::chrono::seconds(10))) return End("no frame came", 1);
    const bool saved = sdk->GetUtil()->SaveTIFF("frame.tif", camera->GetPendingImage());
    return saved ? End("frame.tif is written", 0) : End("frame.tif can't be written", 1);
}
