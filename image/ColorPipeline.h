// The settings of one color pipeline. The application changes a staged copy at any time and from any thread; a frame
// works on the active copy, which takes over everything that was staged before the frame, all at once.
#ifndef IMAGE_COLORPIPELINE_H
#define IMAGE_COLORPIPELINE_H

#include <memory>
#include <utility>

#include "image/ColorTable.h"
#include "image/ZelColorTransformMatrix.h"
#include "platform/Mutex.h"
#include "sdk/Logger.h"

namespace zel {

struct ColorSettings {
    ZelColorTransformMatrix transform;
    std::shared_ptr<const ColorTable> input_linearization;  // null: passed through
    std::shared_ptr<const ColorTable> output_non_linearization;
};

class ColorPipeline {
  public:
    enum class Kind { kMain = 1, kScratchpad = 2 };
    ColorPipeline(Kind kind, Logger& logger) : m_Kind(kind), m_Logger(logger) {}
    Kind WhichOne() const { return m_Kind; }

    // What the application asks for, staged.
    using TableSlot = std::shared_ptr<const ColorTable> ColorSettings::*;
    bool ConcatenateTransform(int operation, int bit_depth);
    bool ConcatenateMatrix(const float* matrix);
    void ResetTransform();
    // Without entries the samples are passed through.
    bool SetTable(TableSlot slot, const unsigned short* entries, unsigned num_values, unsigned channels);
    bool CopyTransform(float* matrix) const;

    // Runs change(settings) on the staged settings, under the pipeline's lock, and answers its result.
    template <class Change>
    auto Stage(Change&& change) {
        const platform::ScopedLock lock(m_Lock);
        m_Changed = true;
        return std::forward<Change>(change)(m_Staged);
    }

    // Makes what is staged active. The result belongs to the caller until the next call, and only one thread at a time
    // may call.
    const ColorSettings& Prepare() {
        const platform::ScopedLock lock(m_Lock);
        if (std::exchange(m_Changed, false)) m_Active = m_Staged;
        return m_Active;
    }

    // The staged settings' copy.
    ColorSettings Staged() const {
        const platform::ScopedLock lock(m_Lock);
        return m_Staged;
    }

  private:
    bool Operate(ZelColorTransformMatrix& transform, int operation, int bit_depth);

    const Kind m_Kind;
    Logger& m_Logger;
    mutable platform::Mutex m_Lock;
    bool m_Changed ZEL_GUARDED_BY(m_Lock) = false;
    ColorSettings m_Staged ZEL_GUARDED_BY(m_Lock);
    ColorSettings m_Active;  // of the thread that prepares
};

}  // namespace zel

#endif
