#include "tools/zelcam/commands/PlayOption.h"

#include "platform/UserTexts.h"
#include "record/RecordingReader.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

// A name may have commas of its own: what follows the last one counts when it says how to play.
void Play(const std::string& wanted) {
    std::string file = wanted;
    std::string how;
    if (const std::size_t comma = wanted.rfind(','); comma != std::string::npos) {
        const std::string rest = wanted.substr(comma + 1);
        if (const std::string word = rest.substr(0, rest.find(':')); word == "once" || word == "loop") {
            file.resize(comma);
            how = rest;
        }
    }
    try {
        const zel::record::RecordingReader reader(zel::platform::Utf8Path(file), 1);
    } catch (const zel::record::RecordError& error) {
        throw Failure("'" + file + "' can't be played", error.what(), "choose a recording or a TIFF stack", kUsage);
    }
    zel::platform::SetEnvironment("ZEL_SIM_SCENE", file.c_str());
    if (!how.empty()) zel::platform::SetEnvironment("ZEL_SIM_PLAY", how.c_str());
}

}  // namespace zelcam
