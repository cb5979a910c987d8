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
    [](auto& camera, auto&) { camera.FreeImage(camera.GetPendingImage()); },
    [](auto& camera, auto&) { camera.FreeImage(camera.GetLastPendingImage()); },
    [](auto& camera, auto&) { camera.FreeColorImage(camera.GetPendingColorImage()); },
    [](auto& camera, auto&) { camera.FreeColorImage(camera.GetLastPendingColorImage()); },
    [](auto& camera, auto&) { camera.FreeAllPendingImages(); },
    [](auto& camera, auto& by) { camera.SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 6 + by.Number(3)); },
    [](auto& camera, auto& by) { LifetimeCallbacks::Install(camera, by.set); },
    [](auto& camera, auto&) { camera.Open() && camera.Start(); },
    [](auto& camera, auto&) { camera.Start(); },
    [](auto& camera, auto& by) { camera.Start(by.Number(9)); },
    [](auto& camera, auto&) { camera.Stop(); },
    [](auto& camera, auto&) { camera.Close(); },
    [](auto& camera, auto&) { camera.Open(); },
    [](auto& camera, auto&) { camera.StartTriggerAcquisition(); },
    [](auto& camera, auto& by) { camera.StopTriggerAcquisition(by.Number(2)); },
    [](auto& camera, auto&) { camera.SoftwareTrigger(); },
};

// All the others of a camera. SendData() and RecvData() alone are missing: nobody else may talk to the camera
// meanwhile.
constexpr void (*kCameraOperations[])(ZelCameraInternal&, Caller&) = {
    [](auto& camera, auto& by) { camera.IsOpen(by.Roll(9) ? reinterpret_cast<int*>(by.data.data()) : nullptr); },
    [](auto& camera, auto&) { camera.GetCameraName(); },
    [](auto& camera, auto& by) { camera.SetCameraName(by.Roll(2) ? "one" : "another"); },
    [](auto& camera, auto& by) { camera.GetDataTypeSize(by.Number(12)); },
    [](auto& camera, auto& by) { camera.GetParameter(by.Parameter(), 1024, by.data.data()); },
    [](auto& camera, auto& by) { camera.GetParameterValue(by.Parameter()); },
    [](auto& camera, auto& by) { camera.SetParameterValue(static_cast<int>(by.Parameter()), by.Number(16)); },
    [](auto& camera, auto& by) {
        by.data.fill(0);
        by.data[4 * by.Roll(6)] = static_cast<unsigned char>(by.Roll(16));
        camera.SetParameter(static_cast<int>(by.Parameter()), by.data.data());
    },
    [](auto& camera, auto&) { camera.ResetCamera(); },
    [](auto& camera, auto&) { camera.QueryTransportValue(); },
    [](auto& camera, auto& by) { camera.SetTransportValue(by.Number(9)); },
    [](auto& camera, auto&) { camera.SetExposureToDefault(); },
    [](auto& camera, auto&) { camera.GetLastErrorStr(); },
    [](auto& camera, auto&) { camera.GetLastError(); },
    [](auto& camera, auto&) { camera.ClearLastError(); },
    [](auto& camera, auto&) { camera.Reserved19() || camera.Reserved20(); },
    [](auto& camera, auto&) { camera.Reserved27(1, 2, 3) && camera.Reserved38() && camera.Reserved59(); },
    [](auto& camera, auto& by) { camera.SetTextCommand(by.Roll(2) ? "info" : "tb p s"); },
    [](auto& camera, auto&) { camera.SetTextCommandCallback(nullptr, nullptr); },
    // The two share the context.
    [](auto& camera, auto& by) { camera.SetCameraControlCallback(nullptr, by.set); },
    [](auto& camera, auto& by) { camera.SetCameraControlCallbackEx(nullptr, by.set); },
    [](auto& camera, auto&) { camera.SetImageNotificationCallback(nullptr, nullptr); },
    [](auto& camera, auto&) { camera.SetImageCallback(nullptr, nullptr); },
    [](auto& camera, auto& by) { camera.ConcatenateColorTransform(by.Number(12), by.Number(17)); },
    [](auto& camera, auto& by) { camera.ConcatenateColorMatrix(by.Matrix()); },
    [](auto& camera, auto&) { camera.ResetColorTransform(); },
    [](auto& camera, auto& by) { camera.SetInputLinearizationTable(by.Entries(), 16, 3); },
    [](auto& camera, auto& by) { camera.SetOutputNonLinearizationTable(by.Entries(), 16, 3); },
    [](auto& camera, auto& by) { camera.GetColorTransform(by.matrix); },
    [](auto& camera, auto& by) { camera.TapBalanceEnable(by.calibrates && by.Roll(2)); },
    [](auto& camera, auto& by) { camera.TapBalanceSelectTable(by.Number(3)); },
    [](auto& camera, auto& by) { by.Roll(40) == 0 && camera.TapBalanceLoadDataFromCamera(); },
    [](auto& camera, auto& by) { camera.TapBalanceLoadDataFromMasterFile((by.file + "20MHz").c_str()); },
    [](auto& camera, auto& by) { camera.TapBalanceGetTableConfig(nullptr, reinterpret_cast<int*>(by.data.data())); },
    [](auto& camera, auto& by) { camera.TapBalanceGetTableData(by.Number(4), by.matrix, by.matrix + 1); },
    [](auto& camera, auto& by) {
        camera.TapBalanceSetTableConfig(by.Number(2), 1 + by.Number(9), 2 + 2 * by.Number(2));
    },
    [](auto& camera, auto& by) {
        camera.TapBalanceSetTableData(by.Number(9), static_cast<float>(by.Roll(99)), by.Matrix());
    },
    [](auto& camera, auto& by) { by.Roll(40) == 0 && camera.TapBalanceWriteTableConfigToCamera(); },
    [](auto& camera, auto& by) { by.Roll(40) == 0 && camera.TapBalanceWriteDataToCamera(); },
    [](auto& camera, auto& by) { by.Roll(40) == 0 && camera.TapBalanceFlashTest(); },
    [](auto& camera, auto&) { camera.GetLinkThroughput(); },
    [](auto& camera, auto&) { camera.GetLinkFrameRate(); },
    [](auto& camera, auto&) { camera.GetLinkLatency(); },
    [](auto& camera, auto&) { camera.GetLinkUtilization(); },
    [](auto& camera, auto&) { camera.GetCameraInterfaceType(); },
    [](auto& camera, auto&) { camera.GetScratchBufferCount(); },
    [](auto& camera, auto&) { camera.FreeScratchBuffers(); },
    [](auto& camera, auto&) { camera.IsMonochrome(); },
    [](auto& camera, auto& by) { camera.SetImageAveraging(by.Number(4), by.Number(2)); },
    [](auto& camera, auto&) { camera.SetScratchpadCallback(nullptr, nullptr); },
    [](auto& camera, auto& by) { camera.ConcatenateScratchpadTransform(by.Number(12), by.Number(17)); },
    [](auto& camera, auto& by) { camera.ConcatenateScratchpadMatrix(by.Matrix()); },
    [](auto& camera, auto&) { camera.ResetScratchpadTransform(); },
    [](auto& camera, auto& by) { camera.SetScratchpadInputLinearizationTable(by.Entries(), 16, 3); },
    [](auto& camera, auto& by) { camera.SetScratchpadOutputNonLinearizationTable(by.Entries(), 16, 3); },
    [](auto& camera, auto& by) { camera.GetScratchpadTransform(by.matrix); },
    [](auto& camera, auto&) { camera.GetCameraInterface(); },
};

// The SDK's, and those of the library. What they answer may change with the next search, so it is not read.
constexpr void (*kSdkOperations[])(ZelSDK&, Caller&) = {
    [](auto& sdk, auto&) { sdk.GetNumberOfCameras(); },
    [](auto& sdk, auto&) { sdk.Open(); },
    [](auto& sdk, auto& by) { sdk.GetCamera(by.Number(9)); },
    [](auto& sdk, auto& by) { sdk.GetCameraInterfaceTypeStr(by.Number(9)); },
    [](auto& sdk, auto& by) { sdk.GetCameraAddressStr(by.Number(9), by.Number(5)); },
    [](auto& sdk, auto& by) { sdk.GetCameraName(by.Number(9)); },
    [](auto& sdk, auto& by) { sdk.GetCameraSerialNumStr(by.Number(9)); },
    [](auto& sdk, auto&) { sdk.Reserved1(1, 2) || sdk.Reserved2() || sdk.Reserved3(); },
    [](auto& sdk, auto&) { sdk.Reserved4() && sdk.Reserved5(1, 2, 3); },
    [](auto& sdk, auto& by) { sdk.GetUtil()->SavePNG(by.file.c_str(), nullptr); },
    [](auto&, auto&) { zel_create_sdk(); },
    [](auto&, auto&) { zel_retain_sdk() ? zel_release_sdk() : void(); },
    [](auto&, auto& by) {
        const auto* const camera = reinterpret_cast<const ZelCamera*>(by.entries.data() + by.Roll(2));
        zel_claim_camera(camera) ? zel_release_camera(camera) : void();
    },
    [](auto&, auto& by) { zel_set_plugin_folder("sim", reinterpret_cast<char*>(by.data.data()), 1024); },
    [](auto&, auto& by) {
        zel_set_progress_callback(
            by.Roll(2) ? [](const char*, const char*, int, void*) {} : ZelProgressCallback(nullptr), nullptr);
    },
    [](auto&, auto&) { get_version_str(); },
};

}  // namespace zel::test

#endif
