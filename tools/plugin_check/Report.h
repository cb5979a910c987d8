// One line per check: "ok   name: detail" or "FAIL name: detail".
#ifndef TOOLS_PLUGIN_CHECK_REPORT_H
#define TOOLS_PLUGIN_CHECK_REPORT_H

#include <cstdio>
#include <string>

namespace zel::plugin_check {

class Report {
  public:
    bool Check(bool passed, const std::string& name, const std::string& detail) {
        std::printf("%s %s: %s\n", passed ? "ok  " : "FAIL", name.c_str(), detail.c_str());
        std::fflush(stdout);
        ++(passed ? m_Passed : m_Failed);
        return passed;
    }
    int Passed() const { return m_Passed; }
    int Failed() const { return m_Failed; }

  private:
    int m_Passed = 0;
    int m_Failed = 0;
};

}  // namespace zel::plugin_check

#endif
