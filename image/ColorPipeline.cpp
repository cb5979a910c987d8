#include "image/ColorPipeline.h"

#include <cstring>

#include "include/ZelCamera.h"

namespace zel {

namespace {
constexpr const char* kConcatenate = "ZelCameraControlImpl::ConcatenateColorTransformImpl";
constexpr int kLargestOperation = ZEL_COLOR_TRANSFORM_WHITE_BALANCE_AND_CORRECTION;
}  // namespace

bool ColorPipeline::Operate(ZelColorTransformMatrix& transform, int operation, int bit_depth) {
    const auto apply = [&](const ColorMatrix& matrix, const char* failure) {
        if (transform.Concatenate(matrix)) return true;
        ZEL_LOG(m_Logger, kLogError, kConcatenate, "%s", failure);
        return false;
    };
    const auto correct = [&] {
        return apply(transform.camera_correction, "Failed to apply the camera correction matrix!");
    };
    const auto balance = [&] {
        return apply(transform.white_balance, "Failed to apply the default white balance matrix!");
    };
    switch (operation) {
        case ZEL_COLOR_TRANSFORM_16_BIT:
        case ZEL_COLOR_TRANSFORM_16_BIT_VARIANT:
            transform.Reset();
            transform.SetFormat(kernels::ColorFormat::k16);
            if (bit_depth < 0 || !transform.SetOutputBitDepth(static_cast<unsigned>(bit_depth))) {
                ZEL_LOG(m_Logger, kLogError, "ZelCameraControlImpl::SetOutputBitDepth", "Invalid bit depth specified!");
            }
            return true;
        case ZEL_COLOR_TRANSFORM_8_BIT_RGB:
            transform.Reset();
            transform.SetFormat(kernels::ColorFormat::k8);
            return true;
        case ZEL_COLOR_TRANSFORM_8_BIT_RGBX:
            transform.Reset();
            transform.SetFormat(kernels::ColorFormat::k8Padded);
            return true;
        case ZEL_COLOR_TRANSFORM_CAMERA_CORRECTION:
            return correct();
        case ZEL_COLOR_TRANSFORM_WHITE_BALANCE:
            return balance();
        case ZEL_COLOR_TRANSFORM_WHITE_BALANCE_AND_CORRECTION: {
            const bool balanced = balance();
            return correct() && balanced;
        }
        default:
            return false;
    }
}

bool ColorPipeline::ConcatenateTransform(int operation, int bit_depth) {
    if (operation < 0 || operation > kLargestOperation) return false;
    return Stage([&](ColorSettings& settings) {
        const bool done = Operate(settings.transform, operation, bit_depth);
        const ColorMatrix& matrix = settings.transform.Matrix();
        ZEL_LOG(m_Logger, kLogTrace, kConcatenate, "Color transform coefficients (diagonal): %f, %f, %f",
                static_cast<double>(matrix[0]), static_cast<double>(matrix[4]), static_cast<double>(matrix[8]));
        return done;
    });
}

bool ColorPipeline::ConcatenateMatrix(const float* matrix) {
    if (!matrix) return false;
    ColorMatrix copy;
    std::memcpy(copy.data(), matrix, sizeof copy);
    return Stage([&](ColorSettings& settings) { return settings.transform.Concatenate(copy); });
}

void ColorPipeline::ResetTransform() {
    Stage([](ColorSettings& settings) { settings.transform.Reset(); });
}

bool ColorPipeline::SetTable(TableSlot slot, const unsigned short* entries, unsigned num_values, unsigned channels) {
    std::shared_ptr<const ColorTable> table;
    if (entries && num_values > 0) {
        table = ColorTable::Make(entries, num_values, channels);
        if (!table) return false;
    }
    // What was there before is given back after the lock.
    Stage([&](ColorSettings& settings) { (settings.*slot).swap(table); });
    return true;
}

bool ColorPipeline::CopyTransform(float* matrix) const {
    if (!matrix) return false;
    const ColorSettings settings = Staged();
    std::memcpy(matrix, settings.transform.Matrix().data(), sizeof(ColorMatrix));
    return true;
}

}  // namespace zel
