// The outcome of each check: a line "ok   name: detail" or "FAIL name: detail" as it comes, or all of them as JSON at
// the end.
#ifndef TOOLS_PLUGIN_CHECK_REPORT_H
#define TOOLS_PLUGIN_CHECK_REPORT_H

#include <fmt/format.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

namespace zel::plugin_check {

class Report {
  public:
    explicit Report(bool json) : m_Json(json) {}

    // The checks from here on are this camera's.
    void BeginCamera(int camera) {
        m_Camera = camera;
        Say(fmt::format("camera {}\n", camera));
    }
    bool Check(bool passed, const std::string& name, const std::string& detail) {
        Say(fmt::format("{} {}: {}\n", passed ? "ok  " : "FAIL", name, detail));
        m_Checks.push_back({{"camera", m_Camera}, {"name", name}, {"passed", passed}, {"detail", detail}});
        ++(passed ? m_Passed : m_Failed);
        return passed;
    }
    void Finish(const std::string& file) {
        Say(fmt::format("{} checks passed, {} failed\n", m_Passed, m_Failed));
        if (!m_Json) return;
        const nlohmann::ordered_json json{
            {"file", file}, {"passed", m_Passed}, {"failed", m_Failed}, {"checks", m_Checks}};
        std::puts(json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace).c_str());
    }
    int Failed() const { return m_Failed; }

  private:
    void Say(const std::string& line) const {
        if (m_Json) return;
        std::fputs(line.c_str(), stdout);
        std::fflush(stdout);
    }

    bool m_Json;
    int m_Passed = 0;
    int m_Failed = 0;
    nlohmann::ordered_json m_Camera;  // null: the library's own checks
    nlohmann::ordered_json m_Checks = nlohmann::ordered_json::array();
};

}  // namespace zel::plugin_check

#endif
