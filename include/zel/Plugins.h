/// @file
/// Choosing the libraries that cameras come from.
#ifndef ZEL_LAYER_PLUGINS_H
#define ZEL_LAYER_PLUGINS_H

#include <string>

#include "ZelPlugins.h"
#include "zel/Error.h"

namespace zel {

/// Has the cameras of this program come from the interface libraries (plug-ins) of a folder, in place of those that the
/// SDK finds by itself. To be called before the first Sdk is made; the choice is for good, and making it again is no
/// mistake. Kinds of link that the folder has no library for have no cameras.
/// @param folder a path from the root on, or the name of a set that was installed with the SDK: "sim", the simulated
///               cameras, or "gige", GigE Vision cameras on the network. UTF-8. The current folder is never looked
///               into.
/// @return the folder's path
/// Throws Error: invalid_argument for what is no such folder, refused when it is too late, failed when a library of it
/// can't be loaded. Part of a set that failed so may have stayed in memory: the program had better end.
inline std::string use_plugins(const std::string& folder) {
    constexpr int kRoom = 4096;
    std::string answer(kRoom, '\0');
    const int result = zel_set_plugin_folder(folder.c_str(), answer.data(), kRoom);
    answer.resize(answer.find('\0'));
    if (result == ZEL_PLUGINS_CHOSEN) return answer;
    ErrorKind kind = ErrorKind::invalid_argument;
    if (result == ZEL_PLUGINS_NOT_LOADED) kind = ErrorKind::failed;
    if (result == ZEL_PLUGINS_TOO_LATE) kind = ErrorKind::refused;
    throw Error(kind, "the plug-ins can't be chosen", answer);
}

}  // namespace zel

#endif
