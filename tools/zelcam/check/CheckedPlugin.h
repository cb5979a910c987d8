// The library under check, in the process that may crash.
#ifndef ZELCAM_CHECKEDPLUGIN_H
#define ZELCAM_CHECKEDPLUGIN_H

#include <memory>
#include <string>

#include "tools/zelcam/check/Clause.h"
#include "tools/zelcam/check/OperationWatch.h"
#include "tools/zelcam/check/PluginLibrary.h"

namespace zelcam::check {

// Most cameras that the SDK takes, and the bytes of its slot for each of their texts.
inline constexpr int kMostCameras = 8;
inline constexpr std::size_t kTextSlot = 64;

class CheckedPlugin {
  public:
    CheckedPlugin(std::string file, OperationWatch& watch) : m_File(std::move(file)), m_Watch(watch) {}
    ~CheckedPlugin() { Release(); }

    // Loaded when it is first needed, and kept. Throws Skipped when it can't be loaded or lacks a required export.
    const PluginLibrary& Library();
    // How many cameras it had when it was asked first.
    int Cameras();
    // Gives the library back to the system as the SDK does when it is closed.
    void Release();

    // Searches, and makes and ends transports, watched.
    int CountCameras();
    ICameraInterface* Create(int camera);
    void Destroy(ICameraInterface* transport);
    void LibUnload();

    // Gives the camera a command of simulated ones ("unplug", "plug"). Throws Skipped where there is no such thing.
    void Control(const std::string& command, int camera, const std::string& arguments = "");

    const std::string& File() const { return m_File; }
    OperationWatch& Watch() { return m_Watch; }

  private:
    std::string m_File;
    OperationWatch& m_Watch;
    std::unique_ptr<PluginLibrary> m_Library;
    int m_Cameras = -1;
};

}  // namespace zelcam::check

#endif
