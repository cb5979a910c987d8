// A GigE Vision camera that is a program: Aravis' own one, with knobs for what cameras get wrong.
//
//     fake_gige_camera [--address A] [--serial S] [--size WxH] [--period US] [--lost PER_THOUSAND]
//                      [--replace FROM=TO]... (in its feature description, in any order)
//
// It prints "ready", then obeys lines on its standard input until that ends: "write ADDRESS VALUE" stores into a
// register of its (numbers as in C).
#include <arv.h>

#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>

namespace {

using Texts = std::map<std::string, std::string>;

// Options and their values, over what is there; false: no such option.
bool Parse(int count, char** arguments, Texts& options, Texts& replacements) {
    for (int i = 1; i + 1 < count; i += 2) {
        const std::string name = arguments[i], value = arguments[i + 1];
        const std::size_t middle = value.find("=>");
        if (name == "--replace" && middle != std::string::npos) {
            replacements[value.substr(0, middle)] = value.substr(middle + 2);
        } else if (options.contains(name)) {
            options[name] = value;
        } else {
            return false;
        }
    }
    return count % 2 == 1;
}

// The feature description that Aravis has built in, changed, in a file. Empty when a text to be replaced is not in it.
std::string Description(const Texts& replacements) {
    ArvFakeCamera* const plain = arv_fake_camera_new("plain");
    size_t size = 0;
    const char* const text = arv_fake_camera_get_genicam_xml(plain, &size);
    std::string description(text, size);
    g_object_unref(plain);
    for (const auto& [from, to] : replacements) {
        std::size_t at = description.find(from);
        if (at == std::string::npos) return {};
        for (; at != std::string::npos; at = description.find(from, at + to.size()))
            description.replace(at, from.size(), to);
    }
    char name[] = "/tmp/fake_gige_XXXXXX";
    close(mkstemp(name));
    return std::ofstream(name) << description ? name : "";
}

void Obey(ArvFakeCamera* camera) {
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string verb, address, value;
        if (words >> verb >> address >> value && verb == "write") {
            arv_fake_camera_write_register(camera, static_cast<guint32>(std::stoul(address, nullptr, 0)),
                                           static_cast<guint32>(std::stoul(value, nullptr, 0)));
            std::cout << "written" << std::endl;
        } else {
            std::cout << "no such command" << std::endl;
        }
    }
}

}  // namespace

int main(int count, char** arguments) {
    Texts replacements, options{{"--address", "127.0.0.1"}, {"--serial", "G0001"}, {"--size", "640x480"}};
    options.insert({{"--period", "20000"}, {"--lost", "0"}});
    unsigned width = 0, height = 0;
    const bool parsed = Parse(count, arguments, options, replacements) &&
                        std::sscanf(options["--size"].c_str(), "%ux%u", &width, &height) == 2;
    const std::string description = parsed ? Description(replacements) : "";
    if (description.empty()) {
        std::cerr << "fake_gige_camera: see the beginning of its source, or no such text in the description\n";
        return 2;
    }
    ArvGvFakeCamera* const camera =
        arv_gv_fake_camera_new_full(options["--address"].c_str(), options["--serial"].c_str(), description.c_str());
    std::remove(description.c_str());
    if (!camera || !arv_gv_fake_camera_is_running(camera)) {
        std::cerr << "fake_gige_camera: it does not run at " << options["--address"] << "\n";
        return 1;
    }
    g_object_set(camera, "gvsp-lost-ratio", std::stod(options["--lost"]) / 1000, nullptr);
    ArvFakeCamera* const registers = arv_gv_fake_camera_get_fake_camera(camera);
    arv_fake_camera_write_register(registers, ARV_FAKE_CAMERA_REGISTER_SENSOR_WIDTH, width);
    arv_fake_camera_write_register(registers, ARV_FAKE_CAMERA_REGISTER_SENSOR_HEIGHT, height);
    arv_fake_camera_write_register(registers, ARV_FAKE_CAMERA_REGISTER_ACQUISITION_FRAME_PERIOD_US,
                                   static_cast<guint32>(std::stoul(options["--period"])));
    std::cout << "ready" << std::endl;
    Obey(registers);
    g_object_unref(camera);
    return 0;
}
