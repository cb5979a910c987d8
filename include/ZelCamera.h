/// @file
/// The camera object: open it, set it up, run it, take its frames.
#ifndef ZEL_CAMERA_H
#define ZEL_CAMERA_H

#include "ZelCallbacks.h"
#include "ZelImage.h"
#include "ZelParameters.h"
#include "ZelPlatform.h"

/// A camera: from ZelSDK::GetCamera(), never created or deleted by the application.
///
/// Operations that talk to the camera block for the exchange and may be called from any application thread, and inside
/// callbacks; a camera that falls silent costs a read up to 20 s (four attempts of 5 s). Results are booleans, counts
/// and pointers; nothing throws. Frames and events arrive by callback on a thread of the camera's transport
/// (ZelCallbacks.h). No lock is held while a callback runs.
///
/// While the camera is being closed, and once the object is retired (ZelSDK::GetNumberOfCameras()), operations answer
/// false, 0 or null.
class ZelCamera {
  public:
    /// Connects to the camera and reads its identity.
    /// @return true, at once when it is open already; on failure GetLastError() tells why
    virtual bool Open();
    /// Disconnects and releases every image record: pointers to images are invalid afterwards. On failure the camera
    /// stays open.
    /// @return true when it is closed; GetLastError() tells why not
    virtual bool Close();
    /// Whether the camera is open. Waits for nothing.
    /// @param[out] is_open receives 1 or 0
    /// @return false only for a null pointer
    virtual bool IsOpen(int* is_open);

    /// The name kept in the camera. The text stays where it is: once the camera has got another name, the next call, on
    /// whichever thread, replaces it there.
    /// @return a text of up to 63 characters that the camera object owns; empty when the camera does not reply; null
    ///         without a transport
    virtual const char* GetCameraName();
    /// Gives the camera another name, which it keeps.
    /// @param name the name, zero-terminated
    /// @return false for null, and when the camera does not reply
    virtual bool SetCameraName(const char* name);

    /// Size of one element of a data type. Waits for nothing.
    /// @param data_type ZEL_DATA_TYPE_...
    /// @return bytes; 0 for code 0, 4 for an unknown one
    virtual int GetDataTypeSize(int data_type);

    /// Reads a parameter.
    /// @param param_id  ZEL_PARAM_...
    /// @param size      bytes that `data` can hold (only ZEL_PARAM_USB_ENABLE_LED checks it)
    /// @param[out] data receives the value: four bytes, or what its parameter says
    /// @return false for an unknown or unsupported id, a null `data`, or a camera that did not answer
    virtual bool GetParameter(unsigned param_id, unsigned size, void* data);
    /// Reads a parameter of 32 bits.
    /// @param param_id ZEL_PARAM_...
    /// @return the value; a failed read answers the id itself, an id above 73 answers 0
    virtual int GetParameterValue(unsigned param_id);
    /// Writes a parameter of 32 bits.
    /// @param param_id ZEL_PARAM_...
    /// @param value    the value
    /// @return as SetParameter()
    virtual bool SetParameterValue(int param_id, int value);
    /// Writes a parameter.
    /// @param param_id ZEL_PARAM_...
    /// @param data     the value: four bytes, or what its parameter says
    /// @return true for every camera-side id, even when the camera refuses the value: read it back to know; false for
    ///         an unknown or read-only id or a null `data`
    virtual bool SetParameter(int param_id, const void* data);

    /// Restarts the camera's firmware and takes back the binning.
    /// @return false without a transport
    virtual bool ResetCamera();

    /// The oldest frame that waits, post-processed and stamped with the time of hand-over. Does not wait for one. The
    /// record is the application's until FreeImage().
    /// @return null when none waits, also while the camera is being closed, and when the pool changed meanwhile
    virtual ZelImage* GetPendingImage();
    /// The newest frame that waits, in the same way; every older one goes back to the pool unseen.
    /// @return null as above
    virtual ZelImage* GetLastPendingImage();
    /// Gives every waiting frame back to the pool.
    /// @return true
    virtual bool FreeAllPendingImages();
    /// Gives a record taken with GetPendingImage() or GetLastPendingImage() back.
    /// @param image the record
    /// @return false when it is not the application's
    virtual bool FreeImage(ZelImage* image);

    // The slot order is Start(int), Start(); Microsoft's compiler lays overloads out in reverse order of declaration.
#if defined(_MSC_VER)
    virtual bool Start();
    virtual bool Start(int frame_count);
#else
    /// Starts an acquisition of so many frames. The pool has ZEL_PARAM_NUM_IMAGE_BUFFERS records.
    /// @param frame_count frames to take; 0 = until Stop()
    /// @return false when camera or transport refuse, when Stop() or Close() comes meanwhile, and inside a callback
    ///         while another thread is in Open(), Start(), Stop() or Close(); GetLastError() tells why
    virtual bool Start(int frame_count);
    /// Starts an acquisition until Stop(), or of ZEL_PARAM_FRAME_COUNT frames when that is not 0.
    /// @return false as above
    virtual bool Start();
#endif
    /// Stops the acquisition. When it returns no callback runs any more, unless Stop() was called from inside one: then
    /// that callback is the last.
    /// @return false when the transport could not; GetLastError() tells why
    virtual bool Stop();

    /// Reserved; keeps the place.
    /// @return 0
    virtual int Reserved19();
    /// Reserved; keeps the place.
    /// @return 0
    virtual int Reserved20();

    /// The frame count of a running sequence as the transport keeps it.
    /// @return frames still to come; 0 without a transport
    virtual int QueryTransportValue();
    /// Sets the frame count of a sequence.
    /// @param value frames; 0 = until stopped
    /// @return false when the transport refuses
    virtual bool SetTransportValue(int value);

    /// Writes the exposure time's default value.
    /// @return false without a transport
    virtual bool SetExposureToDefault();

    /// The name of the code of the last transport operation. Waits for nothing.
    /// @return a text such as "ZEL_ERROR_UNSUPPORTED"; null for a code without one
    virtual const char* GetLastErrorStr();
    /// The code of the last transport operation. Waits for nothing.
    /// @return ZEL_ERROR_... or ZEL_NO_ERROR
    virtual int GetLastError();
    /// Clears that code.
    /// @return true
    virtual bool ClearLastError();

    /// Reserved; keeps the place.
    /// @return true
    virtual bool Reserved27(int, int, int);

    /// Sends a text command and waits at most 5 s for the reply, which goes to the text command callback.
    /// @param text the command, zero-terminated, without line end; at most 250 characters of it are sent
    /// @return false for null, and when no reply came
    virtual bool SetTextCommand(const char* text);
    /// Sets the function that gets the replies to text commands. This and the next four may be called at any time; a
    /// function that is replaced may still be running on another thread.
    /// @param callback the function; null switches it off
    /// @param context  handed to it with each call
    /// @return true
    virtual bool SetTextCommandCallback(ZelTextCommandCallback callback, void* context);

    /// Sets the function that is told of the camera's events. The two camera control callbacks share one context: the
    /// one set last holds for both.
    /// @param callback the function; null switches it off
    /// @param context  handed to it with each call
    /// @return false when the transport refuses
    virtual bool SetCameraControlCallback(ZelCameraControlCallback callback, void* context);
    /// Sets the function that is told of the camera's own events with their values.
    /// @param callback the function; null switches it off
    /// @param context  handed to both camera control callbacks with each call
    /// @return false when the transport refuses
    virtual bool SetCameraControlCallbackEx(ZelCameraControlCallbackEx callback, void* context);
    /// Sets the function that is told that a frame is pending.
    /// @param callback the function; null switches it off
    /// @param context  handed to it with each call
    /// @return false when the transport refuses
    virtual bool SetImageNotificationCallback(ZelImageNotificationCallback callback, void* context);
    /// Sets the function that gets each frame, post-processed on the transport's thread.
    /// @param callback the function; null switches it off
    /// @param context  handed to it with each call
    /// @return false when the transport refuses
    virtual bool SetImageCallback(ZelImageCallback callback, void* context);

    /// Starts an acquisition in which each frame waits for a trigger.
    /// @return false when the camera refuses; GetLastError() tells why
    virtual bool StartTriggerAcquisition();
    /// Ends such an acquisition, or arms the camera again.
    /// @param flag 1: arm again instead of ending it
    /// @return false when the transport could not
    virtual bool StopTriggerAcquisition(int flag);
    /// Takes one frame of such an acquisition.
    /// @return false when the camera refuses
    virtual bool SoftwareTrigger();

    ZEL_INTERFACE_DESTRUCTOR(ZelCamera)
};

/// @name Color transform operations
/// `operation` of ZelColorCamera::ConcatenateColorTransform(). 0 to 3 choose the output format and start the transform
/// anew, as ResetColorTransform() does; 4 to 7 are unused.
/// @{
#define ZEL_COLOR_TRANSFORM_16_BIT 0             ///< three 16-bit channels of the given bit depth (0 = the camera's)
#define ZEL_COLOR_TRANSFORM_16_BIT_VARIANT 1     ///< the same
#define ZEL_COLOR_TRANSFORM_8_BIT_RGB 2          ///< three 8-bit channels: the upper 8 bits of the camera's
#define ZEL_COLOR_TRANSFORM_8_BIT_RGBX 3         ///< four 8-bit channels, the fourth always 255
#define ZEL_COLOR_TRANSFORM_CAMERA_CORRECTION 8  ///< multiply the camera's correction matrix in
#define ZEL_COLOR_TRANSFORM_WHITE_BALANCE 9      ///< multiply the camera's white balance matrix in
#define ZEL_COLOR_TRANSFORM_WHITE_BALANCE_AND_CORRECTION 10  ///< both, so that the correction acts on a pixel first
/// @}

/// The color operations of the same camera object: static_cast<ZelColorCamera*>(camera).
///
/// Settings may be made at any time, on any thread and inside callbacks. They are staged and take effect with the next
/// frame that is processed. A frame never sees half of an operation, but it may come between two of them.
///
/// Channels are numbered 0 = blue, 1 = green, 2 = red, and stand in this order in pictures and tables. Matrices are
/// nine floats, row by row, and act on the column (red, green, blue); row 1 gives red. Results are cut to whole numbers
/// and limited to 0 ... 2^bits - 1 of the camera's bits, then shifted down to the output depth.
class ZelColorCamera : public ZelCamera {
  public:
    /// Reserved; keeps the place.
    /// @return true
    virtual bool Reserved38();

    /// Builds the color transform up from one of the operations above. The matrix concatenated last acts on the pixel
    /// first. A camera whose matrices can't be read has identity matrices.
    /// @param operation ZEL_COLOR_TRANSFORM_...
    /// @param bit_depth bits of an output channel, looked at by operations 0 and 1; one above the camera's, or below 0,
    ///                  is logged and leaves the depth as it was
    /// @return false for an unknown operation and for a product that is no number, which is left out
    virtual bool ConcatenateColorTransform(int operation, int bit_depth);
    /// Multiplies a matrix of the application's own in.
    /// @param matrix nine floats, row by row; copied
    /// @return false for null and for products that are no numbers
    virtual bool ConcatenateColorMatrix(const float* matrix);
    /// Starts the transform anew: the next matrix concatenated is the transform, and without one pictures pass
    /// unchanged. With a camera whose color space is "XYZ" the transform begins with the way to XYZ and back.
    /// @return false while the camera is being closed
    virtual bool ResetColorTransform();
    /// Sets a table applied before the transform: the value of channel k for the sample v, of the camera's bits, is
    /// entries[3 * v + k]. Samples of `num_values` and above get the last entry.
    /// @param entries    num_values * channels values, copied; null removes the table
    /// @param num_values values of each channel; 0 removes the table
    /// @param channels   3; a table of another number is taken, but not applied, and logged with each frame
    /// @return false when memory ran out
    virtual bool SetInputLinearizationTable(const unsigned short* entries, unsigned num_values, unsigned channels);
    /// Sets a table applied after the transform, in the same way; a sample is of the output depth here.
    /// @param entries    num_values * channels values, copied; null removes the table
    /// @param num_values values of each channel; 0 removes the table
    /// @param channels   3, as above
    /// @return false when memory ran out
    virtual bool SetOutputNonLinearizationTable(const unsigned short* entries, unsigned num_values, unsigned channels);
    /// Copies the staged transform, under the pipeline's lock.
    /// @param[out] matrix receives nine floats, row by row
    /// @return false for null
    virtual bool GetColorTransform(float* matrix);

    /// As GetPendingImage(), with the frame's color picture in `color_pixels`: w * h pixels of 3 unsigned shorts, 3
    /// bytes or 4 bytes, row after row, no padding. It belongs to the record and is valid until the record is freed.
    ///
    /// A frame is processed once. With an image callback set, frames of a color camera arrive with their picture and
    /// those of a monochrome one without. Without one, the operation that takes the frame decides: the two color ones
    /// give it a picture (a grey one where the camera has no color filter), GetPendingImage() and GetLastPendingImage()
    /// do not. Frames are not binned here; with both binning factors above 1 no picture is made and GetLastError()
    /// answers ZEL_ERROR_INVALID_BINNING_SELECTION.
    /// @return null when none waits
    virtual ZelColorImage* GetPendingColorImage();
    /// As GetLastPendingImage(), with the color picture as above.
    /// @return null when none waits
    virtual ZelColorImage* GetLastPendingColorImage();
    /// As FreeImage().
    /// @param image the record
    /// @return false when it is not the application's
    virtual bool FreeColorImage(ZelColorImage* image);
};

#endif
