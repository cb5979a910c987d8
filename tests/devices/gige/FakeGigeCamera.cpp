// A GigE Vision camera that is a program: Aravis' own one, with knobs for what cameras get wrong.
//
//     fake_gige_camera [--address A] [--serial S] [--size WxH] [--period US] [--lost PER_THOUSAND]
//                      [--replace FROM=TO]... (in its feature description)
//
// It prints "ready", then obeys lines on its standard input until that ends: "write ADDRESS VALUE" stores into a
// register of its (numbers as in C).
#include <arv.h>

#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

struct Options {
    std::string address = "127.0.0.1";
    std::string serial = "G0001";
    unsigned width = 640;
    unsigned height = 480;
    unsigned period_us = 20000;
    double lost = 0;
    std::vector<std::pair<std::string, std::string>> replacements;
};

bool Parse(int count, char** arguments, Options& options) {
    for (int i = 1; i + 1 < count; i += 2) {
        const std::string name = arguments[i];
        const std::string value = arguments[i + 1];
        if (name == "--address") {
            options.address = value;
        } else if (name == "--serial") {
            options.serial = value;
        } else if (name == "--size") {
            if (std::sscanf(value.c_str(), "%ux%u", &options.width, &options.height) != 2) return false;
        } else if (name == "--period") {
            options.period_us = static_cast<unsigned>(std::atoi(value.c_str()));
        } else if (name == "--lost") {
            options.lost = std::atof(value.c_str());
        } else if (name == "--replace") {
            const std::size_t middle = value.find("=>");
            if (middle == std::string::npos) return false;
            options.replacements.emplace_back(value.substr(0, middle), value.substr(middle + 2));
        } else {
            return false;
        }
    }
    return count % 2 == 1;
}

// The feature description that Aravis has built in, changed, in a file. Empty when a text to be replaced is not in it.
std::string Description(const Options& options) {
    ArvFakeCamera* const plain = arv_fake_camera_new("plain");
    size_t size = 0;
    const char* const text = arv_fake_camera_get_genicam_xml(plain, &size);
    std::string description(text, size);
    g_object_unref(plain);
    for (const auto& [from, to] : options.replacements) {
        std::size_t at = description.find(from);
        if (at == std::string::npos) return {};
        for (; at != std::string::npos; at = description.find(from, at + to.size())) {
            description.replace(at, from.size(), to);
        }
    }
    char name[] = "/tmp/fake_gige_XXXXXX";
    const int file = mkstemp(name);
    if (file < 0) return {};
    const bool written =
        write(file, description.data(), description.size()) == static_cast<ssize_t>(description.size());
    close(file);
    return written ? name : "";
}

void Obey(ArvFakeCamera* camera) {
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string verb;
        std::string address;
        std::string value;
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
    Options options;
    if (!Parse(count, arguments, options)) {
        std::cerr << "fake_gige_camera: see the beginning of its source\n";
        return 2;
    }
    const std::string description = Description(options);
    if (description.empty()) {
        std::cerr << "fake_gige_camera: no such text in the description\n";
        return 2;
    }
    ArvGvFakeCamera* const camera =
        arv_gv_fake_camera_new_full(options.address.c_str(), options.serial.c_str(), description.c_str());
    std::remove(description.c_str());
    if (!camera || !arv_gv_fake_camera_is_running(camera)) {
        std::cerr << "fake_gige_camera: it does not run at " << options.address << "\n";
        return 1;
    }
    g_object_set(camera, "gvsp-lost-ratio", options.lost / 1000, nullptr);
    ArvFakeCamera* const registers = arv_gv_fake_camera_get_fake_camera(camera);
    arv_fake_camera_write_register(registers, ARV_FAKE_CAMERA_REGISTER_SENSOR_WIDTH, options.width);
    arv_fake_camera_write_register(registers, ARV_FAKE_CAMERA_REGISTER_SENSOR_HEIGHT, options.height);
    arv_fake_camera_write_register(registers, ARV_FAKE_CAMERA_REGISTER_ACQUISITION_FRAME_PERIOD_US, options.period_us);
    std::cout << "ready" << std::endl;
    Obey(registers);
    g_object_unref(camera);
    return 0;
}
