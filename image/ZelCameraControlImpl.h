// The post-processing half of the camera object: rewrites each raw frame in place, between the transport that delivers
// it and the application that gets it.
#ifndef IMAGE_ZELCAMERACONTROLIMPL_H
#define IMAGE_ZELCAMERACONTROLIMPL_H

#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

#include "image/FrameGeometry.h"
#include "image/ImageManager.h"
#include "image/PixelMemory.h"
#include "sdk/Logger.h"

namespace zel {

class ZelCameraControlImpl {
  public:
    explicit ZelCameraControlImpl(const char* instance_name);
    virtual ~ZelCameraControlImpl();
    ZelCameraControlImpl(const ZelCameraControlImpl&) = delete;
    ZelCameraControlImpl& operator=(const ZelCameraControlImpl&) = delete;

    // Geometry of the frames to come. Called before an acquisition's first frame.
    void SetGeometry(const FrameGeometry& geometry);
    FrameGeometry Geometry();

    // The preparations of a start, in this order; each answers 0 or the error code that ends the start.
    int UpdateImagePool(int num_image_buffers);
    int UpdateImageAvgBuffer();

    // The oldest pending record, stamped with the hand-over times; null when none waits.
    ZelImageInternal* GetPendingImageImpl();

    // Post-processes a frame unless that has been done; frames of one camera are processed one at a time. False when
    // the processing failed; the frame is delivered all the same.
    bool PostProcessOnce(ZelImageInternal* image);

    // The steps. They rewrite `pixels` and the geometry fields; a step that answers false leaves the frame as it was.
    bool PostProcessImage(ZelImageInternal* image);
    bool PostProcessTapBalance(ZelImageInternal* image);
    bool PostProcessSubImage(ZelImageInternal* image, unsigned c0, unsigned r0, unsigned c1, unsigned r1);
    bool PostProcessBinning(ZelImageInternal* image, int vertical, int horizontal);
    bool PostProcessAverageImage(ZelImageInternal* image);

    // Ring length of the moving average, 0 = off; takes effect with the next UpdateImageAvgBuffer.
    void SetAveraging(int frame_count_max, bool reset);

    int ScratchBufferCount();
    void ReleaseScratchBuffers();

    ImageManager& Pool() { return m_ImageManager; }

  protected:
    // The kind of link, one of CAMERA_TYPE_..., or another number without one. Called under the processing lock.
    virtual int TransportInterfaceType() = 0;

    Logger m_Logger;
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

    bool ReserveSpare(ZelImageInternal* image);
    void SwapBuffer(ZelImageInternal* image, PageBuffer& buffer);
    bool ReserveRows(std::size_t samples);
    bool ReadOutByRows(ZelImageInternal* image, int taps);
    void UnpackFrame(ZelImageInternal* image);
    bool ReorderTaps(ZelImageInternal* image, int taps);
    bool ReorderTwoTaps(ZelImageInternal* image);
    bool ReorderFourTaps(ZelImageInternal* image);
    bool CropByCorners(ZelImageInternal* image, unsigned c0, unsigned r0, unsigned c1, unsigned r1);
    bool CropBySize(ZelImageInternal* image, unsigned c0, unsigned r0, unsigned width, unsigned height);
    void BinFrame(std::span<std::uint16_t> frame, unsigned w, unsigned h, unsigned bx, unsigned by, unsigned ceiling);
    bool AllocateAvgBuffer(unsigned pixels);
    void ReleaseAvgBuffer();

    std::mutex m_GeometryLock;
    FrameGeometry m_Geometry;

    // Everything below belongs to whoever holds the processing lock. It is never held while the application is called.
    std::mutex m_ProcessingLock;
    // Both change places with a record's buffer when the frame was put together in them.
    PageBuffer m_ReorderBuffer;  // of four-tap frames
    PageBuffer m_SpareBuffer;    // of packed frames
    std::vector<std::uint16_t> m_RowScratch;

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
