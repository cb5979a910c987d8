// Which tool, which SDK, which logging library.
#include <string_view>

#include "include/ZelSDK.h"
#include "platform/LibraryFiles.h"
#include "platform/User.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/doctor/Checks.h"
#include "tools/zelcam/doctor/LibrarySearch.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

constexpr const char* kLoggingLibrary = "kestrane_zel_logger.dll";

// "error", "warning" or "trace", with a file or without.
bool LogIsAskedForRightly(std::string_view level) { return level == "error" || level == "warning" || level == "trace"; }

void CheckLogFile(const std::string& file, Examination& examination) {
    namespace fs = std::filesystem;
    const fs::path path = zel::platform::Utf8Path(file);
    std::error_code error;
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::current_path(error);
    const std::string name = zel::platform::Utf8Text(folder);
    if (!fs::is_directory(folder, error) || !zel::platform::FolderIsWritable(name)) {
        return examination.Add(State::kWarning, "log_file", "the log can't go to " + file,
                               "make the folder " + name + " and see to its rights; lines go to the error stream now",
                               {{"path", file}});
    }
    examination.Add(State::kOk, "log_file", "the log is added to " + file, "", {{"path", file}});
}

void CheckLog(const SdkFile& sdk, Examination& examination) {
    const std::string wish = zel::platform::EnvironmentVariable("ZEL_LOG");
    const FoundLibrary logger = FindLibrary(kLoggingLibrary, sdk);
    const std::string name = zel::platform::LibraryFileName(kLoggingLibrary);
    if (!logger.handle) {
        examination.Add(wish.empty() ? State::kNote : State::kWarning, "logging_library",
                        "no log can be written: " + name + " " + logger.why,
                        "only ZEL_LOG needs it; put it into one of these folders", {{"looked_in", sdk.places}});
        return;
    }
    examination.Add(State::kOk, "logging_library", "logging library, " + logger.path, "", {{"path", logger.path}});
    zel::platform::UnloadSharedLibrary(logger.handle);
    if (wish.empty()) {
        return examination.Add(State::kOk, "log", "no log is asked for", "ZEL_LOG=trace:FILE has the SDK write one");
    }
    const std::size_t colon = wish.find(':');
    const std::string level = wish.substr(0, colon);
    if (!LogIsAskedForRightly(level)) {
        return examination.Add(State::kWarning, "log", "ZEL_LOG=" + wish + " is not understood, and no log is written",
                               "the values are error, warning and trace, each with an optional :FILE");
    }
    if (colon != std::string::npos && colon + 1 < wish.size()) {
        return CheckLogFile(wish.substr(colon + 1), examination);
    }
    examination.Add(State::kOk, "log", "the log goes to the error stream, from " + level + " up");
}

}  // namespace

// The SDK's version text is a static buffer of the library's: its address tells which file that is.
SdkFile FindSdkFile() {
    const char* const inside = get_version_str();
    return {zel::platform::FileOfAddress(inside), zel::platform::LibraryPlaces(inside)};
}

void CheckLibraries(const SdkFile& sdk, Examination& examination) {
    examination.Begin("libraries");
    const std::string tool = zel::platform::ProgramFile();
    examination.Add(State::kOk, "tool", "zelcam " ZELCAM_VERSION ", " + tool, "",
                    {{"version", ZELCAM_VERSION}, {"path", tool}});
    const std::string line = zel::detail::text_or_empty(get_version_str());
    const std::string version = VersionIn(line.substr(0, line.find('\n')));
    const Json facts{{"version", version}, {"path", sdk.path}, {"loads_from", sdk.places}};
    if (version.starts_with(ZELCAM_VERSION ".")) {
        examination.Add(State::kOk, "sdk", "SDK " + version + ", " + sdk.path, "", facts);
    } else {
        examination.Add(State::kWarning, "sdk", "SDK " + version + ", another version than the tool's, " + sdk.path,
                        "install tool and SDK of one version, and see which folders come first", facts);
    }
    CheckLog(sdk, examination);
}

}  // namespace zelcam
