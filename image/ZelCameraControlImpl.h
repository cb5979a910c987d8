// The post-processing half of the camera object: rewrites each raw frame in place, between the transport that delivers
// it and the application that gets it.
#ifndef IMAGE_ZELCAMERACONTROLIMPL_H
#define IMAGE_ZELCAMERACONTROLIMPL_H

#include <cstdint>
#include <span>
#include <thread>
#include <vector>

#include "image/ColorPipeline.h"
#include "image/FrameGeometry.h"
#include "image/ImageManager.h"
#include "image/PixelMemory.h"
#include "include/ZelCamera.h"
#include "kernels/Kernels.h"
#include "platform/Mutex.h"
#include "sdk/Logger.h"

namespace zel {

class TapBalance;
class TapRows;

class ZelCameraControlImpl {
  public:
    explicit ZelCameraControlImpl(const char* instance_name);
    virtual ~ZelCameraControlImpl();
    ZelCameraControlImpl(const ZelCameraControlImpl&) = delete;
    ZelCameraControlImpl& operator=(const ZelCameraControlImpl&) = delete;

    // Geometry of the frames to come, which each of them keeps. Called before an acquisition's first frame.
    void SetGeometry(const FrameGeometry& geometry);
    FrameGeometry Geometry();

    // The preparations of a start, in this order; each answers 0 or the error code that ends the start.
    int UpdateImagePool(int num_image_buffers);
    int UpdateImageAvgBuffer();
    // Gives the records up. Nobody is waited for: a thread that works on one of them keeps its memory.
    void ReleaseImagePool();

    // A free record for a frame of the present geometry; empty when there is none.
    FrameLease GetFreeImageImpl();
    // The oldest or the newest pending record, stamped with the hand-over times; empty when none waits.
    FrameLease GetPendingImageImpl();
    FrameLease GetLastPendingImageImpl();

    // Post-processes a frame unless that has been done; frames of one camera are processed one at a time. A frame whose
    // processing failed is delivered all the same; one that is gone is not: the camera was closed or got another pool
    // before the end.
    enum class Path { kMonochrome, kColor };
    enum class Caller { kTransport, kApplication };
    enum class Outcome { kDone, kFailed, kGone };
    Outcome PostProcessOnce(const FrameLease& frame, Path path, Caller caller = Caller::kApplication);

    // Called before the transport is asked for anything that it may wait for its own thread with: that thread then does
    // not wait for a frame which this thread has at the scratchpad callback.
    void LeaveScratchpad();

    // The steps, under the lock that one thread at a time processes frames with. They rewrite `pixels` and the geometry
    // fields; a step that answers false leaves the frame as it was.
    platform::Mutex& ProcessingLock() ZEL_RETURNS_LOCK(m_ProcessingLock) { return m_ProcessingLock; }
    bool PostProcessImage(ZelImageInternal* image, const FrameGeometry& geometry) ZEL_REQUIRES(m_ProcessingLock);
    bool PostProcessTapBalance(ZelImageInternal* image, const FrameGeometry& geometry) ZEL_REQUIRES(m_ProcessingLock);
    bool PostProcessSubImage(ZelImageInternal* image, const FrameGeometry& geometry);
    bool PostProcessBinning(ZelImageInternal* image, const FrameGeometry& geometry);
    bool PostProcessAverageImage(ZelImageInternal* image) ZEL_REQUIRES(m_ProcessingLock);

    // The color path. The lock is the processing lock, which is given up while a scratchpad callback runs.
    static constexpr int kMainPipeline = 1;
    static constexpr int kScratchpadPipeline = 2;
    // Null when the pool gave the record up meanwhile.
    ZelImageInternal* PostProcessColorImage(const FrameLease& lease, int pipeline,
                                            platform::ScopedLock<platform::Mutex>& processing)
        ZEL_REQUIRES(m_ProcessingLock);

    // Color settings, staged until the next frame. Any thread.
    using ColorTableSlot = std::shared_ptr<const ColorTable> ColorSettings::*;
    bool ConcatenateTransform(int pipeline, int operation, int bit_depth);
    bool ConcatenateMatrix(int pipeline, const float* matrix);
    void ResetTransform(int pipeline);
    bool SetColorTable(int pipeline, ColorTableSlot slot, const unsigned short* entries, unsigned num_values,
                       unsigned channels);
    bool CopyTransform(int pipeline, float* matrix);
    void SetScratchpad(ZelScratchpadCallback callback, void* context);

    // Ring length of the moving average, 0 = off; takes effect with the next UpdateImageAvgBuffer.
    void SetAveraging(int frame_count_max, bool reset);

    int ScratchBufferCount();
    void ReleaseScratchBuffers();

    ImageManager& Pool() { return m_ImageManager; }

  protected:
    // What evens out the taps; null without it.
    virtual TapBalance* Taps() { return nullptr; }
    // A status that a frame's processing came to, one of kStatus...; called under the processing lock.
    static constexpr int kStatusBinnedColor = 19;
    virtual void SetProcessingStatus(int) {}

    ColorPipeline& Pipeline(int pipeline) { return m_ColorPipelines[pipeline == kMainPipeline ? 0 : 1]; }
    void SetOutputBitDepth(ZelColorTransformMatrix& transform, int bits);
    void LogExtendedInstructionSetPresence(const char* name);

    Logger m_Logger;
    Logger m_TransformLogger;
    ImageManager m_ImageManager;

  private:
    // Page memory that is kept between frames.
    struct PageBuffer {
        unsigned short* pixels = nullptr;
        std::size_t capacity = 0;  // bytes

        ~PageBuffer() { Release(); }
        bool Reserve(std::size_t bytes);
        void Release();
    };

    // The scratchpad callback as it was set.
    struct ScratchpadHook {
        ZelScratchpadCallback callback = nullptr;
        void* context = nullptr;
    };
    // A frame that the application has in a scratchpad callback; a list through the stacks of the threads that call.
    struct AtScratchpad {
        const ZelImageInternal* image;
        std::thread::id thread;
        bool leaving;  // the transport's thread does not wait for it
        AtScratchpad* next;
    };
    // A frame on its way through the color steps. They go by these values and not by the record, which the application
    // can write to in between.
    struct ColorFrame {
        ZelImageInternal* image;
        unsigned w, h, num_pixels, size_in_bytes;
        unsigned bit_depth;
        int phase;
        std::span<const std::uint16_t> samples;  // w * h
        std::uint8_t* out;                       // room for every format
    };

    bool ConcatenateColorTransformImpl(ZelColorTransformMatrix& transform, int operation, int bit_depth);
    ScratchpadHook Scratchpad();
    // Gives the lock up for as long as the callback runs, which the check can't follow.
    bool CallScratchpad(const ScratchpadHook& hook, ZelImageInternal* image,
                        platform::ScopedLock<platform::Mutex>& processing)
        ZEL_REQUIRES(m_ProcessingLock) ZEL_NO_THREAD_SAFETY_ANALYSIS;
    const AtScratchpad* ScratchpadElsewhere(const ZelImageInternal* image) const ZEL_REQUIRES(m_ProcessingLock);
    bool ReserveColorPixels(ZelImageInternal* image);
    bool ReserveColorRows(std::size_t samples) ZEL_REQUIRES(m_ProcessingLock);
    static const kernels::KernelTable& ColorKernels(int pipeline);
    bool DemosaicColorImage(const ColorFrame& frame, int pipeline);
    void RunColorSteps(const ColorFrame& frame, int pipeline, bool from_planes) ZEL_REQUIRES(m_ProcessingLock);

    static FrameLease Stamp(FrameLease frame);
    bool ReserveSpare(ZelImageInternal* image) ZEL_REQUIRES(m_ProcessingLock);
    void SwapBuffer(ZelImageInternal* image, PageBuffer& buffer);
    bool ReserveRows(std::size_t samples) ZEL_REQUIRES(m_ProcessingLock);
    bool ReadOut(ZelImageInternal* image, const FrameGeometry& geometry, const TapRows& rows, bool& corrected)
        ZEL_REQUIRES(m_ProcessingLock);
    void ReadOutByRows(ZelImageInternal* image, int taps, const TapRows& rows) ZEL_REQUIRES(m_ProcessingLock);
    void UnpackFrame(ZelImageInternal* image) ZEL_REQUIRES(m_ProcessingLock);
    bool ReorderTaps(ZelImageInternal* image, int taps, const TapRows& rows, bool& corrected)
        ZEL_REQUIRES(m_ProcessingLock);
    bool ReorderTwoTaps(ZelImageInternal* image, const TapRows& rows, bool& corrected) ZEL_REQUIRES(m_ProcessingLock);
    bool ReorderFourTaps(ZelImageInternal* image, const TapRows& rows, bool& corrected) ZEL_REQUIRES(m_ProcessingLock);
    bool CropByCorners(ZelImageInternal* image, unsigned c0, unsigned r0, unsigned c1, unsigned r1);
    bool CropBySize(ZelImageInternal* image, unsigned c0, unsigned r0, unsigned width, unsigned height);
    bool AllocateAvgBuffer(unsigned pixels) ZEL_REQUIRES(m_ProcessingLock);
    void ReleaseAvgBuffer() ZEL_REQUIRES(m_ProcessingLock);

    platform::Mutex m_GeometryLock;
    FrameGeometry m_Geometry ZEL_GUARDED_BY(m_GeometryLock);

    ColorPipeline m_ColorPipelines[2];  // main and scratchpad; each has a lock of its own
    platform::Mutex m_ScratchpadLock;
    ScratchpadHook m_Scratchpad ZEL_GUARDED_BY(m_ScratchpadLock);

    // Everything below belongs to whoever holds the processing lock. It is never held while the application is called.
    platform::Mutex m_ProcessingLock;
    // Both change places with a record's buffer when the frame was put together in them.
    PageBuffer m_ReorderBuffer ZEL_GUARDED_BY(m_ProcessingLock);  // of four-tap frames
    PageBuffer m_SpareBuffer ZEL_GUARDED_BY(m_ProcessingLock);    // of packed frames
    std::vector<std::uint16_t> m_RowScratch ZEL_GUARDED_BY(m_ProcessingLock);
    std::vector<std::uint16_t> m_ColorRows ZEL_GUARDED_BY(m_ProcessingLock);  // one row in three planes
    AtScratchpad* m_AtScratchpad ZEL_GUARDED_BY(m_ProcessingLock) = nullptr;
    platform::Condition m_ScratchpadDone;

    int m_ImageAvgFrameCountMax ZEL_GUARDED_BY(m_ProcessingLock) = 0;  // ring length; 0 = averaging is off
    int m_ImageAvgFrameCount ZEL_GUARDED_BY(m_ProcessingLock) = 0;     // frames in the ring
    int m_ImageAvgFrameIndex ZEL_GUARDED_BY(m_ProcessingLock) = 0;     // slot that the next frame goes to
    std::vector<std::vector<std::uint16_t>> m_ImageAvgRing ZEL_GUARDED_BY(m_ProcessingLock);
    // Sample by sample, over the frames in the ring.
    std::vector<std::uint32_t> m_ImageAvgSums ZEL_GUARDED_BY(m_ProcessingLock);
    unsigned m_ImageAvgRingPixels ZEL_GUARDED_BY(m_ProcessingLock) = 0;
    unsigned m_ImageAvgRingBytes ZEL_GUARDED_BY(m_ProcessingLock) = 0;
    unsigned m_ImageAvgFrameBytes ZEL_GUARDED_BY(m_ProcessingLock) = 0;  // size of the frames that are in the ring
    unsigned m_ImageAvgFramePixels ZEL_GUARDED_BY(m_ProcessingLock) = 0;
};

}  // namespace zel

#endif
