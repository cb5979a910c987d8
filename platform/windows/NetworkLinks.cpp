#include "platform/NetworkLinks.h"

namespace zel::platform {

// On purpose: no plug-in of this project has network cameras on Windows, whose makers' own examine it there.
std::optional<std::vector<NetworkLink>> NetworkLinks(const std::string&) { return std::nullopt; }

}  // namespace zel::platform
