/// @file
/// The transport object: how the SDK talks to one physical camera. A camera interface library (a plug-in) creates one
/// per camera and destroys it; the SDK only holds it. Write one of these to bring a new kind of link to the SDK;
/// devices/sim/ is the reference.
#ifndef LINK_ICAMERAINTERFACE_H
#define LINK_ICAMERAINTERFACE_H

#include "ZelPlatform.h"

class IZelCameraCommon;
class ZelCamera;
class ZelImage;

/// @name Kinds of link
/// Values of ICameraInterface::GetInterfaceType().
/// @{
#define CAMERA_TYPE_EDT_CAMERA_LINK 3  ///< Camera Link
#define CAMERA_TYPE_PLEORA_EBUS 4      ///< eBUS: samples of 12 bits come packed
#define CAMERA_TYPE_USB 5              ///< USB
/// @}

/// @name Events
/// Event ids of a ZelCameraEvent; 0 to 5 are the camera's own and passed on to the application unchanged.
/// @{
#define CAMERA_EVENT_IMAGE_READY 6  ///< a frame was made pending
#define CAMERA_EVENT_IMAGE 7        ///< an image event of the transport
#define CAMERA_EVENT_DISCONNECT 8   ///< the link to the connected camera was lost
#define CAMERA_EVENT_RECONNECT 9    ///< it is back
/// @}

/// An event as a transport hands it over.
///
///    offset  size  field
///    0       4     id, unsigned
///    4       4     value
///    8       16    eight signed 16-bit values
struct ZelCameraEvent {
    unsigned id;      ///< CAMERA_EVENT_..., or 0 to 5
    int value;        ///< its value
    short values[8];  ///< eight more
};
static_assert(sizeof(ZelCameraEvent) == 24, "the event record is 24 bytes on every product");

/// What a transport calls for each finished frame, on its own thread, after it has made the record pending and reported
/// event 6.
/// @param image  the record, from IZelCameraCommon::GetFreeImage()
/// @param camera the camera object given at registration
typedef void(ZEL_CALL* ZelImageHandler)(ZelImage* image, ZelCamera* camera);
/// What a transport calls for each event, on its own thread.
/// @param event  the event, read during the call alone
/// @param camera the camera object given at registration
typedef void(ZEL_CALL* ZelEventHandler)(const ZelCameraEvent* event, ZelCamera* camera);

/// The transport object of one camera.
///
/// The SDK serialises SendData()/RecvData() pairs of one camera. Order of calls: SetCameraCommon() once; Connect(),
/// then Stop(), at open; exchanges; Start() or StartTrigger() and Stop() around acquisitions; Disconnect() at close.
///
/// Connect(), Disconnect(), Start(), StartTrigger(), Stop() and StopTrigger() never overlap. Stop(), StopTrigger() and
/// Disconnect() also come from inside the transport's own calls of the camera object: then they do not wait for that
/// call. After Disconnect() on another thread no thread of the transport is inside the camera object, and none fills a
/// record.
///
/// The object dies in destroy_camera_interface and nowhere else, after SetCameraCommon(null), which returns when no
/// call of the camera object is under way any more on another thread. It makes none on its own before Connect(). (When
/// its library was shut down by a search in between and nothing came from the transport since, it is destroyed without
/// that call and while the camera object still lives.) SetCameraCommon() with another camera object, SetCameraObject()
/// and GetCameraObject() store and answer, no more.
///
/// A transport holds none of its own locks while it calls the camera object: an application may call anything inside.
class ICameraInterface {
  public:
    /// Called once after the camera object was built around this transport.
    /// @param camera the camera object's interface for its transport; null tells the transport to drop the pointer
    virtual void SetCameraCommon(IZelCameraCommon* camera) = 0;
    /// Brings the link up and calls IZelCameraCommon::ConnectCommon().
    /// @return 0, or one of ZEL_ERROR_...
    virtual int Connect() = 0;
    /// Takes the link down.
    /// @return 0, or one of ZEL_ERROR_...: then the camera stays open
    virtual int Disconnect() = 0;
    /// Sends one datagram of exactly `len` bytes, never split or merged.
    /// @param len  its size in bytes
    /// @param data its bytes
    /// @return bytes sent
    virtual int SendData(int len, const unsigned char* data) = 0;
    /// Receives bytes of the camera's reply stream. Bytes not yet asked for stay for the next call.
    /// @param len         at most so many bytes
    /// @param[out] buffer receives them
    /// @param timeout_ms  how long to wait for them, in milliseconds
    /// @return bytes stored; 0 when nothing came; never negative
    virtual int RecvData(int len, unsigned char* buffer, int timeout_ms) = 0;
    /// Starts frames, calling IZelCameraCommon::StartCommon() first.
    /// @return 0, or one of ZEL_ERROR_...; the code of StartCommon() when that is not 0
    virtual int Start() = 0;
    /// Stops frames. When it returns on another thread than the transport's own the image and event handlers are not
    /// called any more.
    /// @return 0, or one of ZEL_ERROR_...
    virtual int Stop() = 0;
    /// Kind of link.
    /// @return one of CAMERA_TYPE_...; the same value each time
    virtual int GetInterfaceType() = 0;
    /// The transport's set-up at the start of an acquisition, after the camera has recalculated its settings.
    /// @param[in,out] num_image_buffers how many records the pool is about to have
    /// @return 0, or one of ZEL_ERROR_..., which ends the start
    virtual int PrepareAcquisition(int* num_image_buffers) = 0;
    /// The application set the number of frames of a sequence.
    /// @param frames frames; 0 = until stopped
    virtual void SetFrameCount(int frames) = 0;
    /// Registers the function called for each finished frame.
    /// @param handler the function; null ends it
    /// @param camera  handed to it with each call
    /// @return true when it was taken
    virtual bool SetImageHandler(ZelImageHandler handler, ZelCamera* camera) = 0;
    /// Registers the function called for each event.
    /// @param handler the function; null ends it
    /// @param camera  handed to it with each call
    /// @return true when it was taken
    virtual bool SetEventHandler(ZelEventHandler handler, ZelCamera* camera) = 0;
    /// Follows every registration of an event handler.
    /// @param value always 11
    /// @return true
    virtual bool EnableEvents(int value) = 0;
    /// Passed through from the application.
    /// @return frames still to come of a sequence
    virtual int GetStatusValue() = 0;
    /// Frames lost on the link since the last start. A frame that found no free record is not among them.
    /// @return frames
    virtual int GetDroppedFrames() = 0;
    /// Starts an acquisition in which frames wait for triggers, calling IZelCameraCommon::StartTriggerCommon() first.
    /// @return 0, or one of ZEL_ERROR_...
    virtual int StartTrigger() = 0;
    /// Ends it.
    /// @return true when it has ended
    virtual bool StopTrigger() = 0;
    /// Passed through from the application.
    /// @param value frames of the sequence; 0 = until stopped
    /// @return true when it was taken
    virtual bool SetStatusValue(int value) = 0;
    /// The camera's indicator LED.
    /// @param[out] on receives 0 or 1
    /// @return false without one
    virtual bool GetLedState(unsigned char* on) = 0;
    /// Switches the indicator LED.
    /// @param on true: on
    /// @return false without one
    virtual bool SetLedState(bool on) = 0;
    /// Binds a camera object to this transport.
    /// @param camera the object; null binds none
    virtual void SetCameraObject(ZelCamera* camera) = 0;
    /// The camera object bound to this transport.
    /// @return null when none is
    virtual ZelCamera* GetCameraObject() = 0;

    // Measured figures of the link. A transport that does not measure them keeps the default.

    /// What the link carried over the last second, if the transport measures it.
    /// @return bytes per second
    virtual double GetLinkThroughput() { return 0.0; }
    /// Frames of the last second, if the transport counts them.
    /// @return frames per second
    virtual double GetLinkFrameRate() { return 0.0; }
    /// From the end of the last frame's readout to its hand-over, if the transport measures it.
    /// @return seconds
    virtual double GetLinkLatency() { return 0.0; }
    /// How much of what the link can carry is used, if the transport knows.
    /// @return 0.0 to 1.0
    virtual double GetLinkUtilization() { return 0.0; }

  protected:
    ~ICameraInterface() = default;
};

#endif
