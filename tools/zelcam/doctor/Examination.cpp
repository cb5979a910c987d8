#include "tools/zelcam/doctor/Examination.h"

#include "platform/SystemLimits.h"
#include "tools/zelcam/text/Output.h"

namespace zelcam {

void Examination::Begin(const char* area) {
    m_Area = area;
    if (m_Print) Print("{}\n", area);
    FlushOutput();
}

void Examination::Add(State state, const char* check, const std::string& text, const std::string& hint,
                      const Json& facts) {
    const auto index = static_cast<std::size_t>(state);
    ++m_Counts[index];
    Json finding{{"area", m_Area}, {"check", check}, {"state", kStateNames[index]}, {"text", text}, {"hint", hint}};
    if (!facts.empty()) finding["facts"] = facts;
    m_Findings.push_back(finding);
    if (!m_Print) return;
    Print("  {:<8} {}\n", kStateNames[index], text);
    if (!hint.empty()) Print("           -> {}\n", hint);
    FlushOutput();
}

Json Examination::ToJson() const {
    Json summary;
    for (std::size_t i = 0; i < kStateNames.size(); ++i) summary[kStateNames[i]] = m_Counts[i];
    return {{"findings", m_Findings}, {"summary", summary}};
}

std::string BytesText(std::uint64_t bytes) {
    if (bytes == zel::platform::kUnlimited) return "without limit";
    constexpr std::array kUnits{"bytes", "KiB", "MiB", "GiB", "TiB"};
    auto amount = static_cast<double>(bytes);
    std::size_t unit = 0;
    for (; amount >= 1024.0 && unit + 1 < kUnits.size(); ++unit) amount /= 1024.0;
    return fmt::format("{:.{}f} {}", amount, amount < 10.0 && unit > 0 ? 1 : 0, kUnits[unit]);
}

}  // namespace zelcam
