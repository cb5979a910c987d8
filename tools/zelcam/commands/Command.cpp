#include "tools/zelcam/commands/Command.h"

#include "tools/zelcam/text/Output.h"

namespace zelcam {

void Command::Tell(const std::vector<WriteOutcome>& settings, Json& result) const {
    if (m_Json) result["settings"] = Json::array();
    for (const WriteOutcome& outcome : settings) {
        if (m_Json) {
            result["settings"].push_back(outcome.ToJson());
        } else {
            Print("{}\n", outcome.Text());
        }
    }
    FlushOutput();
}

}  // namespace zelcam
