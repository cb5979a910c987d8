// Default answers of the public camera interfaces. ZelCameraControl overrides what it implements.
#include "include/ZelCamera.h"

bool ZelCamera::Open() { return true; }
bool ZelCamera::Close() { return true; }
bool ZelCamera::IsOpen(int* is_open) { return is_open != nullptr; }
const char* ZelCamera::GetCameraName() { return nullptr; }
bool ZelCamera::SetCameraName(const char*) { return true; }
int ZelCamera::GetDataTypeSize(int) { return 0; }
bool ZelCamera::GetParameter(unsigned, unsigned, void*) { return true; }
int ZelCamera::GetParameterValue(unsigned) { return 0; }
bool ZelCamera::SetParameterValue(int, int) { return true; }
bool ZelCamera::SetParameter(int, const void*) { return true; }
bool ZelCamera::ResetCamera() { return true; }
ZelImage* ZelCamera::GetPendingImage() { return nullptr; }
ZelImage* ZelCamera::GetLastPendingImage() { return nullptr; }
bool ZelCamera::FreeAllPendingImages() { return true; }
bool ZelCamera::FreeImage(ZelImage*) { return false; }
bool ZelCamera::Start(int) { return true; }
bool ZelCamera::Start() { return true; }
bool ZelCamera::Stop() { return true; }
int ZelCamera::Reserved19() { return 0; }
int ZelCamera::Reserved20() { return 0; }
int ZelCamera::QueryTransportValue() { return 0; }
bool ZelCamera::SetTransportValue(int) { return true; }
bool ZelCamera::SetExposureToDefault() { return true; }
const char* ZelCamera::GetLastErrorStr() { return nullptr; }
int ZelCamera::GetLastError() { return 0; }
bool ZelCamera::ClearLastError() { return true; }
bool ZelCamera::Reserved27(int, int, int) { return true; }
bool ZelCamera::SetTextCommand(const char*) { return true; }
bool ZelCamera::SetTextCommandCallback(ZelTextCommandCallback, void*) { return true; }
bool ZelCamera::SetCameraControlCallback(ZelCameraControlCallback, void*) { return true; }
bool ZelCamera::SetCameraControlCallbackEx(ZelCameraControlCallbackEx, void*) { return true; }
bool ZelCamera::SetImageNotificationCallback(ZelImageNotificationCallback, void*) { return true; }
bool ZelCamera::SetImageCallback(ZelImageCallback, void*) { return true; }
bool ZelCamera::StartTriggerAcquisition() { return true; }
bool ZelCamera::StopTriggerAcquisition(int) { return true; }
bool ZelCamera::SoftwareTrigger() { return true; }

bool ZelColorCamera::Reserved38() { return true; }
bool ZelColorCamera::ConcatenateColorTransform(int, int) { return false; }
bool ZelColorCamera::ConcatenateColorMatrix(const float*) { return false; }
bool ZelColorCamera::ResetColorTransform() { return false; }
bool ZelColorCamera::SetInputLinearizationTable(const unsigned short*, unsigned, unsigned) { return false; }
bool ZelColorCamera::SetOutputNonLinearizationTable(const unsigned short*, unsigned, unsigned) { return false; }
bool ZelColorCamera::GetColorTransform(float*) { return false; }
ZelColorImage* ZelColorCamera::GetPendingColorImage() { return nullptr; }
ZelColorImage* ZelColorCamera::GetLastPendingColorImage() { return nullptr; }
bool ZelColorCamera::FreeColorImage(ZelColorImage*) { return false; }
