// Runs a fuzz target without a fuzzing engine:
//
//     fuzz_x [--random NUMBER] [FILE|FOLDER...]
//
// first every file named (of a folder: every file in it), then so many pseudo-random inputs, the same in each run.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr unsigned kLongestInput = 600;

bool RunFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::printf("cannot read %s\n", path.string().c_str());
        return false;
    }
    const std::vector<std::uint8_t> input(std::istreambuf_iterator<char>(file), {});
    LLVMFuzzerTestOneInput(input.data(), input.size());
    return true;
}

// Random bytes of which most are small, so that lengths and codes often have sensible values.
std::vector<std::uint8_t> RandomInput(std::mt19937& random) {
    std::vector<std::uint8_t> input(random() % kLongestInput);
    const unsigned modulus = 1u << (1 + random() % 8);
    for (std::uint8_t& byte : input)
        byte = static_cast<std::uint8_t>(random() % 4 == 0 ? random() : random() % modulus);
    return input;
}

}  // namespace

int main(int argc, char** argv) {
    int random_inputs = 0;
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--random") == 0 && i + 1 < argc) {
            random_inputs = std::atoi(argv[++i]);
        } else if (std::filesystem::is_directory(argv[i])) {
            for (const auto& entry : std::filesystem::directory_iterator(argv[i])) files.push_back(entry.path());
        } else {
            files.emplace_back(argv[i]);
        }
    }
    if (!std::ranges::all_of(files, RunFile)) return 1;
    std::mt19937 random(20240229);
    for (int i = 0; i < random_inputs; ++i) {
        const std::vector<std::uint8_t> input = RandomInput(random);
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    std::printf("%zu files and %d random inputs passed\n", files.size(), random_inputs);
    return files.empty() && random_inputs == 0;
}
