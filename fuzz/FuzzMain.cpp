// Runs a fuzz target without a fuzzing engine: first every file named on the command line (folders: every file in
// them), then pseudo-random inputs that are the same in each run.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr int kRandomInputs = 4000;
constexpr unsigned kLongestInput = 600;

bool RunFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::printf("cannot read %s\n", path.string().c_str());
        return false;
    }
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
    return true;
}

// Random bytes of which most are small, so that lengths and codes often have sensible values.
std::vector<std::uint8_t> RandomInput(std::mt19937& random) {
    std::vector<std::uint8_t> input(random() % kLongestInput);
    const unsigned modulus = 1u << (1 + random() % 8);
    for (std::uint8_t& byte : input) {
        byte = static_cast<std::uint8_t>(random() % 4 == 0 ? random() : random() % modulus);
    }
    return input;
}

}  // namespace

int main(int argc, char** argv) {
    int files = 0;
    for (int i = 1; i < argc; ++i) {
        if (std::filesystem::is_directory(argv[i])) {
            for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
                if (!RunFile(entry.path())) return 1;
                ++files;
            }
        } else {
            if (!RunFile(argv[i])) return 1;
            ++files;
        }
    }
    std::mt19937 random(20240229);
    for (int i = 0; i < kRandomInputs; ++i) {
        const std::vector<std::uint8_t> input = RandomInput(random);
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    std::printf("%d files and %d random inputs passed\n", files, kRandomInputs);
    return 0;
}
