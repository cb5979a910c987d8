// The application's choice of a set of plug-ins. Its libraries are loaded before the SDK asks for them by name, and a
// library that the process has loaded already is the one that the name then stands for.
#ifndef SDK_PLUGINCHOICE_H
#define SDK_PLUGINCHOICE_H

#include <array>
#include <filesystem>
#include <string>

#include "include/ZelPlugins.h"
#include "platform/Mutex.h"
#include "sdk/InterfaceLibrary.h"

namespace zel {

class PluginChoice {
  public:
    struct Answer {
        ZelPluginsResult result;
        std::string text;  // the folder's path, or why not
    };
    // folder: an absolute path, or the name of a set that was installed; UTF-8.
    Answer Use(const std::string& folder);

    // The SDK is opened: who has not chosen by now has the libraries that the system finds.
    void Settle();
    // Whether a set was chosen that does not have this library.
    bool Lacks(int library);

  private:
    Answer LoadSet(const std::filesystem::path& folder) ZEL_REQUIRES(m_Lock);

    platform::Mutex m_Lock;  // held while the libraries load
    bool m_Settled ZEL_GUARDED_BY(m_Lock) = false;
    std::filesystem::path m_Folder ZEL_GUARDED_BY(m_Lock);  // of the set, empty for none
    std::array<bool, kNumInterfaceLibraries> m_Has ZEL_GUARDED_BY(m_Lock){};
};

PluginChoice& Plugins();

}  // namespace zel

#endif
