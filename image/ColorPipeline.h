// The settings of one color pipeline. The application changes a staged copy at any time and from any thread; a frame
// works on the active copy, which takes over everything that was staged before the frame, all at once.
#ifndef IMAGE_COLORPIPELINE_H
#define IMAGE_COLORPIPELINE_H

#include <memory>
#include <mutex>
#include <utility>

#include "image/ColorTable.h"
#include "image/ZelColorTransformMatrix.h"

namespace zel {

struct ColorSettings {
    ZelColorTransformMatrix transform;
    std::shared_ptr<const ColorTable> input_linearization;  // null: passed through
    std::shared_ptr<const ColorTable> output_non_linearization;
};

class ColorPipeline {
  public:
    // Runs change(settings) on the staged settings, under the pipeline's lock, and answers its result.
    template <class Change>
    auto Stage(Change&& change) {
        const std::lock_guard lock(m_Lock);
        m_Changed = true;
        return std::forward<Change>(change)(m_Staged);
    }

    // Makes what is staged active. The result belongs to the caller until the next call, and only one thread at a time
    // may call.
    const ColorSettings& Prepare() {
        const std::lock_guard lock(m_Lock);
        if (std::exchange(m_Changed, false)) m_Active = m_Staged;
        return m_Active;
    }

    // The staged settings' copy.
    ColorSettings Staged() const {
        const std::lock_guard lock(m_Lock);
        return m_Staged;
    }

  private:
    mutable std::mutex m_Lock;
    bool m_Changed = false;
    ColorSettings m_Staged;
    ColorSettings m_Active;
};

}  // namespace zel

#endif
