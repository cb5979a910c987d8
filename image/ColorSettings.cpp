// The color settings of the camera object: transforms, tables and the scratchpad callback.
#include <cstring>

#include "image/ZelCameraControlImpl.h"
#include "kernels/CpuSupport.h"

namespace zel {

namespace {
constexpr const char* kConcatenate = "ZelCameraControlImpl::ConcatenateColorTransformImpl";
constexpr int kLargestOperation = ZEL_COLOR_TRANSFORM_WHITE_BALANCE_AND_CORRECTION;
}  // namespace

bool ZelCameraControlImpl::ConcatenateColorTransformImpl(ZelColorTransformMatrix& transform, int operation,
                                                         int bit_depth) {
    const auto apply = [&](const ColorMatrix& matrix, const char* failure) {
        if (transform.Concatenate(matrix)) return true;
        ZEL_LOG(m_TransformLogger, kLogError, kConcatenate, "%s", failure);
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
            SetOutputBitDepth(transform, bit_depth);
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

void ZelCameraControlImpl::SetOutputBitDepth(ZelColorTransformMatrix& transform, int bits) {
    if (bits < 0 || !transform.SetOutputBitDepth(static_cast<unsigned>(bits))) {
        ZEL_LOG(m_TransformLogger, kLogError, "ZelCameraControlImpl::SetOutputBitDepth",
                "Invalid bit depth specified!");
    }
}

bool ZelCameraControlImpl::ConcatenateTransform(int pipeline, int operation, int bit_depth) {
    if (operation < 0 || operation > kLargestOperation) return false;
    return Pipeline(pipeline).Stage([&](ColorSettings& settings) {
        const bool done = ConcatenateColorTransformImpl(settings.transform, operation, bit_depth);
        const ColorMatrix& matrix = settings.transform.Matrix();
        ZEL_LOG(m_TransformLogger, kLogTrace, kConcatenate, "Color transform coefficients (diagonal): %f, %f, %f",
                static_cast<double>(matrix[0]), static_cast<double>(matrix[4]), static_cast<double>(matrix[8]));
        return done;
    });
}

bool ZelCameraControlImpl::ConcatenateMatrix(int pipeline, const float* matrix) {
    if (!matrix) return false;
    ColorMatrix copy;
    std::memcpy(copy.data(), matrix, sizeof copy);
    return Pipeline(pipeline).Stage([&](ColorSettings& settings) { return settings.transform.Concatenate(copy); });
}

void ZelCameraControlImpl::ResetTransform(int pipeline) {
    Pipeline(pipeline).Stage([](ColorSettings& settings) { settings.transform.Reset(); });
}

bool ZelCameraControlImpl::SetColorTable(int pipeline, ColorTableSlot slot, const unsigned short* entries,
                                         unsigned num_values, unsigned channels) {
    std::shared_ptr<const ColorTable> table;
    if (entries && num_values > 0) {
        table = ColorTable::Make(entries, num_values, channels);
        if (!table) return false;
    }
    // What was there before is given back after the lock.
    Pipeline(pipeline).Stage([&](ColorSettings& settings) { (settings.*slot).swap(table); });
    return true;
}

bool ZelCameraControlImpl::CopyTransform(int pipeline, float* matrix) {
    if (!matrix) return false;
    const ColorSettings settings = Pipeline(pipeline).Staged();
    std::memcpy(matrix, settings.transform.Matrix().data(), sizeof(ColorMatrix));
    return true;
}

void ZelCameraControlImpl::SetScratchpad(ZelScratchpadCallback callback, void* context) {
    const platform::ScopedLock lock(m_ScratchpadLock);
    m_Scratchpad = {callback, context};
}

ZelCameraControlImpl::ScratchpadHook ZelCameraControlImpl::Scratchpad() {
    const platform::ScopedLock lock(m_ScratchpadLock);
    return m_Scratchpad;
}

// Other frames may be processed while the application has this one; a thread that wants this one waits for it, except
// when it is asked for from inside the callback.
bool ZelCameraControlImpl::CallScratchpad(const ScratchpadHook& hook, ZelImageInternal* image,
                                          platform::ScopedLock<platform::Mutex>& processing) {
    AtScratchpad here{image, std::this_thread::get_id(), false, m_AtScratchpad};
    m_AtScratchpad = &here;
    processing.unlock();
    const bool again = hook.callback(image, hook.context) != 0;
    processing.lock();
    for (AtScratchpad** link = &m_AtScratchpad; *link; link = &(*link)->next) {
        if (*link != &here) continue;
        *link = here.next;
        break;
    }
    m_ScratchpadDone.notify_all();
    return again;
}

const ZelCameraControlImpl::AtScratchpad* ZelCameraControlImpl::ScratchpadElsewhere(
    const ZelImageInternal* image) const {
    for (const AtScratchpad* entry = m_AtScratchpad; entry; entry = entry->next) {
        if (entry->image == image) return entry->thread != std::this_thread::get_id() ? entry : nullptr;
    }
    return nullptr;
}

void ZelCameraControlImpl::LeaveScratchpad() {
    const platform::ScopedLock processing(m_ProcessingLock);
    for (AtScratchpad* entry = m_AtScratchpad; entry; entry = entry->next) {
        if (entry->thread == std::this_thread::get_id()) entry->leaving = true;
    }
    m_ScratchpadDone.notify_all();
}

void ZelCameraControlImpl::LogExtendedInstructionSetPresence(const char* name) {
    const bool present = std::strcmp(name, "AVX2") == 0 ? kernels::CpuHasAvx2() : kernels::CpuHasFma();
    ZEL_LOG(m_Logger, kLogTrace, "ZelCameraControlImpl::LogExtendedInstructionSetPresence", "This CPU %s support %s",
            present ? "does" : "does NOT", name);
}

}  // namespace zel
