// Default answers of the SDK interface. ZelSDKImpl overrides the first eight.
#include "include/ZelSDK.h"

#include "util/ZelUtilImpl.h"

bool ZelSDK::Open() { return true; }
bool ZelSDK::Close() { return true; }
int ZelSDK::GetNumberOfCameras() { return 0; }
ZelCamera* ZelSDK::GetCamera(int) { return nullptr; }
const char* ZelSDK::GetCameraInterfaceTypeStr(int) { return nullptr; }
const char* ZelSDK::GetCameraAddressStr(int, int) { return nullptr; }
const char* ZelSDK::GetCameraName(int) { return nullptr; }
const char* ZelSDK::GetCameraSerialNumStr(int) { return nullptr; }
long long ZelSDK::Reserved1(int, int) { return 0; }
int ZelSDK::Reserved2() { return 0; }
int ZelSDK::Reserved3() { return 0; }
bool ZelSDK::Reserved4() { return true; }
bool ZelSDK::Reserved5(int, int, int) { return true; }
ZelUtil* ZelSDK::GetUtil() { return zel::UtilInstance(); }
