/// @file
/// What a wait for a frame ended with.
#ifndef ZEL_LAYER_FRAMERESULT_H
#define ZEL_LAYER_FRAMERESULT_H

#include <utility>

#include "zel/Error.h"
#include "zel/Frame.h"
#include "zel/NoFrame.h"

namespace zel {

/// A frame, or the reason why there is none.
///
///     if (auto result = camera.wait_frame(1s)) use(*result);
///     else std::puts(result.why().c_str());
class FrameResult {
  public:
    /// A frame came.
    FrameResult(Frame frame) : m_Frame(std::move(frame)) {}
    /// None came.
    FrameResult(const NoFrame& why) : m_NoFrame(why) {}

    /// Whether there is a frame.
    explicit operator bool() const noexcept { return static_cast<bool>(m_Frame); }
    /// The frame; there must be one.
    Frame& operator*() noexcept { return m_Frame; }
    /// The same, not to be changed.
    const Frame& operator*() const noexcept { return m_Frame; }
    /// The frame's members; there must be one.
    Frame* operator->() noexcept { return &m_Frame; }
    /// The same, not to be changed.
    const Frame* operator->() const noexcept { return &m_Frame; }
    /// Takes the frame out of the result; an empty one when there is none.
    Frame take() noexcept { return std::move(m_Frame); }

    /// Why there is no frame. Meaningless when there is one.
    const NoFrame& no_frame() const noexcept { return m_NoFrame; }
    /// Why there is none.
    Reason reason() const { return m_NoFrame.reason(); }
    /// The same in words.
    std::string why() const { return m_NoFrame.why(); }

  private:
    Frame m_Frame;
    NoFrame m_NoFrame;
};

}  // namespace zel

#endif
