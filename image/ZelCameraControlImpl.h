// The post-processing half of the camera object: rewrites each raw frame in place, between the transport that delivers
// it and the application that gets it.
#ifndef IMAGE_ZELCAMERACONTROLIMPL_H
#define IMAGE_ZELCAMERACONTROLIMPL_H

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

#include "image/ColorPipeline.h"
#include "image/FrameGeometry.h"
#include "image/ImageManager.h"
#include "image/PixelMemory.h"
#include "include/ZelCamera.h"
#include "kernels/Kernels.h"
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

    // The steps. They rewrite `pixels` and the geometry fields; a step that answers false leaves the frame as it was.
    bool PostProcessImage(ZelImageInternal* image, const FrameGeometry& geometry);
    bool PostProcessTapBalance(ZelImageInternal* image, const FrameGeometry& geometry);
    bool PostProcessSubImage(ZelImageInternal* image, int interface_type, unsigned c0, unsigned r0, unsigned c1,
                             unsigned r1);
    bool PostProcessBinning(ZelImageInternal* image, int interface_type, int vertical, int horizontal);
    bool PostProcessAverageImage(ZelImageInternal* image);

    // The color path. The lock is the processing lock, which is given up while a scratchpad callback runs.
    static constexpr int kMainPipeline = 1;
    static constexpr int kScratchpadPipeline = 2;
    // Null when the pool gave the record up meanwhile.
    ZelImageInternal* PostProcessColorImage(const FrameLease& lease, int pipeline,
                                            std::unique_lock<std::mutex>& processing);

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
    bool CallScratchpad(const ScratchpadHook& hook, ZelImageInternal* image, std::unique_lock<std::mutex>& processing);
    const AtScratchpad* ScratchpadElsewhere(const ZelImageInternal* image) const;
    bool ReserveColorPixels(ZelImageInternal* image);
    bool ReserveColorRows(std::size_t samples);
    static const kernels::KernelTable& ColorKernels(int pipeline);
    bool DemosaicColorImage(const ColorFrame& frame, int pipeline);
    void RunColorSteps(const ColorFrame& frame, int pipeline, bool from_planes);

    static FrameLease Stamp(FrameLease frame);
    bool CropToRegion(ZelImageInternal* image, const FrameGeometry& geometry);
    bool ReserveSpare(ZelImageInternal* image);
    void SwapBuffer(ZelImageInternal* image, PageBuffer& buffer);
    bool ReserveRows(std::size_t samples);
    bool ReadOut(ZelImageInternal* image, const FrameGeometry& geometry, const TapRows& rows, bool& corrected);
    void ReadOutByRows(ZelImageInternal* image, int taps, const TapRows& rows);
    void UnpackFrame(ZelImageInternal* image);
    bool ReorderTaps(ZelImageInternal* image, int taps, const TapRows& rows, bool& corrected);
    bool ReorderTwoTaps(ZelImageInternal* image, const TapRows& rows, bool& corrected);
    bool ReorderFourTaps(ZelImageInternal* image, const TapRows& rows, bool& corrected);
    bool CropByCorners(ZelImageInternal* image, unsigned c0, unsigned r0, unsigned c1, unsigned r1);
    bool CropBySize(ZelImageInternal* image, unsigned c0, unsigned r0, unsigned width, unsigned height);
    bool AllocateAvgBuffer(unsigned pixels);
    void ReleaseAvgBuffer();

    std::mutex m_GeometryLock;
    FrameGeometry m_Geometry;

    ColorPipeline m_ColorPipelines[2];  // main and scratchpad; each has a lock of its own
    std::mutex m_ScratchpadLock;
    ScratchpadHook m_Scratchpad;

    // Everything below belongs to whoever holds the processing lock. It is never held while the application is called.
    std::mutex m_ProcessingLock;
    // Both change places with a record's buffer when the frame was put together in them.
    PageBuffer m_ReorderBuffer;  // of four-tap frames
    PageBuffer m_SpareBuffer;    // of packed frames
    std::vector<std::uint16_t> m_RowScratch;
    std::vector<std::uint16_t> m_ColorRows;  // one row in three planes
    AtScratchpad* m_AtScratchpad = nullptr;
    std::condition_variable m_ScratchpadDone;

    int m_ImageAvgFrameCountMax = 0;  // ring length; 0 = averaging is off
    int m_ImageAvgFrameCount = 0;     // frames in the ring
    int m_ImageAvgFrameIndex = 0;     // slot that the next frame goes to
    std::vector<std::vector<std::uint16_t>> m_ImageAvgRing;
    std::vector<std::uint32_t> m_ImageAvgSums;  // sample by sample, over the frames in the ring
    unsigned m_ImageAvgRingPixels = 0;
    unsigned m_ImageAvgRingBytes = 0;
    unsigned m_ImageAvgFrameBytes = 0;  // size of the frames that are in the ring
    unsigned m_ImageAvgFramePixels = 0;
};

// Interface types that deliver their frames alike.
bool IsUsbOrCameraLink(int interface_type);

}  // namespace zel

#endif
