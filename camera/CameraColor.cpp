// Color: set-up at connection, the transforms and tables of both pipelines, and the color forms of frame hand-over.
#include <cmath>
#include <cstring>

#include "camera/ZelCameraControl.h"

namespace zel {

namespace {
constexpr const char* kSetUp = "ZelCameraControl::SetUpColor";
constexpr unsigned kDefaultOutputBits = 14;
constexpr double kLargestCoefficient = 1000.0;  // far beyond any correction matrix

// The color spaces that the camera's correction matrix can lead to.
constexpr const char* kRgbSpace = "CCIR 709";
constexpr const char* kXyzSpace = "XYZ";
}  // namespace

// A coefficient is an entry of eight bytes, an IEEE double.
bool ZelCameraControl::GetColorMatrixCoefficient(int index, double& value) {
    unsigned char block[SyncTable::kBlockCapacity] = {};
    if (m_SyncTable->Get(index, block)) {
        std::memcpy(&value, block, sizeof value);
        if (std::isfinite(value) && std::fabs(value) <= kLargestCoefficient) return true;
    }
    ZEL_LOG(m_Logger, kLogError, kSetUp, "Failed to get a color matrix coefficient!");
    return false;
}

// The matrix whose first entry is `first`, or the identity when one of its entries can't be had.
ColorMatrix ZelCameraControl::ReadColorMatrix(int first) {
    ColorMatrix matrix;
    for (int i = 0; i < 9; ++i) {
        double value = 0;
        if (!GetColorMatrixCoefficient(first + i, value)) return kIdentityMatrix;
        matrix[static_cast<unsigned>(i)] = static_cast<float>(value);
    }
    return matrix;
}

// Reads the color space and tells whether pictures go through XYZ.
bool ZelCameraControl::ConfigureColorPipelineOutputColorSpace() {
    Text space{};
    ReadText(CCM_OUTPUT_COLOR_SPACE, space);
    const bool xyz = std::strcmp(space.data(), kXyzSpace) == 0;
    if (!xyz && std::strcmp(space.data(), kRgbSpace) != 0) {
        ZEL_LOG(m_Logger, kLogError, kSetUp, "The color space has not been defined for this camera model/unit");
    }
    return xyz;
}

int ZelCameraControl::ReadColorFilterPhase() {
    int phase = 0;
    if (!m_SyncTable->Get(CFA_PHASE, &phase) || phase < 1 || phase > 4) phase = 0;
    return phase;
}

void ZelCameraControl::SetUpColor(int bits_per_pixel) {
    LogExtendedInstructionSetPresence("AVX2");
    LogExtendedInstructionSetPresence("FMA");
    const ColorMatrix correction = ReadColorMatrix(CCM_1_1);
    const ColorMatrix white_balance = ReadColorMatrix(DWB_1_1);
    const bool xyz = ConfigureColorPipelineOutputColorSpace();
    m_CfaPhase = ReadColorFilterPhase();
    m_HasColorFilter = !IsMonochrome();
    ZEL_LOG(m_Logger, kLogTrace, kSetUp, "CFA Phase: %d", m_CfaPhase.load());
    for (ColorPipeline* const pipeline : {&MainPipeline(), &ScratchpadPipeline()}) {
        pipeline->Stage([&](ColorSettings& settings) {
            settings.transform.camera_correction = correction;
            settings.transform.white_balance = white_balance;
            settings.transform.through_color_space = xyz;
            if (bits_per_pixel > 0) settings.transform.SetInputBitDepth(static_cast<unsigned>(bits_per_pixel));
            settings.transform.PreferOutputBitDepth(kDefaultOutputBits);
        });
    }
}

void ZelCameraControl::ColorWasBinned() { StoreError(ZEL_ERROR_INVALID_BINNING_SELECTION); }

// ZelColorCamera: the main pipeline. Who sets it up wants frames in color.

ColorPipeline& ZelCameraControl::WantedPipeline() {
    ExpectColor();
    return MainPipeline();
}

bool ZelCameraControl::ConcatenateColorTransform(int operation, int bit_depth) {
    const Operation entry(*this);
    return entry && WantedPipeline().ConcatenateTransform(operation, bit_depth);
}
bool ZelCameraControl::ConcatenateColorMatrix(const float* matrix) {
    const Operation entry(*this);
    return entry && WantedPipeline().ConcatenateMatrix(matrix);
}
bool ZelCameraControl::ResetColorTransform() {
    const Operation entry(*this);
    if (!entry) return false;
    MainPipeline().ResetTransform();
    return true;
}
bool ZelCameraControl::SetInputLinearizationTable(const unsigned short* entries, unsigned num_values,
                                                  unsigned channels) {
    const Operation entry(*this);
    return entry && WantedPipeline().SetTable(&ColorSettings::input_linearization, entries, num_values, channels);
}
bool ZelCameraControl::SetOutputNonLinearizationTable(const unsigned short* entries, unsigned num_values,
                                                      unsigned channels) {
    const Operation entry(*this);
    return entry && WantedPipeline().SetTable(&ColorSettings::output_non_linearization, entries, num_values, channels);
}
bool ZelCameraControl::GetColorTransform(float* matrix) {
    const Operation entry(*this);
    return entry && MainPipeline().CopyTransform(matrix);
}

// ZelCameraInternal: the scratchpad's.

bool ZelCameraControl::SetScratchpadCallback(ZelScratchpadCallback callback, void* context) {
    const Operation entry(*this);
    if (!entry) return false;
    SetScratchpad(callback, context);
    if (callback) ExpectColor();
    return true;
}
bool ZelCameraControl::ConcatenateScratchpadTransform(int operation, int bit_depth) {
    const Operation entry(*this);
    return entry && ScratchpadPipeline().ConcatenateTransform(operation, bit_depth);
}
bool ZelCameraControl::ConcatenateScratchpadMatrix(const float* matrix) {
    const Operation entry(*this);
    return entry && ScratchpadPipeline().ConcatenateMatrix(matrix);
}
bool ZelCameraControl::ResetScratchpadTransform() {
    const Operation entry(*this);
    if (!entry) return false;
    ScratchpadPipeline().ResetTransform();
    return true;
}
bool ZelCameraControl::SetScratchpadInputLinearizationTable(const unsigned short* entries, unsigned num_values,
                                                            unsigned channels) {
    const Operation entry(*this);
    return entry && ScratchpadPipeline().SetTable(&ColorSettings::input_linearization, entries, num_values, channels);
}
bool ZelCameraControl::SetScratchpadOutputNonLinearizationTable(const unsigned short* entries, unsigned num_values,
                                                                unsigned channels) {
    const Operation entry(*this);
    return entry &&
           ScratchpadPipeline().SetTable(&ColorSettings::output_non_linearization, entries, num_values, channels);
}
bool ZelCameraControl::GetScratchpadTransform(float* matrix) {
    const Operation entry(*this);
    return entry && ScratchpadPipeline().CopyTransform(matrix);
}

// Frames.

ZelColorImage* ZelCameraControl::GetPendingColorImage() {
    const Operation entry(*this);
    return HandOverColor(entry && m_Camera ? GetPendingImageImpl() : FrameLease{}, "GetPendingColorImage");
}

ZelColorImage* ZelCameraControl::GetLastPendingColorImage() {
    const Operation entry(*this);
    return HandOverColor(entry && m_Camera ? GetLastPendingImageImpl() : FrameLease{}, "GetLastPendingColorImage");
}

ZelColorImage* ZelCameraControl::HandOverColor(const FrameLease& frame, const char* operation) {
    if (!frame || !PostProcessOnce(frame, Path::kColor)) {
        ZEL_LOG(m_Logger, kLogTrace, operation, "%s() returned 0", operation);
        return nullptr;
    }
    ZEL_LOG(m_Logger, kLogTrace, operation, "%s() returned frame number: %d", operation, frame->image_number);
    return frame.image;
}

bool ZelCameraControl::FreeColorImage(ZelColorImage* image) { return FreeImage(image); }

}  // namespace zel
