// Objects of classes derived from the public interfaces, so that a compiler lays their virtual tables out.
#include "ZelCamera.h"
#include "ZelSDK.h"
#include "ZelUtil.h"

struct SdkProbe : ZelSDK {};
struct CameraProbe : ZelColorCamera {};
struct UtilProbe : ZelUtil {
    bool SaveTIFF(const char*, ZelImage*) override { return false; }
    bool SavePNG(const char*, ZelImage*) override { return false; }
};

SdkProbe sdk_probe;
CameraProbe camera_probe;
UtilProbe util_probe;
