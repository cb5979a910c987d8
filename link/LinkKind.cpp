#include "link/LinkKind.h"

#include <algorithm>
#include <iterator>

#include "link/ICameraInterface.h"

namespace zel {

namespace {

constexpr LinkKind kUnknown{};

constexpr LinkKind kKinds[] = {
    {.interface_type = CAMERA_TYPE_EDT_CAMERA_LINK,
     .application_code = 1,
     .log_name = "CAMERA_TYPE_USB or CAMERA_LINK",
     .packed = false,
     .cuts_region = true,
     .keeps_full_size = true,
     .run_attempts = 4,
     .trigger = TriggerDialogue::kCameraLink,
     .sets_trigger_state = true},
    {.interface_type = CAMERA_TYPE_PLEORA_EBUS,
     .application_code = 0,
     .log_name = "CAMERA_TYPE_PLEORA_EBUS",
     .packed = true,
     .cuts_region = true,
     .region_is_size = true,
     .resets_calculation = true,
     .run_attempts = 1,
     .trigger = TriggerDialogue::kEBus},
    {.interface_type = CAMERA_TYPE_USB,
     .application_code = 2,
     .log_name = "CAMERA_TYPE_USB or CAMERA_LINK",
     .packed = false,
     .cuts_region = true,
     .keeps_full_size = true,
     .run_attempts = 4,
     .trigger = TriggerDialogue::kUsb,
     .sets_trigger_state = true,
     .looks_model_up = true},
};

}  // namespace

const LinkKind& LinkKindOf(int interface_type) {
    const auto* const row = std::ranges::find(kKinds, interface_type, &LinkKind::interface_type);
    return row != std::end(kKinds) ? *row : kUnknown;
}

}  // namespace zel
