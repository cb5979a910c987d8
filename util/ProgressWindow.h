// A progress display: two status lines and a bar with a label. Written by the thread that works, drawn by another.
#ifndef UTIL_PROGRESSWINDOW_H
#define UTIL_PROGRESSWINDOW_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/Mutex.h"

namespace zel {

struct ProgressLine {
    static constexpr std::uint32_t kSize = 64;

    void Set(const char* full_text);
    // The part that the slot holds, for measuring and drawing.
    std::string_view Visible() const { return {text, length < kSize ? length : kSize}; }

    char text[kSize] = {};     // no terminator when the text fills it
    std::uint32_t length = 0;  // of the full text, also when the slot holds less
};

struct ProgressBar {
    // Stores the percentage and its label. False when it is shown already.
    bool Set(std::int32_t new_percent);
    bool HasLabel() const { return text_length != 0; }

    std::int32_t percent = 0;
    char text[256] = {};            // "42 % Complete"
    std::uint32_t text_length = 0;  // 0 until the first percentage
};

// done x 100 / total in 32-bit arithmetic that wraps, truncated towards zero. Nothing when the division has no result.
std::optional<std::int32_t> ProgressPercent(std::int32_t done, std::int32_t total);

class ProgressWindow {
  public:
    virtual ~ProgressWindow() = default;

    // `line` is 0 or 1.
    void SetLine(unsigned line, const char* text);
    void SetProgress(std::int32_t done, std::int32_t total);

    // On the window's thread: handles what has come for the window, as long as `running` is set. Never waits.
    virtual void DispatchMessages(const std::atomic<bool>& running) = 0;

  protected:
    // The contents as they are drawn.
    struct Contents {
        ProgressLine lines[2];
        ProgressBar bar;
    };
    Contents Copy() const;
    // Whether there is a bar. Without one percentages have no effect.
    void SetHasBar(bool has_bar);

  private:
    // Has the contents drawn anew. Called on the working thread with no lock held.
    virtual void Invalidate() = 0;

    mutable platform::Mutex m_Lock;
    Contents m_Contents ZEL_GUARDED_BY(m_Lock);
    bool m_HasBar ZEL_GUARDED_BY(m_Lock) = false;
};

// Makes a window on the thread that will dispatch its messages. Null when memory ran out.
using ProgressWindowFactory = std::unique_ptr<ProgressWindow> (*)(const char* title);

// The window of the system's own kind; null where the library has none.
ProgressWindowFactory SystemProgressWindow();

}  // namespace zel

#endif
