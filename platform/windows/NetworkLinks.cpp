#include "platform/NetworkLinks.h"

namespace zel::platform {

// No plug-in of this project has network cameras on Windows.
std::optional<std::vector<NetworkLink>> NetworkLinks(const std::string&) { return std::nullopt; }

}  // namespace zel::platform
