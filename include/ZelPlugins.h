/// @file
/// Choosing a set of plug-ins: a folder with interface libraries that this program's cameras come from.
///
/// The SDK loads its interface libraries by name, and finds the simulated ones when there is no other. A program that
/// wants others names their folder before it opens the SDK; no file has to be moved for it, and no other program sees a
/// difference. Libraries that the folder lacks are done without: none is taken from elsewhere.
#ifndef ZEL_PLUGINS_H
#define ZEL_PLUGINS_H

#include "ZelPlatform.h"

/// What zel_set_plugin_folder() answers.
enum ZelPluginsResult {
    ZEL_PLUGINS_CHOSEN = 0,      ///< the SDK uses the libraries of the folder, until the program ends
    ZEL_PLUGINS_NO_NAME = 1,     ///< null, an empty text, or a path that does not begin at the root
    ZEL_PLUGINS_NO_FOLDER = 2,   ///< there is no such set or folder, or it has none of the interface libraries
    ZEL_PLUGINS_NOT_LOADED = 3,  ///< a library of the folder can't be loaded
    ZEL_PLUGINS_TOO_LATE = 4     ///< the SDK was opened before, or others were chosen or loaded
};

extern "C" {

/// Chooses the interface libraries for the whole process. To be called before ZelSDK::Open() is called for the first
/// time, and before get_version_str(). The libraries are loaded at once and stay until the program ends. Choosing the
/// same folder again is no mistake. After ZEL_PLUGINS_NOT_LOADED a part of them may have stayed in memory, so that a
/// program had better end than open the SDK with what the system makes of that.
/// @param folder the path of a folder, from the root on; or the name of a set that was installed with the SDK, "sim" or
///               "gige". UTF-8. Never looked for in the current folder.
/// @param answer receives the folder's path, or a sentence that says why not; UTF-8, cut where there is too little
///               room. May be null.
/// @param size   bytes of `answer`
/// @return one of ZelPluginsResult
int ZEL_CALL zel_set_plugin_folder(const char* folder, char* answer, int size);
}

#endif
