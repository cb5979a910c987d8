// Default answers of the internal slots.
#include "include/ZelCameraInternal.h"

bool ZelCameraInternal::TapBalanceEnable(bool) { return false; }
bool ZelCameraInternal::TapBalanceSelectTable(int) { return false; }
bool ZelCameraInternal::TapBalanceLoadDataFromCamera() { return false; }
bool ZelCameraInternal::TapBalanceLoadDataFromMasterFile(const char*) { return false; }
bool ZelCameraInternal::TapBalanceGetTableConfig(int*, int*) { return false; }
bool ZelCameraInternal::TapBalanceGetTableData(int, float*, float*) { return false; }
bool ZelCameraInternal::TapBalanceSetTableConfig(int, int, int) { return false; }
bool ZelCameraInternal::TapBalanceSetTableData(int, float, const float*) { return false; }
bool ZelCameraInternal::TapBalanceWriteTableConfigToCamera() { return false; }
bool ZelCameraInternal::TapBalanceWriteDataToCamera() { return false; }
bool ZelCameraInternal::TapBalanceFlashTest() { return false; }
bool ZelCameraInternal::Reserved59() { return true; }
double ZelCameraInternal::GetLinkThroughput() { return 0.0; }
double ZelCameraInternal::GetLinkFrameRate() { return 0.0; }
double ZelCameraInternal::GetLinkLatency() { return 0.0; }
double ZelCameraInternal::GetLinkUtilization() { return 0.0; }
int ZelCameraInternal::GetCameraInterfaceType() { return 0; }
int ZelCameraInternal::SendData(const unsigned char*, int) { return 0; }
int ZelCameraInternal::RecvData(unsigned char*, int, int) { return 0; }
int ZelCameraInternal::GetScratchBufferCount() { return 0; }
bool ZelCameraInternal::FreeScratchBuffers() { return false; }
bool ZelCameraInternal::IsMonochrome() { return true; }
bool ZelCameraInternal::SetImageAveraging(int, int) { return false; }
bool ZelCameraInternal::SetScratchpadCallback(ZelScratchpadCallback, void*) { return false; }
bool ZelCameraInternal::ConcatenateScratchpadTransform(int, int) { return false; }
bool ZelCameraInternal::ConcatenateScratchpadMatrix(const float*) { return false; }
bool ZelCameraInternal::ResetScratchpadTransform() { return false; }
bool ZelCameraInternal::SetScratchpadInputLinearizationTable(const unsigned short*, unsigned, unsigned) {
    return false;
}
bool ZelCameraInternal::SetScratchpadOutputNonLinearizationTable(const unsigned short*, unsigned, unsigned) {
    return false;
}
bool ZelCameraInternal::GetScratchpadTransform(float*) { return false; }
ICameraInterface* ZelCameraInternal::GetCameraInterface() { return nullptr; }
