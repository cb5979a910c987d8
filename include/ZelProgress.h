/// @file
/// Progress of long work that the library does by itself: calibration data coming from a camera while it is opened.
///
/// On Windows the library shows a small window for that time; on other systems it shows nothing. An application that
/// sets a callback shows the progress its own way, on every system, and no window appears.
#ifndef ZEL_PROGRESS_H
#define ZEL_PROGRESS_H

#include "ZelPlatform.h"

/// One state of the display. Called for each new status line and each new percentage, on the thread that connects the
/// camera (often the one inside ZelCamera::Open()), which goes on when the callback returns; the library holds no lock.
/// When the work has ended there is one more call, with both lines empty and a percentage of -1.
/// @param line1   status line of at most 64 characters, never null, valid for the call
/// @param line2   a second one
/// @param percent 0 to 100, or -1 while there is no percentage yet
/// @param context what the callback was set with
typedef void(ZEL_CALL* ZelProgressCallback)(const char* line1, const char* line2, int percent, void* context);

extern "C" {

/// Sets the function that shows progress for the whole process. May be called at any time and on any thread, the
/// callback itself included. A call that another thread has begun may still be running when this returns. A window that
/// is already shown stays until its work has ended.
/// @param callback the function; null leaves it to the library again
/// @param context  handed to it with each call
void ZEL_CALL zel_set_progress_callback(ZelProgressCallback callback, void* context);
}

#endif
