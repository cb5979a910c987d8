// JSON with the members in the order in which they are written.
#ifndef ZELCAM_JSON_H
#define ZELCAM_JSON_H

#include <nlohmann/json.hpp>
#include <string>

namespace zelcam {

using Json = nlohmann::ordered_json;

// Text of `json`; bytes from a camera that are not UTF-8 are replaced. indent < 0: all on one line.
std::string JsonText(const Json& json, int indent = 2);

// Prints `json` and a line end on the standard output; throws Failure.
void PrintJson(const Json& json, int indent = 2);

}  // namespace zelcam

#endif
