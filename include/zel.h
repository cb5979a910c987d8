/// @file
/// The C interface: cameras, frames and settings for C99 and for every language that calls C.
///
///     zel_sdk* sdk = NULL;
///     zel_camera* camera = NULL;
///     zel_frame* frame = NULL;
///     zel_frame_info info = {.struct_size = sizeof info};
///
///     if (zel_sdk_open(&sdk) != ZEL_OK || zel_camera_open(sdk, NULL, NULL, &camera) != ZEL_OK ||
///         zel_camera_set_integer(camera, "EXPOSURE_TIME_US", 20000, NULL) != ZEL_OK ||
///         zel_camera_start(camera, NULL) != ZEL_OK ||
///         zel_camera_wait(camera, ZEL_WAIT_AUTO, ZEL_ORDER_EVERY, &frame, &info) != ZEL_OK)
///         fprintf(stderr, "%s\n", zel_error_message());
///     else
///         use(info.pixels, info.width, info.height, info.bits);
///     zel_frame_release(frame);
///     zel_camera_close(camera);
///     zel_sdk_close(sdk);
///
///      zel_sdk         finds cameras, hot-plug            zel_sdk_close      any order: what was opened through a
///        '-- zel_camera   settings, start, wait           zel_camera_close   handle stays when that handle is closed
///              '-- zel_frame   pixels, facts, files       zel_frame_release
///
/// Link libzel_c.so or zel_c.dll, which needs the SDK's library beside it.
///
/// Results. A function answers a zel_status, ZEL_OK or what went wrong; zel_error_message() has the sentence to it.
/// What else is answered goes where pointers say, and only with ZEL_OK unless a comment says otherwise. Every function
/// may answer ZEL_STATUS_BAD_HANDLE, ZEL_STATUS_INVALID_ARGUMENT (null pointers, values without a meaning),
/// ZEL_STATUS_BAD_STRUCT and ZEL_STATUS_OUT_OF_MEMORY; comments name the others.
///
/// Handles. A pointer to zel_sdk, zel_camera or zel_frame stands for an object of the library and points to nothing.
/// Null, a handle that was closed or released, and one of another kind are answered with ZEL_STATUS_BAD_HANDLE.
/// (Closing and releasing null is ZEL_OK, as with free().)
///
/// Structs begin with `struct_size`, which the caller sets to the sizeof it was compiled with, so that they can grow.
/// The library fills no more than that; what it does not know of a newer, larger struct becomes zero. In structs that
/// are handed in, what a smaller one lacks counts as zero, and zero means the default.
///
/// Texts are zero-terminated; names of files are in the system's 8-bit encoding. A text that does not fit an array of a
/// struct is cut. Functions that answer a text take room for it, which may be null with a size of 0, and tell in
/// *length (which may be null) how many characters it has without the zero. With too little room they answer
/// ZEL_STATUS_TOO_SMALL and as much as fits.
///
/// Threads. Every function may be called on any thread, also inside every callback, and on one handle by several
/// threads, except that one thread at a time waits for frames of a camera. "Talks to the camera" means an exchange: it
/// blocks for some milliseconds, or up to 20 s when the camera has fallen silent, under a lock that orders the
/// exchanges of that camera. No other lock is held for longer than a look, and none while a callback runs.
///
/// Callbacks run on a thread of the SDK and get `user` back as it was set; null switches one off. They must not wait
/// for a thread that is closing or stopping their camera. One that was replaced may still be running on another thread;
/// after zel_camera_close(), outside of callbacks, none of that camera runs any more.
#ifndef ZEL_H
#define ZEL_H

#include "zel_types.h"

/// @def ZEL_C_API
/// Stands before each function of this interface.
#if defined(__GNUC__) && !defined(_WIN32)
#define ZEL_C_API __attribute__((visibility("default")))
#else
#define ZEL_C_API
#endif

/// The version of this header, to be compared with zel_c_version(). The first number changes when programs must be
/// compiled anew, the second one when something is added.
#define ZEL_C_VERSION_MAJOR 1
#define ZEL_C_VERSION_MINOR 1  ///< something was added
#define ZEL_C_VERSION_PATCH 0  ///< something was put right
/// The same as one number: 10203 is 1.2.3.
#define ZEL_C_VERSION (ZEL_C_VERSION_MAJOR * 10000 + ZEL_C_VERSION_MINOR * 100 + ZEL_C_VERSION_PATCH)

#ifdef __cplusplus
extern "C" {
#endif

/* ---- results ---- */

/// ZEL_C_VERSION of the library that is loaded. Any thread, no lock; can't fail.
ZEL_C_API int32_t ZEL_CALL zel_c_version(void);

/// The name of a status, without ZEL_STATUS_: "REFUSED"; "UNKNOWN" for a number that is none. The text stays for ever.
/// Any thread, no lock; can't fail.
ZEL_C_API const char* ZEL_CALL zel_status_name(zel_status status);

/// What went wrong in this thread's last call, as one line: "problem: why; hint". Empty after ZEL_OK, never null. Valid
/// until the thread's next call; this function, zel_last_error(), zel_status_name() and zel_c_version() don't count.
/// Any thread, no lock; can't fail.
ZEL_C_API const char* ZEL_CALL zel_error_message(void);

/// The same in parts.
///   error  receives them
/// Any thread, no lock. An error here does not replace the one that is asked for.
ZEL_C_API zel_status ZEL_CALL zel_last_error(zel_error* error);

/// Versions of the SDK's library and of each interface library, a line each.
///   text, size, length  see "Texts" at the top; some hundred characters
/// Any thread; one lock for the look.
ZEL_C_API zel_status ZEL_CALL zel_version_text(char* text, size_t size, size_t* length);

/* ---- the SDK ---- */

/// Chooses the libraries that cameras come from, for the whole program: before the SDK is opened for the first time and
/// before zel_version_text(). They stay until the program ends; choosing the same ones again is ZEL_OK. Libraries of
/// other kinds of link than the set's are done without.
///   folder  the path of a folder, from the root on; or the name of a set that was installed: "sim" for the simulated
///           cameras, "gige" for GigE Vision. Never looked for in the current folder
/// Errors: ZEL_STATUS_REFUSED when it is too late or others were chosen, ZEL_STATUS_FAILED when one can't be loaded; a
/// part of them may have stayed then, and the program had better end. Any thread; one lock while they are loaded.
ZEL_C_API zel_status ZEL_CALL zel_use_plugins(const char* folder);

/// Opens the SDK. Several handles may exist. It is closed for the whole program with the last handle, camera and frame
/// of this library, so a program does not use the C++ interfaces beside it. Not inside a callback while the last one is
/// just being closed elsewhere.
///   sdk  receives the handle; null when it fails
/// Errors: ZEL_STATUS_FAILED. Any thread; waits for a close that is under way.
ZEL_C_API zel_status ZEL_CALL zel_sdk_open(zel_sdk** sdk);

/// Closes a handle. Cameras opened through it stay open; hot-plug events and messages set with it end. When it was the
/// last thing that is open this waits until every callback has returned, except inside one. Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_sdk_close(zel_sdk* sdk);

/// Looks for cameras. Those that run are not disturbed.
///   count  receives how many there are, 0 to 8; their numbers are 0 to count - 1
/// Any thread; one search at a time, which takes as long as the interface libraries take.
ZEL_C_API zel_status ZEL_CALL zel_sdk_find_cameras(zel_sdk* sdk, int32_t* count);

/// The description of a camera as the last search has it, without opening it.
///   number  0 to 7
///   info    receives it
/// Errors: ZEL_STATUS_NO_CAMERA when the last search found none with this number. Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_sdk_get_camera_info(zel_sdk* sdk, int32_t number, zel_camera_info* info);

/// Sets the function that is told of cameras being plugged in and unplugged; one for the whole program, the last
/// counts. Errors: ZEL_STATUS_REFUSED. Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_sdk_on_hot_plug(zel_sdk* sdk, zel_hot_plug_callback callback, void* user);

/// The next hot-plug event, for programs that can't be called back. Events are kept for it, 64 at the most, from the
/// first call on; a callback is told of them as well.
///   timeout_ms  0 or more milliseconds
///   event       receives it; set its struct_size
/// Errors: ZEL_STATUS_TIMEOUT. Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_sdk_wait_hot_plug(zel_sdk* sdk, int32_t timeout_ms, zel_hot_plug_event* event);

/// Sets the function that is told of every call that fails with this handle, with the cameras opened through it and
/// with their frames: one place to write messages from. Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_sdk_on_message(zel_sdk* sdk, zel_message_callback callback, void* user);

/// Sets the function that shows progress, for the whole program and until it is set to null; without one a small window
/// shows it on Windows. Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_sdk_on_progress(zel_sdk* sdk, zel_progress_callback callback, void* user);

/// Writes a line of the application among those of the SDK, as the source "application". The user asks for the log with
/// the environment variable ZEL_LOG (error, warning, trace, or one of them with ":FILE"), which is read when the SDK is
/// opened; failures of this library's calls are in it as warnings.
///   level    one of zel_log_level
///   where    names the place in the application: a function; null for none
///   text     the line
///   written  may be null; receives 1, or 0 when no log is asked for or the logging library is missing
/// Any thread; no lock but that of the file.
ZEL_C_API zel_status ZEL_CALL zel_sdk_write_log(zel_sdk* sdk, int32_t level, const char* where, const char* text,
                                                int32_t* written);

/* ---- cameras ---- */

/// Opens a camera by what a user typed; looks for cameras first.
///   wanted   a number or a serial number: "0", "300101"; null for the first camera
///   options  null for the defaults
///   camera   receives the handle; null when it fails
/// Errors: ZEL_STATUS_NO_CAMERA, with the cameras there are in the message; ZEL_STATUS_REFUSED when this program has it
/// open. Any thread; talks to the camera; one open at a time in a program.
ZEL_C_API zel_status ZEL_CALL zel_camera_open(zel_sdk* sdk, const char* wanted, const zel_open_options* options,
                                              zel_camera** camera);

/// Opens a camera by the number of the last search or of a hot-plug event, without a search.
///   number  0 to 7
/// The rest as zel_camera_open().
ZEL_C_API zel_status ZEL_CALL zel_camera_open_number(zel_sdk* sdk, int32_t number, const zel_open_options* options,
                                                     zel_camera** camera);

/// Stops and closes a camera. Waits for frames end, calls of other threads that are inside fail. Frames that are held
/// stay good; the camera can be opened again when the last of them is released. Any thread; waits for callbacks of this
/// camera, except inside a callback.
ZEL_C_API zel_status ZEL_CALL zel_camera_close(zel_camera* camera);

/// What the camera was described as when it was opened. Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_camera_get_info(zel_camera* camera, zel_camera_info* info);

/// How it is doing. Any thread; asks nobody.
ZEL_C_API zel_status ZEL_CALL zel_camera_get_state(zel_camera* camera, zel_camera_state* state);

/* ---- parameters ---- */

/// How many parameters there are, for zel_parameter_at(). Any thread; no lock.
///   count  receives the number
ZEL_C_API zel_status ZEL_CALL zel_parameter_count(uint32_t* count);

/// A parameter by its place in the list.
///   index  0 to count - 1
///   info   receives what is known of it without a camera
/// Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_parameter_at(uint32_t index, zel_parameter_info* info);

/// A parameter by its name: "EXPOSURE_TIME_US", "exposure-time-us", or its id as text, "58".
///   name  as a user types it; an unknown one is ZEL_STATUS_INVALID_ARGUMENT, with the nearest names in the message
///   info  receives what is known of it without a camera
/// Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_parameter_find(const char* name, zel_parameter_info* info);

/// What a parameter is with this camera and its present settings: range, unit, access.
///   id    ZEL_PARAM_..., or from zel_parameter_find()
///   info  receives it
/// Any thread; talks to the camera; one lock per camera for its attributes.
ZEL_C_API zel_status ZEL_CALL zel_camera_get_parameter_info(zel_camera* camera, uint32_t id, zel_parameter_info* info);

/// A raw attribute of a parameter.
///   id         ZEL_PARAM_...
///   attribute  ZEL_ATTR_...
///   word       receives its first 32 bits
/// Errors: ZEL_STATUS_REFUSED when the camera does not tell. Any thread; talks to the camera; lock as above.
ZEL_C_API zel_status ZEL_CALL zel_camera_get_attribute(zel_camera* camera, uint32_t id, int32_t attribute,
                                                       int32_t* word);

/// The value of a parameter of any kind, by id.
///   value  receives it
/// Errors: ZEL_STATUS_REFUSED when it can't be read. Any thread; talks to the camera where the value is kept there.
ZEL_C_API zel_status ZEL_CALL zel_camera_get_value(zel_camera* camera, uint32_t id, zel_value* value);

/// Writes a parameter and reads it back.
///   value   of the parameter's kind; matrices and wide numbers can't be written
///   result  may be null; is filled with ZEL_OK and with ZEL_STATUS_REFUSED
/// Errors: ZEL_STATUS_REFUSED when the camera did not take the value as it is, with requested, actual and range in the
/// message. Any thread; talks to the camera.
ZEL_C_API zel_status ZEL_CALL zel_camera_set_value(zel_camera* camera, uint32_t id, const zel_value* value,
                                                   zel_set_result* result);

/// A number by the parameter's name, in its unit. Errors, thread and lock as zel_camera_get_value().
///   name   as in zel_parameter_find()
///   value  receives it; the first word of regions and texts
ZEL_C_API zel_status ZEL_CALL zel_camera_get_integer(zel_camera* camera, const char* name, int64_t* value);

/// Writes a number by the parameter's name and reads it back. Result, errors, thread and lock as
/// zel_camera_set_value().
///   value  in the parameter's unit
ZEL_C_API zel_status ZEL_CALL zel_camera_set_integer(zel_camera* camera, const char* name, int64_t value,
                                                     zel_set_result* result);

/// Any value as text, by the parameter's name. Errors, thread and lock as zel_camera_get_value().
///   text, size, length  see "Texts" at the top; 128 characters are enough
ZEL_C_API zel_status ZEL_CALL zel_camera_get_text(zel_camera* camera, const char* name, char* text, size_t size,
                                                  size_t* length);

/// Writes a value as a user types it, by the parameter's name, and reads it back. Result, errors, thread and lock as
/// zel_camera_set_value().
///   text  a number, decimal or 0x...; "x,y,width,height,xbin,ybin"; or a text of up to 31 characters
ZEL_C_API zel_status ZEL_CALL zel_camera_set_text(zel_camera* camera, const char* name, const char* text,
                                                  zel_set_result* result);

/// The part of the sensor that frames show, and the binning.
///   region  receives both
/// Errors: ZEL_STATUS_REFUSED. Any thread; talks to the camera.
ZEL_C_API zel_status ZEL_CALL zel_camera_get_region(zel_camera* camera, zel_region* region);

/// Sets the part of the sensor that frames show from the next start on, the binning, or both.
///   region  width and height 0: the region stays as it is; both binning factors 0: the binning stays
/// Errors: ZEL_STATUS_REFUSED when it is not on the sensor. Any thread; talks to the camera.
ZEL_C_API zel_status ZEL_CALL zel_camera_set_region(zel_camera* camera, const zel_region* region);

/// From the next start on each frame is the mean of the last ones.
///   frames  how many; 0 or 1 switches averaging off
/// Errors: ZEL_STATUS_REFUSED. Any thread; waits for the frame that is just being processed.
ZEL_C_API zel_status ZEL_CALL zel_camera_set_averaging(zel_camera* camera, int32_t frames);

/// Switches the correction of the camera's taps on or off.
///   on  1 or 0
/// Errors: ZEL_STATUS_REFUSED while there are no tables: open the camera with `calibrated`. Any thread; waits for a
/// table that is just being loaded.
ZEL_C_API zel_status ZEL_CALL zel_camera_set_calibration(zel_camera* camera, int32_t on);

/// Sends a text command.
///   command             the command
///   text, size, length  the reply, see "Texts" at the top; 4096 characters are enough
/// Errors: ZEL_STATUS_TIMEOUT when no reply comes within 5 s. Any thread; talks to the camera.
ZEL_C_API zel_status ZEL_CALL zel_camera_command(zel_camera* camera, const char* command, char* text, size_t size,
                                                 size_t* length);

/* ---- color ---- */

/// Frames have a color picture from now on. Saved ones are color files.
///   options  null for 16 bits, sRGB
/// Errors: ZEL_STATUS_REFUSED for a monochrome camera, with binning, and where the color space can't be had. Any
/// thread; talks to the camera; one lock per camera while a setting is made.
ZEL_C_API zel_status ZEL_CALL zel_camera_use_color(zel_camera* camera, const zel_color_options* options);

/// Frames have grey samples alone from now on. Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_camera_use_grey(zel_camera* camera);

/* ---- running ---- */

/// Starts an acquisition; one that runs is stopped first, and frames of it that still wait are dropped.
///   options  null: as set, without an end
/// Errors: ZEL_STATUS_REFUSED when the camera does not start, and when frames are held whose memory the new pool would
/// take. Any thread; talks to the camera; one start or stop at a time per camera.
ZEL_C_API zel_status ZEL_CALL zel_camera_start(zel_camera* camera, const zel_start_options* options);

/// Stops it; ZEL_OK also when it was not running. Afterwards no frame callback runs, unless this is called inside one.
/// Errors: ZEL_STATUS_FAILED when the camera did not answer. Any thread; talks to the camera; as zel_camera_start().
ZEL_C_API zel_status ZEL_CALL zel_camera_stop(zel_camera* camera);

/// Takes one frame of an acquisition with ZEL_TRIGGER_SOFTWARE.
/// Errors: ZEL_STATUS_REFUSED. Any thread; talks to the camera.
ZEL_C_API zel_status ZEL_CALL zel_camera_trigger(zel_camera* camera);

/// The next frame, or the reason why none came within the time: at once where none can come, as after a lost link and
/// at the end of a sequence.
///   timeout_ms  milliseconds, or ZEL_WAIT_AUTO
///   order       one of zel_order
///   frame       receives the frame, which zel_frame_release() gives back; null when there is none
///   info        may be null; receives what zel_frame_get_info() answers
/// Errors: ZEL_STATUS_LINK_LOST, or a reason from ZEL_STATUS_INTERRUPTED on. One thread at a time per camera; talks to
/// the camera when no frame came.
ZEL_C_API zel_status ZEL_CALL zel_camera_wait(zel_camera* camera, int32_t timeout_ms, int32_t order, zel_frame** frame,
                                              zel_frame_info* info);

/// As zel_camera_wait(), without asking for the reason: for short waits in a loop.
/// Errors: ZEL_STATUS_TIMEOUT for every reason. One thread at a time per camera; talks to nobody.
ZEL_C_API zel_status ZEL_CALL zel_camera_try_wait(zel_camera* camera, int32_t timeout_ms, int32_t order,
                                                  zel_frame** frame, zel_frame_info* info);

/// Ends the wait that another thread is in, at once, else the next one of this run. Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_camera_interrupt(zel_camera* camera);

/// Why no frame comes now.
///   waited_ms  how long one was waited for, in milliseconds, 0 or more
///   why        receives the reason
/// Any thread; talks to the camera.
ZEL_C_API zel_status ZEL_CALL zel_camera_why_no_frame(zel_camera* camera, int32_t waited_ms, zel_no_frame* why);

/// Frames that did not reach the application since the start, by cause; asked best when the camera is stopped.
///   drops  receives the counts
/// Any thread; asks the transport.
ZEL_C_API zel_status ZEL_CALL zel_camera_get_drops(zel_camera* camera, zel_drops* drops);

/// Frames go to this function instead of zel_camera_wait(); to be set before the start. Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_camera_on_frame(zel_camera* camera, zel_frame_callback callback, void* user);

/// Sets the function that is told of a lost link, of its return and of the camera's own events. Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_camera_on_event(zel_camera* camera, zel_camera_event_callback callback, void* user);

/// The next event of the camera, for programs that can't be called back. Events are kept for it, 64 at the most, from
/// the opening on; a callback is told of them as well.
///   timeout_ms  0 or more milliseconds
///   event       receives it; set its struct_size
/// Errors: ZEL_STATUS_TIMEOUT. Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_camera_wait_event(zel_camera* camera, int32_t timeout_ms, zel_camera_event* event);

/* ---- frames ---- */

/// The frame's samples and facts. The pointers in it are valid until the frame is released. Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_frame_get_info(zel_frame* frame, zel_frame_info* info);

/// Copies the grey samples.
///   samples  room for them
///   size     of the room in bytes; `pixel_bytes` are needed, else ZEL_STATUS_TOO_SMALL and nothing is copied
/// Any thread; no lock. Safe against a release on another thread, which the pointers of zel_frame_info are not.
ZEL_C_API zel_status ZEL_CALL zel_frame_copy_pixels(zel_frame* frame, uint16_t* samples, size_t size);

/// Copies the color picture, as above with `color_bytes`. ZEL_STATUS_REFUSED when there is none.
ZEL_C_API zel_status ZEL_CALL zel_frame_copy_color(zel_frame* frame, void* picture, size_t size);

/// Saves the frame, replacing an existing file.
///   file_name  the ending chooses the format: .tif, .tiff: grey samples, 16 bits, raw counts; .png: the color picture
///              when there is one, else the grey samples; another one is ZEL_STATUS_INVALID_ARGUMENT
/// Errors: ZEL_STATUS_OUTPUT when it can't be written, a full disk included. Any thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_frame_save(zel_frame* frame, const char* file_name);

/// Inside a frame callback: the frame stays the application's after the callback, until zel_frame_release(). Any
/// thread; no lock.
ZEL_C_API zel_status ZEL_CALL zel_frame_keep(zel_frame* frame);

/// Gives the frame back to its camera's pool. The handle and every pointer into the frame are dead afterwards. Any
/// thread; closes the camera when that was asked for and this is its last frame.
ZEL_C_API zel_status ZEL_CALL zel_frame_release(zel_frame* frame);

#ifdef __cplusplus
}
#endif

#endif
