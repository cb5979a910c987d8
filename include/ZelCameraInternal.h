/// @file
/// The camera object's service operations, which follow the application's in slot order: calibration, transport
/// queries, raw access, averaging and the second color pipeline.
#ifndef ZEL_CAMERA_INTERNAL_H
#define ZEL_CAMERA_INTERNAL_H

#include "ZelCamera.h"

class ICameraInterface;

/// Service operations: slots 48 to 78 of the camera object. Imaging applications use ZelCamera and ZelColorCamera;
/// tools that calibrate a camera or look behind its pictures get this interface by casting the ZelCamera that the SDK
/// handed out: static_cast<ZelCameraInternal*>(camera).
///
/// May be called on any thread, as those of ZelCamera. Every operation has a default body that answers false, true, 0
/// or null.
///
/// **Tap balance calibration**: one table per readout speed, 0 = 20 MHz, 1 = 40 MHz. A lock of the camera covers tables
/// and flash memory for one row or one table at a time; frames do not wait for it.
class ZelCameraInternal : public ZelColorCamera {
  public:
    // ---- Tap balance calibration: one table per readout speed, 0 = 20 MHz, 1 = 40 MHz ----
    /// Switches the correction of frames on or off. A camera that is opened afterwards gets its tables then, from its
    /// cache files or from its flash memory (from general master files when that holds none), and is corrected.
    /// @param enable true: on
    /// @return false while there is nothing to correct with
    virtual bool TapBalanceEnable(bool enable);
    /// Selects the table that the operations without a table number mean.
    /// @param select 0 or 1
    /// @return false for a number that is no table, which is kept all the same: those operations then fail
    virtual bool TapBalanceSelectTable(int select);
    /// Loads both tables from the camera's flash memory, which takes a while. The second one is selected afterwards.
    /// @return false when a row can't be had; then neither is used; tables of the same sizes stay as they were
    virtual bool TapBalanceLoadDataFromCamera();
    /// Loads a table from a text file: "ROWS TAPS", then a row of five numbers per line, mV and four gains (the last
    /// two 0 for two taps).
    /// @param file_name path of the file, in the system's 8-bit encoding; "20MHz" or "40MHz" in it selects the table
    /// @return false when the name selects none, and for a file that can't be read or breaks a rule
    virtual bool TapBalanceLoadDataFromMasterFile(const char* file_name);
    /// Rows and taps of the selected table, as the camera's flash memory tells.
    /// @param[out] rows     receives the number of rows; may be null
    /// @param[out] num_taps receives the number of taps; may be null
    /// @return false when no table is selected or the flash memory can't be read
    virtual bool TapBalanceGetTableConfig(int* rows, int* num_taps);
    /// One row of the selected table, read from the flash memory. TapBalanceGetTableConfig() comes first.
    /// @param row             0 to rows - 1
    /// @param[out] millivolts receives the signal level
    /// @param[out] tap_gains  receives one gain per tap; room for 4
    /// @return false when the row can't be had
    virtual bool TapBalanceGetTableData(int row, float* millivolts, float* tap_gains);
    /// Begins a table in memory, all zeros.
    /// @param table    0 or 1
    /// @param rows     1 to 1000 (correction needs 4)
    /// @param num_taps 2 or 4
    /// @return false for other numbers, and when both tables together do not fit the flash memory
    virtual bool TapBalanceSetTableConfig(int table, int rows, int num_taps);
    /// Sets one row of the selected table in memory.
    /// @param row        0 to rows - 1
    /// @param millivolts the signal level, 0 to 5000, ascending from row to row
    /// @param tap_gains  one gain from 0 to 2 per tap
    /// @return false for other values
    virtual bool TapBalanceSetTableData(int row, float millivolts, const float* tap_gains);
    /// Writes the directory of both tables in memory, with their digests, to the flash memory. The camera is calibrated
    /// when this and TapBalanceWriteDataToCamera() have succeeded.
    /// @return false when a table is missing or the camera refused
    virtual bool TapBalanceWriteTableConfigToCamera();
    /// Writes both tables in memory to the flash memory.
    /// @return false when a table is missing or the camera refused
    virtual bool TapBalanceWriteDataToCamera();
    /// Writes patterns to the last page of the flash memory, reads them back and restores the page.
    /// @return false when they differ, and when a table lies there
    virtual bool TapBalanceFlashTest();

    /// Reserved; keeps the place.
    /// @return true
    virtual bool Reserved59();

    /// What the link carried over the last second, as the transport measures it.
    /// @return bytes per second; 0.0 without a transport and from one that does not measure
    virtual double GetLinkThroughput();
    /// Frames that came over the link in the last second.
    /// @return frames per second; 0.0 as above
    virtual double GetLinkFrameRate();
    /// From the end of the last frame's readout to its hand-over.
    /// @return seconds; 0.0 as above
    virtual double GetLinkLatency();
    /// How much of what the link can carry is used.
    /// @return 0.0 to 1.0; 0.0 as above
    virtual double GetLinkUtilization();

    /// Kind of link.
    /// @return 0 = eBUS (or unknown), 1 = Camera Link, 2 = USB
    virtual int GetCameraInterfaceType();
    /// Sends bytes to the camera as they are. The lock of its exchanges is not taken: nothing else may be talking to
    /// the camera.
    /// @param data         the bytes
    /// @param num_tx_bytes how many
    /// @return bytes sent; 0 without a transport
    virtual int SendData(const unsigned char* data, int num_tx_bytes);
    /// Receives bytes of the camera's reply stream as they are, without a lock like SendData().
    /// @param[out] buffer  receives the bytes
    /// @param num_rx_bytes at most so many
    /// @param timeout_ms   how long to wait, in milliseconds
    /// @return bytes stored; 0 when nothing came and without a transport
    virtual int RecvData(unsigned char* buffer, int num_rx_bytes, int timeout_ms);

    /// Buffers that post-processing keeps between frames.
    /// @return how many there are
    virtual int GetScratchBufferCount();
    /// Gives the buffers that post-processing keeps back. Frames of four taps that come afterwards stay as the taps
    /// read them until the next start.
    /// @return false while the camera is being closed
    virtual bool FreeScratchBuffers();

    /// Whether the camera has no color filter, as it said when it was opened.
    /// @return false for a color camera
    virtual bool IsMonochrome();
    /// Averaging over the last frames; takes effect with the next start.
    /// @param frame_count_max length of the ring in frames; 0 switches averaging off
    /// @param reset           not 0: forget the frames that are in the ring
    /// @return false for a negative length
    virtual bool SetImageAveraging(int frame_count_max, int reset);
    /// Sets the function called for each color frame between demosaicing and the color transform. One that is running
    /// meanwhile ends by itself.
    /// @param callback the function; null switches it off
    /// @param context  handed to it with each call
    /// @return false while the camera is being closed
    virtual bool SetScratchpadCallback(ZelScratchpadCallback callback, void* context);

    // The color transform of the scratchpad pipeline, as the operations of ZelColorCamera.

    /// As ZelColorCamera::ConcatenateColorTransform(), for the scratchpad's pipeline.
    /// @param operation ZEL_COLOR_TRANSFORM_...
    /// @param bit_depth bits of an output channel; 0 = the camera's
    /// @return false for an unknown operation and a product that is no number
    virtual bool ConcatenateScratchpadTransform(int operation, int bit_depth);
    /// As ZelColorCamera::ConcatenateColorMatrix(), for the scratchpad's pipeline.
    /// @param matrix nine floats, row by row
    /// @return false for null and for products that are no numbers
    virtual bool ConcatenateScratchpadMatrix(const float* matrix);
    /// As ZelColorCamera::ResetColorTransform(), for the scratchpad's pipeline.
    /// @return false while the camera is being closed
    virtual bool ResetScratchpadTransform();
    /// As ZelColorCamera::SetInputLinearizationTable(), for the scratchpad's pipeline.
    /// @param entries    num_values * channels values, the channels of a value side by side; null removes the table
    /// @param num_values values of each channel; 0 removes the table
    /// @param channels   3
    /// @return false when memory ran out
    virtual bool SetScratchpadInputLinearizationTable(const unsigned short* entries, unsigned num_values,
                                                      unsigned channels);
    /// As ZelColorCamera::SetOutputNonLinearizationTable(), for the scratchpad's pipeline.
    /// @param entries    num_values * channels values, the channels of a value side by side; null removes the table
    /// @param num_values values of each channel; 0 removes the table
    /// @param channels   3
    /// @return false when memory ran out
    virtual bool SetScratchpadOutputNonLinearizationTable(const unsigned short* entries, unsigned num_values,
                                                          unsigned channels);
    /// As ZelColorCamera::GetColorTransform(), for the scratchpad's pipeline.
    /// @param[out] matrix receives nine floats, row by row
    /// @return false for null
    virtual bool GetScratchpadTransform(float* matrix);

    /// The transport that the camera object works through; it belongs to its plug-in.
    /// @return null without one
    virtual ICameraInterface* GetCameraInterface();
};

#endif
