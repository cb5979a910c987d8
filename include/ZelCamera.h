// The camera object: open it, set it up, run it, take its frames.
//
// Operations that talk to the camera block for the exchange and may be called from any application thread; a camera
// that falls silent costs a read up to 20 s (four attempts of 5 s). Results are booleans, counts and pointers; nothing
// throws. Frames and events arrive by callback on a thread of the camera's transport (ZelCallbacks.h).
#ifndef ZEL_CAMERA_H
#define ZEL_CAMERA_H

#include "ZelCallbacks.h"
#include "ZelImage.h"
#include "ZelParameters.h"
#include "ZelPlatform.h"

class ZelCamera {
  public:
    // Connects to the camera and reads its identity. True at once when it is open already. On failure GetLastError()
    // tells why.
    virtual bool Open();
    // Disconnects and releases every image record: pointers to images are invalid afterwards. On failure the camera
    // stays open.
    virtual bool Close();
    // Writes 1 or 0 to *is_open. False only for a null pointer.
    virtual bool IsOpen(int* is_open);

    // The name kept in the camera (a text of up to 63 characters that the camera object owns; empty when the camera
    // does not reply; null without a transport), and setting it. The text stays where it is: once the camera has got
    // another name, the next call, on whichever thread, replaces it there.
    virtual const char* GetCameraName();
    virtual bool SetCameraName(const char* name);

    // Size in bytes of one element of a data type code; 0 for code 0, 4 for an unknown one.
    virtual int GetDataTypeSize(int data_type);

    // Reads a parameter.
    //   param_id  ZEL_PARAM_...
    //   size      bytes that `data` can hold (only ZEL_PARAM_USB_ENABLE_LED checks it)
    //   data      receives the value
    // Result: false for an unknown or unsupported id, a null `data`, or a camera that did not answer.
    virtual bool GetParameter(unsigned param_id, unsigned size, void* data);
    // The value as the result; a failed read answers the id itself, an id above 73 answers 0.
    virtual int GetParameterValue(unsigned param_id);
    virtual bool SetParameterValue(int param_id, int value);
    // Writes a parameter. True for every camera-side id, even when the camera refuses the value: read it back to know.
    // False for an unknown or read-only id or a null `data`.
    virtual bool SetParameter(int param_id, const void* data);

    // Restarts the camera's firmware and takes back the binning.
    virtual bool ResetCamera();

    // The oldest frame that waits, post-processed and stamped with the time of hand-over, or null: also while the
    // camera is being closed, and when the pool changed meanwhile. The record is the application's until FreeImage().
    virtual ZelImage* GetPendingImage();
    // The newest frame that waits, in the same way; every older one goes back to the pool unseen.
    virtual ZelImage* GetLastPendingImage();
    // Gives every waiting frame back to the pool.
    virtual bool FreeAllPendingImages();
    // Gives a record taken with GetPendingImage() or GetLastPendingImage() back. False when it is not the
    // application's.
    virtual bool FreeImage(ZelImage* image);

    // Starts an acquisition of frame_count frames, or until Stop(). The pool has ZEL_PARAM_NUM_IMAGE_BUFFERS records.
    // The slot order is Start(int), Start(); Microsoft's compiler lays overloads out in reverse order of declaration.
#if defined(_MSC_VER)
    virtual bool Start();
    virtual bool Start(int frame_count);
#else
    virtual bool Start(int frame_count);
    virtual bool Start();
#endif
    // Stops the acquisition. When it returns no callback runs any more, unless Stop() was called from inside one: then
    // that callback is the last.
    virtual bool Stop();

    virtual int Reserved19();
    virtual int Reserved20();

    // The frame count of a running sequence as the transport keeps it: frames still to come, and setting it.
    virtual int QueryTransportValue();
    virtual bool SetTransportValue(int value);

    // Writes the exposure time's default value.
    virtual bool SetExposureToDefault();

    // The code of the last transport operation (ZEL_ERROR_...), its name (null for a code without one), and clearing
    // it.
    virtual const char* GetLastErrorStr();
    virtual int GetLastError();
    virtual bool ClearLastError();

    virtual bool Reserved27(int, int, int);

    // Sends a text command and waits at most 5 s for the reply, which goes to the text command callback.
    virtual bool SetTextCommand(const char* text);
    virtual bool SetTextCommandCallback(ZelTextCommandCallback callback, void* context);

    // Set the application's callbacks; null switches one off. The two camera control callbacks share one context: the
    // one set last holds for both. False when the transport refuses.
    virtual bool SetCameraControlCallback(ZelCameraControlCallback callback, void* context);
    virtual bool SetCameraControlCallbackEx(ZelCameraControlCallbackEx callback, void* context);
    virtual bool SetImageNotificationCallback(ZelImageNotificationCallback callback, void* context);
    virtual bool SetImageCallback(ZelImageCallback callback, void* context);

    // Starts and ends an acquisition in which each frame waits for a trigger. StopTriggerAcquisition(1) arms the camera
    // again instead of ending it. SoftwareTrigger() takes one frame.
    virtual bool StartTriggerAcquisition();
    virtual bool StopTriggerAcquisition(int flag);
    virtual bool SoftwareTrigger();

    ZEL_INTERFACE_DESTRUCTOR(ZelCamera)
};

// Color transform operations: `operation` of ConcatenateColorTransform(). 0 to 3 choose the output format and start the
// transform anew, as ResetColorTransform() does; 4 to 7 are unused.
#define ZEL_COLOR_TRANSFORM_16_BIT 0             // three 16-bit channels of the given bit depth (0 = the camera's)
#define ZEL_COLOR_TRANSFORM_16_BIT_VARIANT 1     // the same
#define ZEL_COLOR_TRANSFORM_8_BIT_RGB 2          // three 8-bit channels: the upper 8 bits of the camera's
#define ZEL_COLOR_TRANSFORM_8_BIT_RGBX 3         // four 8-bit channels, the fourth always 255
#define ZEL_COLOR_TRANSFORM_CAMERA_CORRECTION 8  // multiply the camera's correction matrix in
#define ZEL_COLOR_TRANSFORM_WHITE_BALANCE 9      // multiply the camera's white balance matrix in
#define ZEL_COLOR_TRANSFORM_WHITE_BALANCE_AND_CORRECTION 10

// The color operations of the same camera object: static_cast<ZelColorCamera*>(camera).
//
// Settings may be made at any time, on any thread and inside callbacks. They are staged and take effect with the next
// frame that is processed. A frame never sees half of an operation, but it may come between two of them.
//
// Channels are numbered 0 = blue, 1 = green, 2 = red, and stand in this order in pictures and tables. Matrices are nine
// floats, row by row, and act on the column (red, green, blue); row 1 gives red. Results are cut to whole numbers and
// limited to 0 ... 2^bits - 1 of the camera's bits, then shifted down to the output depth.
class ZelColorCamera : public ZelCamera {
  public:
    virtual bool Reserved38();

    // Builds the color transform up from one of the operations above. The matrix concatenated last acts on the pixel
    // first. `bit_depth` is looked at by operations 0 and 1; one above the camera's, or below 0, is logged and leaves
    // the depth as it was. False for an unknown operation and for a product that is no number, which is left out. A
    // camera whose matrices can't be read has identity matrices.
    virtual bool ConcatenateColorTransform(int operation, int bit_depth);
    // Multiplies a matrix of the application's own in. False for null and for products that are no numbers.
    virtual bool ConcatenateColorMatrix(const float* matrix);
    // Starts the transform anew: the next matrix concatenated is the transform, and without one pictures pass
    // unchanged. With a camera whose color space is "XYZ" the transform begins with the way to XYZ and back.
    virtual bool ResetColorTransform();
    // Tables applied before and after the transform: the value of channel k for the sample v is entries[3 * v + k]. v
    // is a sample of the camera's bits before the transform, of the output depth after it; samples of num_values and
    // above get the last entry. The table is copied; null or no entries remove it. One whose `channels` is not 3 is
    // taken, but not applied, and logged with each frame. False when memory ran out.
    virtual bool SetInputLinearizationTable(const unsigned short* entries, unsigned num_values, unsigned channels);
    virtual bool SetOutputNonLinearizationTable(const unsigned short* entries, unsigned num_values, unsigned channels);
    // Copies the staged transform, nine floats row by row, under the pipeline's lock.
    virtual bool GetColorTransform(float* matrix);

    // As the operations without "Color", with the frame's color picture in `color_pixels`: w * h pixels of 3 unsigned
    // shorts, 3 bytes or 4 bytes, row after row, no padding. It belongs to the record and is valid until the record is
    // freed.
    //
    // A frame is processed once. With an image callback set, frames of a color camera arrive with their picture and
    // those of a monochrome one without. Without one, the operation that takes the frame decides: these give it a
    // picture (a grey one where the camera has no color filter), GetPendingImage() and GetLastPendingImage() do not.
    // Frames are not binned here; with both binning factors above 1 no picture is made and GetLastError() answers
    // ZEL_ERROR_INVALID_BINNING_SELECTION.
    virtual ZelColorImage* GetPendingColorImage();
    virtual ZelColorImage* GetLastPendingColorImage();
    virtual bool FreeColorImage(ZelColorImage* image);
};

#endif
