// The camera object's service operations, which follow the application's in slot order: calibration, transport queries,
// raw access, averaging and the second color pipeline. Imaging applications use ZelCamera and ZelColorCamera; tools
// that calibrate a camera or look behind its pictures get this interface by casting the ZelCamera that the SDK handed
// out.
#ifndef ZEL_CAMERA_INTERNAL_H
#define ZEL_CAMERA_INTERNAL_H

#include "ZelCamera.h"

class ICameraInterface;

// Slots 48 to 78. Every operation has a default body that answers false, true, 0 or null.
class ZelCameraInternal : public ZelColorCamera {
  public:
    // ---- Tap balance calibration: one table per readout speed, 0 = 20 MHz, 1 = 40 MHz ----
    // Switches the correction of frames on or off. False while there is nothing to correct with; a camera that is
    // opened afterwards gets its tables then, from its cache files or from its flash memory (from general master files
    // when that holds none), and is corrected.
    virtual bool TapBalanceEnable(bool enable);
    // The table that the operations without a table number mean. False for a number that is no table, which is kept
    // all the same: those operations then fail.
    virtual bool TapBalanceSelectTable(int select);
    // Loads both tables from the camera's flash memory, which takes a while. The second one is selected afterwards.
    // When a row can't be had neither is used; tables of the same sizes stay as they were.
    virtual bool TapBalanceLoadDataFromCamera();
    // Loads a table from a text file: "ROWS TAPS", then a row of five numbers per line, mV and four gains (the last two
    // 0 for two taps). "20MHz" or "40MHz" in the file's name, which is in the system's 8-bit encoding,
    // selects the table.
    virtual bool TapBalanceLoadDataFromMasterFile(const char* file_name);
    // Rows and taps of the selected table, as the camera's flash memory tells. Null pointers are left out.
    virtual bool TapBalanceGetTableConfig(int* rows, int* num_taps);
    // One row of the selected table, read from the flash memory: the signal level and one gain per tap (room for 4).
    // GetTableConfig comes first.
    virtual bool TapBalanceGetTableData(int row, float* millivolts, float* tap_gains);
    // Begins a table in memory, all zeros: 1 to 1000 rows (correction needs 4) of 2 or 4 taps. False when both tables
    // together do not fit the flash memory.
    virtual bool TapBalanceSetTableConfig(int table, int rows, int num_taps);
    // One row of the selected table in memory: a level from 0 to 5000 mV, ascending from row to row, and one gain from
    // 0 to 2 per tap.
    virtual bool TapBalanceSetTableData(int row, float millivolts, const float* tap_gains);
    // Write to the flash memory what both tables in memory say: the directory with their digests, and the tables.
    // False when a table is missing or the camera refused; the camera is calibrated when both have succeeded.
    virtual bool TapBalanceWriteTableConfigToCamera();
    virtual bool TapBalanceWriteDataToCamera();
    // Writes patterns to the last page of the flash memory, reads them back and restores the page. False also when a
    // table lies there.
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

    // Buffers that post-processing keeps between frames, and giving them back. Frames of four taps that come afterwards
    // stay as the taps read them until the next start.
    virtual int GetScratchBufferCount();
    virtual bool FreeScratchBuffers();

    virtual bool IsMonochrome();
    // Averaging over the last frames: ring length (0 switches it off) and, when reset is not 0, forget the frames that
    // are in the ring. Takes effect with the next start.
    virtual bool SetImageAveraging(int frame_count_max, int reset);
    // The function called for each color frame between demosaicing and the color transform; null switches it off. One
    // that is running meanwhile ends by itself.
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
