#include "tools/zelcam/text/Json.h"

#include <cstdio>

namespace zelcam {

std::string JsonText(const Json& json, int indent) {
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

void PrintJson(const Json& json, int indent) {
    std::printf("%s\n", JsonText(json, indent).c_str());
    std::fflush(stdout);
}

}  // namespace zelcam
