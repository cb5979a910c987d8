// What the SDK does differently from one kind of link to another: one row per kind. Another kind of link is a number in
// ICameraInterface.h and a row here.
#ifndef LINK_LINKKIND_H
#define LINK_LINKKIND_H

namespace zel {

// How a camera's trigger is set up over its text commands.
enum class TriggerDialogue { kNone, kEBus, kCameraLink, kUsb };

// As it stands here: a link that nobody knows. Its cameras connect, and are never told to run; frames of several taps
// count as packed, and regions are not cut out.
struct LinkKind {
    int interface_type = 0;     // as transports answer it
    int application_code = 0;   // as the application gets it
    const char* log_name = "";  // in the lines of a start

    // Frames
    bool packed = true;            // those of several taps come with 12-bit samples, two in three bytes
    bool cuts_region = false;      // the host cuts the region out...
    bool region_is_size = false;   // ...by its size; else by its far corner
    bool keeps_full_size = false;  // num_pixels and size_in_bytes stay those of the full frame

    // Acquisition
    bool resets_calculation = false;  // 0 is written before a calculation is asked for
    int run_attempts = 0;             // writes of the running state, until one is accepted
    TriggerDialogue trigger = TriggerDialogue::kNone;
    bool sets_trigger_state = false;  // before the camera is armed by software

    bool looks_model_up = false;  // at connection
};

// The row of an interface type, or the one that stands for an unknown link.
const LinkKind& LinkKindOf(int interface_type);

}  // namespace zel

#endif
