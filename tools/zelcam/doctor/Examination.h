// What an examination finds: told as it goes on, so that the last line shows how far it came, and kept for JSON.
#ifndef ZELCAM_EXAMINATION_H
#define ZELCAM_EXAMINATION_H

#include <array>
#include <string>

#include "tools/zelcam/text/Json.h"

namespace zelcam {

// kNote: worth knowing; kWarning: may go wrong; kProblem: does not work.
enum class State { kOk, kNote, kWarning, kProblem };
inline constexpr std::array kStateNames{"ok", "note", "warning", "problem"};

class Examination {
  public:
    explicit Examination(bool print) : m_Print(print) {}

    // The findings that follow belong to this area.
    void Begin(const char* area);
    // check: a name for scripts, which stays as it is. hint: what to do, or empty. facts: figures and paths for JSON.
    // Throws Failure when the output can't be written.
    void Add(State state, const char* check, const std::string& text, const std::string& hint = "",
             const Json& facts = {});

    int Count(State state) const { return m_Counts[static_cast<std::size_t>(state)]; }
    // {"findings": [...], "summary": {...}}
    Json ToJson() const;

  private:
    bool m_Print;
    std::string m_Area;
    std::array<int, kStateNames.size()> m_Counts{};
    Json m_Findings = Json::array();
};

// "64 KiB", "1.5 MiB"; as many as a limit is for, "without limit" for the largest number.
std::string BytesText(std::uint64_t bytes);

}  // namespace zelcam

#endif
