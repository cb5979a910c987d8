// Checks a camera interface library (a plug-in) against what the SDK expects of one.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>
#include <utility>

#include "tools/manual/ManPage.h"
#include "tools/plugin_check/Checks.h"
#include "tools/plugin_check/RawFrame.h"

namespace {

using namespace zel::plugin_check;

void CheckCamera(const PluginLibrary& library, int count, int camera, Report& report) {
    report.BeginCamera(camera);
    char name[64] = "";
    if (library.get_camera_name) std::snprintf(name, sizeof(name), "%s", library.get_camera_name(camera));
    ICameraInterface* const transport = library.create_camera_interface(camera, name);
    if (!report.Check(transport != nullptr, "create_camera_interface", name)) return;
    report.Check(library.create_camera_interface(camera, name) == transport, "create gives the same object",
                 "until it is destroyed");
    {
        HostCamera host(*transport);
        CheckLink(library, *transport, host, report);
        CheckAcquisition(*transport, host, report);
        transport->SetCameraCommon(nullptr);
    }
    CheckLifetime(library, count, camera, *transport, report);
    library.destroy_camera_interface(transport);
}

struct Wishes {
    std::string file;
    std::string bytes;
    std::string samples;
    int taps = 0;
    bool json = false;
};

constexpr std::pair<const char*, const char*> kExitCodes[] = {{"0", "all checks passed"},
                                                              {"1", "one failed or the frame did not come"},
                                                              {"2", "the command line was not understood"}};

void Declare(CLI::App& app, Wishes& wishes) {
    app.add_option("file", wishes.file, "A plug-in, such as zel_usb.dll or a path")->required();
    app.add_flag("--json", wishes.json, "Print JSON and nothing else on the standard output");
    CLI::Option* const bytes = app.add_option(
        "--bytes", wishes.bytes, "No checks: a PGM file for one frame of the first camera as the link delivers it");
    CLI::Option* const samples =
        app.add_option("--samples", wishes.samples, "The same with samples unpacked, in the order of the taps");
    bytes->excludes(samples);
    app.add_option("taps", wishes.taps, "With --bytes or --samples: taps to read the frame out by (default: as set)")
        ->check(CLI::IsMember({1, 2, 4}));
    std::string codes;
    for (const auto& [code, meaning] : kExitCodes)
        codes += (codes.empty() ? "" : ", ") + std::string(code) + " " + meaning;
    app.footer("Exit codes: " + codes +
               ".\nCameras must be attached, and free for the check.\nExample: zel_plugin_check zel_usb.dll");
}

// For the build, which has the page made of what stands above.
bool PrintManPage(const CLI::App& app) {
    zel::manual::ManSection codes{"Exit status", {}};
    for (const auto& [code, meaning] : kExitCodes) codes.terms.emplace_back(code, meaning);
    const std::string page =
        ManPage(zel::manual::ReadCommand(app), {"zel_plugin_check", ZEL_PLUGIN_CHECK_VERSION, {"zelcam(1)"}}, {codes});
    return std::fwrite(page.data(), 1, page.size(), stdout) == page.size() && std::fflush(stdout) == 0;
}

bool Run(const Wishes& wishes) {
    const PluginLibrary library(wishes.file.c_str());
    bool good = false;
    if (wishes.bytes.empty() && wishes.samples.empty()) {
        Report report(wishes.json);
        const int count = CheckLibrary(library, report);
        for (int camera = 0; camera < count; ++camera) CheckCamera(library, count, camera, report);
        report.Check(count > 0, "cameras", count > 0 ? std::to_string(count) + " checked" : "none attached");
        report.Finish(wishes.file);
        good = report.Failed() == 0;
    } else {
        const bool bytes = !wishes.bytes.empty();
        good = SaveRawFrame(library, bytes ? RawFrameKind::kBytes : RawFrameKind::kSamples, wishes.taps,
                            (bytes ? wishes.bytes : wishes.samples).c_str(), wishes.json);
    }
    if (library.lib_unload) library.lib_unload();
    return good;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Checks a camera interface library against what the SDK expects of one.", "zel_plugin_check"};
    Wishes wishes;
    Declare(app, wishes);
    if (argc == 2 && std::string(argv[1]) == "--man-page") return PrintManPage(app) ? 0 : 1;
    try {
        app.parse(argc, argv);
        if (wishes.taps > 0 && wishes.bytes.empty() && wishes.samples.empty()) {
            throw CLI::RequiresError("taps", "--bytes or --samples");
        }
    } catch (const CLI::Success& help) {
        app.exit(help);
        return std::fflush(stdout) == 0 ? 0 : 1;
    } catch (const CLI::ParseError& error) {
        std::fprintf(stderr, "zel_plugin_check: %s; see 'zel_plugin_check --help'\n", error.what());
        return 2;
    }
    const bool good = Run(wishes);
    if (std::fflush(stdout) == 0 && !std::ferror(stdout)) return good ? 0 : 1;
    std::fprintf(stderr, "zel_plugin_check: the standard output can't be written\n");
    return 1;
}
