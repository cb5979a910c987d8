/// @file
/// What a transport may ask of the camera object it belongs to: the camera object's second interface.
#ifndef LINK_IZELCAMERACOMMON_H
#define LINK_IZELCAMERACOMMON_H

class ZelImage;

/// The camera object as its transport sees it. A transport gets the pointer through
/// ICameraInterface::SetCameraCommon() and calls it on threads of its own, holding none of its own locks.
///
/// While the camera is being closed GetFreeImage() and GetPendingImage() answer null and the handlers do nothing;
/// everything else is done.
///
/// Frame hand-over: take a free record (null: none is free, drop the frame), fill `pixels`, have the settings filled
/// in, make it pending, then report event 6 and call the image handler. A record that was not filled goes back with
/// ReleaseImage().
class IZelCameraCommon {
  public:
    /// Called once the link is up, inside ICameraInterface::Connect(): reads the camera's identity.
    /// @return 0 = no error, or one of ZEL_ERROR_..., which Connect() answers
    virtual int ConnectCommon() = 0;
    /// Puts the camera into its idle state.
    /// @return 0 on success, 1 when the camera refused twice
    virtual int StopCommon() = 0;
    /// Makes the camera recalculate its settings, sizes the image pool and sets the trigger up; called inside
    /// ICameraInterface::Start().
    /// @return 0, or the code that must end the start
    virtual int StartCommon() = 0;
    /// The same, called inside ICameraInterface::StartTrigger().
    /// @return 0, or the code that must end the start
    virtual int StartTriggerCommon() = 0;
    /// Sends a text command; reads (and drops) the reply when one is expected.
    /// @param text         the command, zero-terminated, with its line end
    /// @param expect_reply whether the camera replies to it
    /// @return 0, or 1 on failure
    virtual int TextCommandCommon(const char* text, bool expect_reply) = 0;
    /// Reads one entry of the camera's parameter table (SyncTableIndex).
    /// @param index      the entry
    /// @param[out] value receives it; of an entry that is a text the first four bytes
    /// @return false when the camera did not answer
    virtual bool GetCameraParameter(int index, int* value) = 0;
    /// Where the camera object keeps its last error code, for the transport to store one.
    /// @return a place that lives as long as the camera object
    virtual int* GetLastErrorPtr() = 0;
    /// Passes the camera's present gain on to the tap balance.
    /// @return false when the camera did not answer
    virtual bool SyncTapBalanceGain() = 0;

    /// A free record to fill. Ask it for its `pixels` and `buffer_size` each time: post-processing may have put the
    /// frame before together in a buffer of its own that changed places with the record's, so an address kept from then
    /// may be released memory.
    /// @return null when none is free: drop the frame
    virtual ZelImage* GetFreeImage() = 0;
    /// The oldest pending record, out of the list.
    /// @return null when none waits
    virtual ZelImage* GetPendingImage() = 0;
    /// Makes a filled record pending, stamped with the time of arrival.
    /// @param image a record from GetFreeImage()
    /// @return false when it is none
    virtual bool SetPendingImage(ZelImage* image) = 0;
    /// Gives a record back that was not filled.
    /// @param image a record from GetFreeImage()
    /// @return false when it is none
    virtual bool ReleaseImage(ZelImage* image) = 0;
    /// Has the settings filled in that the frame was taken with. Only for a record of the pool; another pointer is left
    /// alone.
    /// @param image a record from GetFreeImage()
    virtual void FillImageInfo(ZelImage* image) = 0;
    /// Gives every record back that waits or is in use, those of the application included.
    virtual void FreeAllInUseImages() = 0;

  protected:
    ~IZelCameraCommon() = default;
};

#endif
