// Writes what the simulated sensors look at as a picture: the scene itself, before any camera.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "devices/sim/scene/Scene.h"
#include "platform/UserTexts.h"

namespace {

constexpr unsigned kLargestSide = 8192;

// 16 bits, high byte first; 1.0 is the largest value.
void Put(std::ofstream& file, float light) {
    const auto value = static_cast<unsigned>(std::clamp(light, 0.0f, 1.0f) * 65535.0f + 0.5f);
    file.put(static_cast<char>(value >> 8)).put(static_cast<char>(value));
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words = zel::platform::Arguments(argc, argv);
    unsigned width = 0;
    unsigned height = 0;
    if (words.size() < 3 || words.size() > 4 || std::sscanf(words[1].c_str(), "%5ux%5u", &width, &height) != 2 ||
        width == 0 || height == 0 || width > kLargestSide || height > kLargestSide) {
        std::fprintf(stderr,
                     "usage: zel_scene_picture WIDTHxHEIGHT FILE.ppm [SCENE]\n"
                     "Writes a PPM picture in linear light. SCENE: a PNG or JPEG file, or 'builtin'.\n");
        return 2;
    }
    const auto scene = zel::sim::MakeScene(words.size() == 4 ? words[3] : "builtin", width, height);
    std::ofstream file(zel::platform::Utf8Path(words[2]), std::ios::binary);
    file << "P6\n" << width << " " << height << "\n65535\n";
    std::vector<zel::sim::Rgb> row(width);
    for (unsigned y = 0; scene && y < height; ++y) {
        scene->Row(y, row);
        for (const zel::sim::Rgb& pixel : row) {
            Put(file, pixel.r);
            Put(file, pixel.g);
            Put(file, pixel.b);
        }
    }
    file.close();
    if (scene && file) return 0;
    std::fprintf(stderr, "%s can't be written\n", words[2].c_str());
    return 1;
}
