// A progress bar on the error stream, drawn only when that is a terminal.
#ifndef ZELCAM_PROGRESS_H
#define ZELCAM_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

namespace zelcam {

class Progress {
  public:
    // enabled: false draws nothing at all.
    explicit Progress(std::string label, bool enabled = true);
    ~Progress();  // wipes the bar
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Draws at most ten times a second. total 0: only the text.
    void Show(std::uint64_t done, std::uint64_t total, const std::string& text = "");
    // Draws a text behind the label at once.
    void ShowText(const std::string& text);
    void Wipe();

  private:
    std::string m_Label;
    bool m_Enabled;
    bool m_Drawn = false;
    std::chrono::steady_clock::time_point m_Last{};
};

// "[#####.....]"
std::string BarText(std::uint64_t done, std::uint64_t total, int width);

}  // namespace zelcam

#endif
