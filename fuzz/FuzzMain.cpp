// Runs a fuzz target without a fuzzing engine: first every file in the folders named on the command line, then
// pseudo-random inputs that are the same in each run.
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
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream file(entry.path(), std::ios::binary);
            if (!file) return 1;
            const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
            const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
            LLVMFuzzerTestOneInput(input.data(), input.size());
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
