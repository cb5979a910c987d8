// What a transport may ask of the camera object it belongs to: the camera object's second interface. A transport gets
// the pointer through ICameraInterface::SetCameraCommon() and calls it on threads of its own.
//
// While the camera is being closed GetFreeImage() and GetPendingImage() answer null and the handlers do nothing;
// everything else is done.
#ifndef LINK_IZELCAMERACOMMON_H
#define LINK_IZELCAMERACOMMON_H

class ZelImage;

class IZelCameraCommon {
  public:
    // Called once the link is up, inside Connect(): reads the camera's identity. Result: 0 = no error.
    virtual int ConnectCommon() = 0;
    // Puts the camera into its idle state. Result: 0 on success, 1 when the camera refused twice.
    virtual int StopCommon() = 0;
    // Makes the camera recalculate its settings, sizes the image pool and sets the trigger up; called inside Start()
    // and StartTrigger(). Result: 0, or the code that must end the start.
    virtual int StartCommon() = 0;
    virtual int StartTriggerCommon() = 0;
    // Sends a text command; reads (and drops) the reply when one is expected. Result: 0, or 1 on failure.
    virtual int TextCommandCommon(const char* text, bool expect_reply) = 0;
    // Reads one entry of the camera's parameter table (SyncTableIndex).
    virtual bool GetCameraParameter(int index, int* value) = 0;
    // Where the camera object keeps its last error code, for the transport to store one.
    virtual int* GetLastErrorPtr() = 0;
    // Passes the camera's present gain on to the tap balance.
    virtual bool SyncTapBalanceGain() = 0;

    // Frame hand-over: take a free record (null: none is free, drop the frame), fill `pixels`, have the settings filled
    // in, make it pending, then report event 6 and call the image handler. A record that was not filled goes back with
    // ReleaseImage().
    // Ask a record for its `pixels` and `buffer_size` each time: post-processing may have put the frame before together
    // in a buffer of its own that changed places with the record's, so an address kept from then may be released
    // memory.
    virtual ZelImage* GetFreeImage() = 0;
    virtual ZelImage* GetPendingImage() = 0;
    virtual bool SetPendingImage(ZelImage* image) = 0;
    virtual bool ReleaseImage(ZelImage* image) = 0;
    // Only for a record of the pool; another pointer is left alone.
    virtual void FillImageInfo(ZelImage* image) = 0;
    virtual void FreeAllInUseImages() = 0;

  protected:
    ~IZelCameraCommon() = default;
};

#endif
