#include "tools/zelcam/commands/Command.h"

#include "tools/zelcam/text/Output.h"

namespace zelcam {

void Command::Tell(const std::vector<zel::SetResult>& settings, Json& result) const {
    if (m_Json) result["settings"] = Json::array();
    for (const zel::SetResult& setting : settings) {
        if (m_Json) {
            result["settings"].push_back(ToJson(setting));
        } else {
            Print("{}\n", setting.text());
        }
    }
    FlushOutput();
}

}  // namespace zelcam
