// What the check of a plug-in found: one line for each clause as it is known, and JSON at the end.
#ifndef ZELCAM_CHECKREPORT_H
#define ZELCAM_CHECKREPORT_H

#include <string>
#include <vector>

#include "tools/zelcam/check/CheckRun.h"
#include "tools/zelcam/text/Json.h"

namespace zelcam::check {

class CheckReport {
  public:
    explicit CheckReport(bool print) : m_Print(print) {}

    void Add(const ClauseResult& result);
    // The last clause has no more results.
    void Finish();
    Json ToJson(const std::string& file) const;

    unsigned Kept() const { return m_Kept; }
    unsigned Failed() const { return m_Failed; }
    unsigned Skipped() const { return m_Skipped; }
    // Clauses of cameras were to be checked, and there was none.
    bool NoCamera() const { return m_NoCamera; }

  private:
    bool m_Print;
    unsigned m_Kept = 0;
    unsigned m_Failed = 0;
    unsigned m_Skipped = 0;
    bool m_NoCamera = false;
    std::vector<ClauseResult> m_Present;  // those of one clause with each camera
    Json m_Clauses = Json::array();
};

}  // namespace zelcam::check

#endif
