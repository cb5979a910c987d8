// The camera object's service operations, which follow the application's in slot order: calibration, transport queries,
// raw access, averaging and the second color pipeline. Imaging applications use ZelCamera and ZelColorCamera; tools that
// calibrate a camera or look behind its pictures get this interface by casting the ZelCamera that the SDK handed out.
#ifndef ZEL_CAMERA_INTERNAL_H
#define ZEL_CAMERA_INTERNAL_H

#include "ZelCamera.h"

class ICameraInterface;

// Slots 48 to 78. Every operation has a default body that answers false, true, 0 or null.
class ZelCameraInternal : public ZelColorCamera {
  public:
    // Tap balance calibration, forwarded to the camera's tap balance object. `select`: 0 = 20 MHz, 1 = 40 MHz.
    virtual bool TapBalanceEnable(bool enable);
    virtual bool TapBalanceSelectTable(int select);
    virtual bool TapBalanceLoadDataFromCamera();
    virtual bool TapBalanceLoadDataFromMasterFile(const char* file_name);
    virtual bool TapBalanceGetTableConfig(int* rows, int* num_taps);
    virtual bool TapBalanceGetTableData(int row, float* millivolts, float* tap_gains);
    virtual bool TapBalanceSetTableConfig(int table, int rows, int num_taps);
    virtual bool TapBalanceSetTableData(int row, float millivolts, const float* tap_gains);
    virtual bool TapBalanceWriteTableConfigToCamera();
    virtual bool TapBalanceWriteDataToCamera();
    virtual bool TapBalanceFlashTest();

    virtual bool Reserved59();

    // Measured figures of the link; 0.0 without a transport.
    virtual double GetLinkThroughput();
    virtual double GetLinkFrameRate();
    virtual double GetLinkLatency();
    virtual double GetLinkUtilization();

    // Kind of link: 0 = eBUS (or unknown), 1 = Camera Link, 2 = USB.
    virtual int GetCameraInterfaceType();
    // Raw access to the transport; bytes sent or received, 0 without a transport.
    virtual int SendData(const unsigned char* data, int num_tx_bytes);
    virtual int RecvData(unsigned char* buffer, int num_rx_bytes, int timeout_ms);

    // Buffers that post-processing keeps between frames, and giving them back.
    virtual int GetScratchBufferCount();
    virtual bool FreeScratchBuffers();

    virtual bool IsMonochrome();
    // Averaging over the last frames: ring length (0 switches it off) and, when reset is not 0, forget the frames that
    // are in the ring. Takes effect with the next start.
    virtual bool SetImageAveraging(int frame_count_max, int reset);
    // The function called for each color frame between demosaicing and the color transform.
    virtual bool SetScratchpadCallback(ZelScratchpadCallback callback, void* context);

    // The color transform of the scratchpad pipeline, as the operations of ZelColorCamera.
    virtual bool ConcatenateScratchpadTransform(int operation, int bit_depth);
    virtual bool ConcatenateScratchpadMatrix(const float* matrix);
    virtual bool ResetScratchpadTransform();
    virtual bool SetScratchpadInputLinearizationTable(const unsigned short* entries, unsigned num_values,
                                                      unsigned channels);
    virtual bool SetScratchpadOutputNonLinearizationTable(const unsigned short* entries, unsigned num_values,
                                                          unsigned channels);
    virtual bool GetScratchpadTransform(float* matrix);

    virtual ICameraInterface* GetCameraInterface();
};

#endif
