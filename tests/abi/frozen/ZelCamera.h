#ifndef ZEL_CAMERA_H
#define ZEL_CAMERA_H

#include "ZelCallbacks.h"
#include "ZelImage.h"
#include "ZelParameters.h"
#include "ZelPlatform.h"

class ZelCamera {
  public:
    virtual bool Open();
    virtual bool Close();
    virtual bool IsOpen(int* is_open);

    virtual const char* GetCameraName();
    virtual bool SetCameraName(const char* name);

    virtual int GetDataTypeSize(int data_type);

    virtual bool GetParameter(unsigned param_id, unsigned size, void* data);
    virtual int GetParameterValue(unsigned param_id);
    virtual bool SetParameterValue(int param_id, int value);
    virtual bool SetParameter(int param_id, const void* data);

    virtual bool ResetCamera();

    virtual ZelImage* GetPendingImage();
    virtual ZelImage* GetLastPendingImage();
    virtual bool FreeAllPendingImages();
    virtual bool FreeImage(ZelImage* image);

#if defined(_MSC_VER)
    virtual bool Start();
    virtual bool Start(int frame_count);
#else
    virtual bool Start(int frame_count);
    virtual bool Start();
#endif
    virtual bool Stop();

    virtual int Reserved19();
    virtual int Reserved20();

    virtual int QueryTransportValue();
    virtual bool SetTransportValue(int value);

    virtual bool SetExposureToDefault();

    virtual const char* GetLastErrorStr();
    virtual int GetLastError();
    virtual bool ClearLastError();

    virtual bool Reserved27(int, int, int);

    virtual bool SetTextCommand(const char* text);
    virtual bool SetTextCommandCallback(ZelTextCommandCallback callback, void* context);

    virtual bool SetCameraControlCallback(ZelCameraControlCallback callback, void* context);
    virtual bool SetCameraControlCallbackEx(ZelCameraControlCallbackEx callback, void* context);
    virtual bool SetImageNotificationCallback(ZelImageNotificationCallback callback, void* context);
    virtual bool SetImageCallback(ZelImageCallback callback, void* context);

    virtual bool StartTriggerAcquisition();
    virtual bool StopTriggerAcquisition(int flag);
    virtual bool SoftwareTrigger();

    ZEL_INTERFACE_DESTRUCTOR(ZelCamera)
};

#define ZEL_COLOR_TRANSFORM_16_BIT 0
#define ZEL_COLOR_TRANSFORM_16_BIT_VARIANT 1
#define ZEL_COLOR_TRANSFORM_8_BIT_RGB 2
#define ZEL_COLOR_TRANSFORM_8_BIT_RGBX 3
#define ZEL_COLOR_TRANSFORM_CAMERA_CORRECTION 8
#define ZEL_COLOR_TRANSFORM_WHITE_BALANCE 9
#define ZEL_COLOR_TRANSFORM_WHITE_BALANCE_AND_CORRECTION 10

class ZelColorCamera : public ZelCamera {
  public:
    virtual bool Reserved38();

    virtual bool ConcatenateColorTransform(int operation, int bit_depth);
    virtual bool ConcatenateColorMatrix(const float* matrix);
    virtual bool ResetColorTransform();
    virtual bool SetInputLinearizationTable(const unsigned short* entries, unsigned num_values, unsigned channels);
    virtual bool SetOutputNonLinearizationTable(const unsigned short* entries, unsigned num_values, unsigned channels);
    virtual bool GetColorTransform(float* matrix);

    virtual ZelColorImage* GetPendingColorImage();
    virtual ZelColorImage* GetLastPendingColorImage();
    virtual bool FreeColorImage(ZelColorImage* image);
};

#endif
