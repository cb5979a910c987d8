// The transport object: how the SDK talks to one physical camera. A camera interface library (a plug-in) creates one
// per camera and destroys it; the SDK only holds it. Write one of these to bring a new kind of link to the SDK;
// devices/sim/ is the reference.
//
// The SDK serialises SendData/RecvData pairs of one camera. Order of calls: SetCameraCommon once; Connect, then Stop,
// at open; exchanges; Start or StartTrigger and Stop around acquisitions; Disconnect at close.
//
// Connect, Disconnect, Start, StartTrigger, Stop and StopTrigger never overlap. Stop, StopTrigger and Disconnect also
// come from inside the transport's own calls of the camera object: then they do not wait for that call. After
// Disconnect on another thread no thread of the transport is inside the camera object, and none fills a record.
//
// The object dies in destroy_camera_interface and nowhere else, after SetCameraCommon(null), which returns when no call
// of the camera object is under way any more on another thread. It makes none on its own before Connect. (When its
// library was shut down by a search in between and nothing came from the transport since, it is destroyed without that
// call and while the camera object still lives.) SetCameraCommon with another camera object, SetCameraObject and
// GetCameraObject store and answer, no more.
#ifndef LINK_ICAMERAINTERFACE_H
#define LINK_ICAMERAINTERFACE_H

#include "ZelPlatform.h"

class IZelCameraCommon;
class ZelCamera;
class ZelImage;

// Values of ICameraInterface::GetInterfaceType().
#define CAMERA_TYPE_EDT_CAMERA_LINK 3
#define CAMERA_TYPE_PLEORA_EBUS 4
#define CAMERA_TYPE_USB 5

// Event ids of a ZelCameraEvent; 0 to 5 are the camera's own and passed on to the application unchanged.
#define CAMERA_EVENT_IMAGE_READY 6
#define CAMERA_EVENT_IMAGE 7
#define CAMERA_EVENT_DISCONNECT 8
#define CAMERA_EVENT_RECONNECT 9

// An event as a transport hands it over.
//
//    offset  size  field
//    0       4     id, unsigned
//    4       4     value
//    8       16    eight signed 16-bit values
struct ZelCameraEvent {
    unsigned id;
    int value;
    short values[8];
};
static_assert(sizeof(ZelCameraEvent) == 24, "the event record is 24 bytes on every product");

// The functions a transport calls, on its own thread, with the camera object given at registration.
typedef void(ZEL_CALL* ZelImageHandler)(ZelImage* image, ZelCamera* camera);
typedef void(ZEL_CALL* ZelEventHandler)(const ZelCameraEvent* event, ZelCamera* camera);

class ICameraInterface {
  public:
    // Called once after the camera object was built around this transport; null tells the transport to drop the
    // pointer.
    virtual void SetCameraCommon(IZelCameraCommon* camera) = 0;
    // Brings the link up and calls IZelCameraCommon::ConnectCommon(). Connect, Disconnect, Start, Stop,
    // PrepareAcquisition and StartTrigger answer an error code: 0, or one of ZEL_ERROR_...
    virtual int Connect() = 0;
    virtual int Disconnect() = 0;
    // Sends one datagram of exactly `len` bytes, never split or merged. Result: bytes sent.
    virtual int SendData(int len, const unsigned char* data) = 0;
    // Receives at most `len` bytes of the camera's reply stream, waiting at most timeout_ms. Result: bytes stored; 0
    // when nothing came; never negative. Bytes not yet asked for stay for the next call.
    virtual int RecvData(int len, unsigned char* buffer, int timeout_ms) = 0;
    // Start frames, calling StartCommon() first; stop them. When Stop returns on another thread than the transport's
    // own the image and event handlers are not called any more.
    virtual int Start() = 0;
    virtual int Stop() = 0;
    // One of CAMERA_TYPE_...; the same value each time.
    virtual int GetInterfaceType() = 0;
    // The transport's set-up at the start of an acquisition, after the camera has recalculated its settings.
    // num_image_buffers: how many records the pool is about to have.
    virtual int PrepareAcquisition(int* num_image_buffers) = 0;
    // The application set the number of frames of a sequence (0 = until stopped).
    virtual void SetFrameCount(int frames) = 0;
    // Register the functions called for each finished frame and each event; null ends it. True when it was taken.
    virtual bool SetImageHandler(ZelImageHandler handler, ZelCamera* camera) = 0;
    virtual bool SetEventHandler(ZelEventHandler handler, ZelCamera* camera) = 0;
    // Follows every registration of an event handler; the value is always 11.
    virtual bool EnableEvents(int value) = 0;
    // Passed through from the application: frames still to come of a sequence.
    virtual int GetStatusValue() = 0;
    // Frames lost on the link since the last start. A frame that found no free record is not among them.
    virtual int GetDroppedFrames() = 0;
    // Start and end an acquisition in which frames wait for triggers; StartTrigger calls StartTriggerCommon() first.
    virtual int StartTrigger() = 0;
    virtual bool StopTrigger() = 0;
    virtual bool SetStatusValue(int value) = 0;
    // The camera's indicator LED: one byte, 0 or 1.
    virtual bool GetLedState(unsigned char* on) = 0;
    virtual bool SetLedState(bool on) = 0;
    // The camera object bound to this transport; null when none is.
    virtual void SetCameraObject(ZelCamera* camera) = 0;
    virtual ZelCamera* GetCameraObject() = 0;

    // Measured figures of the link. A transport that does not measure them keeps the default.
    virtual double GetLinkThroughput() { return 0.0; }   // bytes per second over the last second
    virtual double GetLinkFrameRate() { return 0.0; }    // frames per second over the last second
    virtual double GetLinkLatency() { return 0.0; }      // seconds from end of readout to hand-over, last frame
    virtual double GetLinkUtilization() { return 0.0; }  // 0.0 to 1.0 of what the link can carry

  protected:
    ~ICameraInterface() = default;
};

#endif
