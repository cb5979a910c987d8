// Every operation that an application can call, for threads that call them at random.
#ifndef TESTS_SYSTEM_ANYOPERATION_H
#define TESTS_SYSTEM_ANYOPERATION_H

#include <array>
#include <random>
#include <string>

#include "include/ZelPlugins.h"
#include "include/ZelProgress.h"
#include "include/ZelUsers.h"
#include "include/ZelUtil.h"
#include "tests/system/LifetimeCallbacks.h"

namespace zel::test {

// One thread's choices, and what its calls are given.
struct Caller {
    std::minstd_rand random;
    std::string file;            // in a folder of the test's own
    bool calibrates = false;     // the user's calibration files are not in reach
    CallbackSet* set = nullptr;  // of the camera that is called
    std::array<unsigned char, 1024> data{};

    unsigned Roll(unsigned sides) { return static_cast<unsigned>(random() % sides); }
    int Number(unsigned sides) { return static_cast<int>(Roll(sides)); }
    unsigned Parameter() { return Roll(20) == 0 ? ZEL_PARAM_MODEL_VALUE_1 + Roll(7) : Roll(ZEL_MAX_PARAMS + 1); }
    const float* Matrix() {
        for (float& value : matrix) value = static_cast<float>(Roll(5)) - 2;
        return matrix;
    }
    const unsigned short* Entries() { return Roll(4) ? entries.data() : nullptr; }
    float matrix[9] = {};
    std::array<unsigned short, 48> entries{};
};

// What brings frames, and takes them: half of all calls.
constexpr void (*kFrameOperations[])(ZelCameraInternal&, Caller&) = {
    [](ZelCameraInternal& camera, Caller&) { camera.FreeImage(camera.GetPendingImage()); },
    [](ZelCameraInternal& camera, Caller&) { camera.FreeImage(camera.GetLastPendingImage()); },
    [](ZelCameraInternal& camera, Caller&) { camera.FreeColorImage(camera.GetPendingColorImage()); },
    [](ZelCameraInternal& camera, Caller&) { camera.FreeColorImage(camera.GetLastPendingColorImage()); },
    [](ZelCameraInternal& camera, Caller&) { camera.FreeAllPendingImages(); },
    [](ZelCameraInternal& camera, Caller& by) {
        camera.SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 6 + by.Number(3));
    },
    [](ZelCameraInternal& camera, Caller& by) { LifetimeCallbacks::Install(camera, by.set); },
    [](ZelCameraInternal& camera, Caller&) { camera.Open() && camera.Start(); },
    [](ZelCameraInternal& camera, Caller&) { camera.Start(); },
    [](ZelCameraInternal& camera, Caller& by) { camera.Start(by.Number(9)); },
    [](ZelCameraInternal& camera, Caller&) { camera.Stop(); },
    [](ZelCameraInternal& camera, Caller&) { camera.Close(); },
    [](ZelCameraInternal& camera, Caller&) { camera.Open(); },
    [](ZelCameraInternal& camera, Caller&) { camera.StartTriggerAcquisition(); },
    [](ZelCameraInternal& camera, Caller& by) { camera.StopTriggerAcquisition(by.Number(2)); },
    [](ZelCameraInternal& camera, Caller&) { camera.SoftwareTrigger(); },
};

// All the others of a camera. SendData() and RecvData() alone are missing: nobody else may talk to the camera
// meanwhile.
constexpr void (*kCameraOperations[])(ZelCameraInternal&, Caller&) = {
    [](ZelCameraInternal& camera, Caller& by) {
        camera.IsOpen(by.Roll(9) ? reinterpret_cast<int*>(by.data.data()) : nullptr);
    },
    [](ZelCameraInternal& camera, Caller&) { camera.GetCameraName(); },
    [](ZelCameraInternal& camera, Caller& by) { camera.SetCameraName(by.Roll(2) ? "one" : "another"); },
    [](ZelCameraInternal& camera, Caller& by) { camera.GetDataTypeSize(by.Number(12)); },
    [](ZelCameraInternal& camera, Caller& by) { camera.GetParameter(by.Parameter(), 1024, by.data.data()); },
    [](ZelCameraInternal& camera, Caller& by) { camera.GetParameterValue(by.Parameter()); },
    [](ZelCameraInternal& camera, Caller& by) {
        camera.SetParameterValue(static_cast<int>(by.Parameter()), by.Number(16));
    },
    [](ZelCameraInternal& camera, Caller& by) {
        by.data.fill(0);
        by.data[4 * by.Roll(6)] = static_cast<unsigned char>(by.Roll(16));
        camera.SetParameter(static_cast<int>(by.Parameter()), by.data.data());
    },
    [](ZelCameraInternal& camera, Caller&) { camera.ResetCamera(); },
    [](ZelCameraInternal& camera, Caller&) { camera.QueryTransportValue(); },
    [](ZelCameraInternal& camera, Caller& by) { camera.SetTransportValue(by.Number(9)); },
    [](ZelCameraInternal& camera, Caller&) { camera.SetExposureToDefault(); },
    [](ZelCameraInternal& camera, Caller&) { camera.GetLastErrorStr(); },
    [](ZelCameraInternal& camera, Caller&) { camera.GetLastError(); },
    [](ZelCameraInternal& camera, Caller&) { camera.ClearLastError(); },
    [](ZelCameraInternal& camera, Caller&) { camera.Reserved19() || camera.Reserved20(); },
    [](ZelCameraInternal& camera, Caller&) {
        camera.Reserved27(1, 2, 3) && camera.Reserved38() && camera.Reserved59();
    },
    [](ZelCameraInternal& camera, Caller& by) { camera.SetTextCommand(by.Roll(2) ? "info" : "tb p s"); },
    [](ZelCameraInternal& camera, Caller&) { camera.SetTextCommandCallback(nullptr, nullptr); },
    // The two share the context.
    [](ZelCameraInternal& camera, Caller& by) { camera.SetCameraControlCallback(nullptr, by.set); },
    [](ZelCameraInternal& camera, Caller& by) { camera.SetCameraControlCallbackEx(nullptr, by.set); },
    [](ZelCameraInternal& camera, Caller&) { camera.SetImageNotificationCallback(nullptr, nullptr); },
    [](ZelCameraInternal& camera, Caller&) { camera.SetImageCallback(nullptr, nullptr); },
    [](ZelCameraInternal& camera, Caller& by) { camera.ConcatenateColorTransform(by.Number(12), by.Number(17)); },
    [](ZelCameraInternal& camera, Caller& by) { camera.ConcatenateColorMatrix(by.Matrix()); },
    [](ZelCameraInternal& camera, Caller&) { camera.ResetColorTransform(); },
    [](ZelCameraInternal& camera, Caller& by) { camera.SetInputLinearizationTable(by.Entries(), 16, 3); },
    [](ZelCameraInternal& camera, Caller& by) { camera.SetOutputNonLinearizationTable(by.Entries(), 16, 3); },
    [](ZelCameraInternal& camera, Caller& by) { camera.GetColorTransform(by.matrix); },
    [](ZelCameraInternal& camera, Caller& by) { camera.TapBalanceEnable(by.calibrates && by.Roll(2)); },
    [](ZelCameraInternal& camera, Caller& by) { camera.TapBalanceSelectTable(by.Number(3)); },
    [](ZelCameraInternal& camera, Caller& by) { by.Roll(40) == 0 && camera.TapBalanceLoadDataFromCamera(); },
    [](ZelCameraInternal& camera, Caller& by) { camera.TapBalanceLoadDataFromMasterFile((by.file + "20MHz").c_str()); },
    [](ZelCameraInternal& camera, Caller& by) {
        camera.TapBalanceGetTableConfig(nullptr, reinterpret_cast<int*>(by.data.data()));
    },
    [](ZelCameraInternal& camera, Caller& by) {
        camera.TapBalanceGetTableData(by.Number(4), by.matrix, by.matrix + 1);
    },
    [](ZelCameraInternal& camera, Caller& by) {
        camera.TapBalanceSetTableConfig(by.Number(2), 1 + by.Number(9), 2 + 2 * by.Number(2));
    },
    [](ZelCameraInternal& camera, Caller& by) {
        camera.TapBalanceSetTableData(by.Number(9), static_cast<float>(by.Roll(99)), by.Matrix());
    },
    [](ZelCameraInternal& camera, Caller& by) { by.Roll(40) == 0 && camera.TapBalanceWriteTableConfigToCamera(); },
    [](ZelCameraInternal& camera, Caller& by) { by.Roll(40) == 0 && camera.TapBalanceWriteDataToCamera(); },
    [](ZelCameraInternal& camera, Caller& by) { by.Roll(40) == 0 && camera.TapBalanceFlashTest(); },
    [](ZelCameraInternal& camera, Caller&) { camera.GetLinkThroughput(); },
    [](ZelCameraInternal& camera, Caller&) { camera.GetLinkFrameRate(); },
    [](ZelCameraInternal& camera, Caller&) { camera.GetLinkLatency(); },
    [](ZelCameraInternal& camera, Caller&) { camera.GetLinkUtilization(); },
    [](ZelCameraInternal& camera, Caller&) { camera.GetCameraInterfaceType(); },
    [](ZelCameraInternal& camera, Caller&) { camera.GetScratchBufferCount(); },
    [](ZelCameraInternal& camera, Caller&) { camera.FreeScratchBuffers(); },
    [](ZelCameraInternal& camera, Caller&) { camera.IsMonochrome(); },
    [](ZelCameraInternal& camera, Caller& by) { camera.SetImageAveraging(by.Number(4), by.Number(2)); },
    [](ZelCameraInternal& camera, Caller&) { camera.SetScratchpadCallback(nullptr, nullptr); },
    [](ZelCameraInternal& camera, Caller& by) { camera.ConcatenateScratchpadTransform(by.Number(12), by.Number(17)); },
    [](ZelCameraInternal& camera, Caller& by) { camera.ConcatenateScratchpadMatrix(by.Matrix()); },
    [](ZelCameraInternal& camera, Caller&) { camera.ResetScratchpadTransform(); },
    [](ZelCameraInternal& camera, Caller& by) { camera.SetScratchpadInputLinearizationTable(by.Entries(), 16, 3); },
    [](ZelCameraInternal& camera, Caller& by) { camera.SetScratchpadOutputNonLinearizationTable(by.Entries(), 16, 3); },
    [](ZelCameraInternal& camera, Caller& by) { camera.GetScratchpadTransform(by.matrix); },
    [](ZelCameraInternal& camera, Caller&) { camera.GetCameraInterface(); },
};

// The SDK's, and those of the library. What they answer may change with the next search, so it is not read.
constexpr void (*kSdkOperations[])(ZelSDK&, Caller&) = {
    [](ZelSDK& sdk, Caller&) { sdk.GetNumberOfCameras(); },
    [](ZelSDK& sdk, Caller&) { sdk.Open(); },
    [](ZelSDK& sdk, Caller& by) { sdk.GetCamera(by.Number(9)); },
    [](ZelSDK& sdk, Caller& by) { sdk.GetCameraInterfaceTypeStr(by.Number(9)); },
    [](ZelSDK& sdk, Caller& by) { sdk.GetCameraAddressStr(by.Number(9), by.Number(5)); },
    [](ZelSDK& sdk, Caller& by) { sdk.GetCameraName(by.Number(9)); },
    [](ZelSDK& sdk, Caller& by) { sdk.GetCameraSerialNumStr(by.Number(9)); },
    [](ZelSDK& sdk, Caller&) { sdk.Reserved1(1, 2) || sdk.Reserved2() || sdk.Reserved3(); },
    [](ZelSDK& sdk, Caller&) { sdk.Reserved4() && sdk.Reserved5(1, 2, 3); },
    [](ZelSDK& sdk, Caller& by) { sdk.GetUtil()->SavePNG(by.file.c_str(), nullptr); },
    [](ZelSDK&, Caller&) { zel_create_sdk(); },
    [](ZelSDK&, Caller&) { zel_retain_sdk() ? zel_release_sdk() : void(); },
    [](ZelSDK&, Caller& by) {
        const auto* const camera = reinterpret_cast<const ZelCamera*>(by.entries.data() + by.Roll(2));
        zel_claim_camera(camera) ? zel_release_camera(camera) : void();
    },
    [](ZelSDK&, Caller& by) { zel_set_plugin_folder("sim", reinterpret_cast<char*>(by.data.data()), 1024); },
    [](ZelSDK&, Caller& by) {
        zel_set_progress_callback(
            by.Roll(2) ? [](const char*, const char*, int, void*) {} : ZelProgressCallback(nullptr), nullptr);
    },
    [](ZelSDK&, Caller&) { get_version_str(); },
};

}  // namespace zel::test

#endif
