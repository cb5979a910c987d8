// The parameters of the open camera, as the page shows them.
#ifndef ZELCAM_PARAMETERLIST_H
#define ZELCAM_PARAMETERLIST_H

#include <cstddef>
#include <vector>

#include "tools/zelcam/text/Json.h"
#include "zel/Camera.h"

namespace zelcam {

// One parameter with everything that is known of it (docs/viewer-protocol.md).
Json DescribeParameter(const zel::Camera& camera, const zel::ParameterInfo& info);

// Whether a camera takes a new value over at its next start alone.
bool NeedsRestart(unsigned id);

class ParameterList {
  public:
    // Reads them all.
    void Read(const zel::Camera& camera);
    void Clear() { m_Rows.clear(); }
    Json ToJson() const;

    // A setting has changed, and others may have with it: all are to be read again.
    void Expect() { m_Left = m_Rows.size(); }
    void ExpectNothing() { m_Left = 0; }
    bool IsExpecting() const { return m_Left > 0; }
    // Reads one of those; what it is now when it is another than it was, else null.
    Json ReadNext(const zel::Camera& camera);
    // Reads a single one, the same.
    Json ReadOne(const zel::Camera& camera, unsigned id);

  private:
    struct Row {
        const zel::ParameterInfo* info;
        Json described;
    };
    Json ReadRow(const zel::Camera& camera, Row& row);

    std::vector<Row> m_Rows;
    std::size_t m_Left = 0;
};

}  // namespace zelcam

#endif
