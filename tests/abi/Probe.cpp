// Objects of classes derived from the interfaces, so that a compiler lays their virtual tables out. NAMEProbe is for
// the interface NAME.
#include "ZelCameraInternal.h"
#include "ZelSDK.h"
#include "ZelUtil.h"
#include "link/ICameraInterface.h"
#include "link/IZelCameraCommon.h"

struct ZelSDKProbe : ZelSDK {};
struct ZelCameraInternalProbe : ZelCameraInternal {};
struct ZelUtilProbe : ZelUtil {
    bool SaveTIFF(const char*, ZelImage*) override { return false; }
    bool SavePNG(const char*, ZelImage*) override { return false; }
};

ZelSDKProbe sdk_probe;
ZelCameraInternalProbe camera_probe;
ZelUtilProbe util_probe;

// Their operations have no bodies; a constructor alone asks for the table.
struct ICameraInterfaceProbe : ICameraInterface {
    ICameraInterfaceProbe();
};
struct IZelCameraCommonProbe : IZelCameraCommon {
    IZelCameraCommonProbe();
};
ICameraInterfaceProbe::ICameraInterfaceProbe() = default;
IZelCameraCommonProbe::IZelCameraCommonProbe() = default;
