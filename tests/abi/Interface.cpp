// Everything that applications and plug-ins were built with, in reach of one exported name: what abidiff looks at.
#include "ZelCameraInternal.h"
#include "ZelPlugins.h"
#include "ZelProgress.h"
#include "ZelSDK.h"
#include "ZelUsers.h"
#include "ZelUtil.h"
#include "link/CameraInterfaceLibrary.h"
#include "link/ICameraInterface.h"
#include "link/IZelCameraCommon.h"

struct Interface {
    // Applications.
    decltype(&zel_create_sdk) create_sdk;
    decltype(&zel_destroy_sdk) destroy_sdk;
    decltype(&zel_set_camera_connect_callback) set_camera_connect_callback;
    decltype(&zel_set_progress_callback) set_progress_callback;
    decltype(&zel_set_plugin_folder) set_plugin_folder;
    decltype(&get_version_str) version;
    decltype(&zel_retain_sdk) retain_sdk;
    decltype(&zel_release_sdk) release_sdk;
    decltype(&zel_claim_camera) claim_camera;
    decltype(&zel_release_camera) release_camera;
    ZelCameraConnectCallback camera_connect;
    ZelCameraControlCallback camera_control;
    ZelCameraControlCallbackEx camera_control_ex;
    ZelImageNotificationCallback image_notification;
    ZelImageCallback image_handed_over;
    ZelTextCommandCallback text_command;
    ZelScratchpadCallback scratchpad;
    ZelProgressCallback progress;
    ZelCameraInternal* camera;
    ZelUtil* util;
    ZelColorImage* image;
    ZelRoiBin* region;
    ZelParamAttrId* attribute;
    // Plug-ins.
    ZelImageHandler image_handler;
    ZelEventHandler event_handler;
    ICameraInterface* transport;
    IZelCameraCommon* common;
    GetNumCamerasFunction get_num_cameras;
    CreateCameraInterfaceFunction create_camera_interface;
    DestroyCameraInterfaceFunction destroy_camera_interface;
    GetLibraryTextFunction get_library_text;
    GetCameraTextFunction get_camera_text;
    GetCameraAddressFunction get_camera_address;
    LibUnloadFunction lib_unload;
    SetConnectionEventCallbackFunction set_connection_event_callback;
};

Interface g_Interface;
