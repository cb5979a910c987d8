#include "tools/zelcam/text/Json.h"

#include "tools/zelcam/text/Output.h"

namespace zelcam {

std::string JsonText(const Json& json, int indent) {
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

void PrintJson(const Json& json, int indent) {
    WriteOutput(JsonText(json, indent) + "\n");
    FlushOutput();
}

}  // namespace zelcam
