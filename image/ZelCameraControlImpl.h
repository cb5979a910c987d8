// The post-processing half of the camera object: rewrites each raw frame in place, between the transport that delivers
// it and the application that gets it. It owns the steps and their order (PostProcessing.cpp); the work is theirs.
#ifndef IMAGE_ZELCAMERACONTROLIMPL_H
#define IMAGE_ZELCAMERACONTROLIMPL_H

#include <atomic>

#include "image/ColorPipeline.h"
#include "image/ColorRenderer.h"
#include "image/FrameAverage.h"
#include "image/FrameGeometry.h"
#include "image/ImageManager.h"
#include "image/ScratchpadGate.h"
#include "image/TapReadout.h"
#include "platform/Mutex.h"
#include "sdk/Logger.h"

namespace zel {

class ZelCameraControlImpl {
  public:
    // `balance` evens out the taps, from the first frame on; null without it.
    explicit ZelCameraControlImpl(const char* instance_name, TapBalance* balance = nullptr);
    virtual ~ZelCameraControlImpl();
    ZelCameraControlImpl(const ZelCameraControlImpl&) = delete;
    ZelCameraControlImpl& operator=(const ZelCameraControlImpl&) = delete;

    // Geometry of the frames to come, which each of them keeps. Called before an acquisition's first frame.
    void SetGeometry(const FrameGeometry& geometry);
    FrameGeometry Geometry();

    // The preparations of a start, in this order; each answers 0 or the error code that ends the start.
    int UpdateImagePool(int num_image_buffers, bool color = false);  // `color`: frames are expected in color
    int UpdateImageAvgBuffer();
    // Gives the records up. Nobody is waited for: a thread that works on one of them keeps its memory.
    void ReleaseImagePool() { m_ImageManager.FreeImages(); }

    // A free record for a frame of the present geometry; empty when there is none.
    FrameLease GetFreeImageImpl();
    // The oldest or the newest pending record, stamped with the hand-over times; empty when none waits.
    FrameLease GetPendingImageImpl();
    FrameLease GetLastPendingImageImpl();

    // Post-processes a frame unless that has been done; frames of one camera are processed one at a time. False for a
    // frame that is gone: the camera was closed or got another pool before the end.
    enum class Path { kMonochrome, kColor };
    using Caller = ScratchpadGate::Caller;
    bool PostProcessOnce(const FrameLease& frame, Path path, Caller caller = Caller::kApplication);

    // The application has set color up, so that frames in color are expected from the next start on; so they are after
    // one that was asked for.
    void ExpectColor() { m_ColorExpected = true; }
    bool ColorExpected() const { return m_ColorExpected; }
    void SetScratchpad(ZelScratchpadCallback callback, void* context);
    // Before the transport is asked for anything, see ScratchpadGate.
    void LeaveScratchpad();
    // Ring length of the moving average, 0 = off; takes effect with the next UpdateImageAvgBuffer.
    void SetAveraging(int frame_count_max, bool reset);
    int ScratchBufferCount();
    void ReleaseScratchBuffers();

    ImageManager& Pool() { return m_ImageManager; }
    ColorPipeline& MainPipeline() { return m_MainPipeline; }
    ColorPipeline& ScratchpadPipeline() { return m_ScratchpadPipeline; }

  protected:
    // A color frame came with both binning factors above 1; called under the processing lock.
    virtual void ColorWasBinned() {}
    void LogExtendedInstructionSetPresence(const char* name);

    Logger m_Logger;
    Logger m_TransformLogger;
    ImageManager m_ImageManager;

  private:
    void PrepareProcessing(const FrameGeometry& geometry, bool color);
    static FrameLease Stamp(FrameLease frame);
    ScratchpadHook Scratchpad();
    void PostProcessImage(ZelImageInternal* image, const FrameGeometry& geometry) ZEL_REQUIRES(m_ProcessingLock);
    // The lock is the processing lock, which is given up while a scratchpad callback runs.
    void PostProcessColorImage(const FrameLease& lease, ScratchpadGate::Lock& processing)
        ZEL_REQUIRES(m_ProcessingLock);

    ColorPipeline m_MainPipeline{ColorPipeline::Kind::kMain, m_TransformLogger};
    ColorPipeline m_ScratchpadPipeline{ColorPipeline::Kind::kScratchpad, m_TransformLogger};

    std::atomic<bool> m_ColorExpected = false;
    platform::Mutex m_GeometryLock;
    FrameGeometry m_Geometry ZEL_GUARDED_BY(m_GeometryLock);
    platform::Mutex m_ScratchpadLock;
    ScratchpadHook m_Scratchpad ZEL_GUARDED_BY(m_ScratchpadLock);

    // The steps belong to whoever holds the processing lock. It is never held while the application is called.
    platform::Mutex m_ProcessingLock;
    TapReadout m_TapReadout ZEL_GUARDED_BY(m_ProcessingLock);
    FrameAverage m_Average ZEL_GUARDED_BY(m_ProcessingLock);
    ColorRenderer m_Renderer ZEL_GUARDED_BY(m_ProcessingLock);
    ScratchpadGate m_Scratchpads ZEL_GUARDED_BY(m_ProcessingLock);
};

}  // namespace zel

#endif
