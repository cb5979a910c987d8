// PNG and JPEG files to samples.
#ifndef SIM_PICTUREDECODER_H
#define SIM_PICTUREDECODER_H

#include <cstdint>
#include <string>
#include <vector>

namespace zel::sim {

struct DecodedPicture {
    std::size_t width = 0;
    std::size_t height = 0;
    std::vector<std::uint16_t> rgb;  // 8-bit files are spread over 16 bits
};

// False with a short reason when the file can't be read or decoded. `path` is UTF-8. Throws std::bad_alloc only.
bool DecodePicture(const std::string& path, DecodedPicture& picture, std::string& reason);

}  // namespace zel::sim

#endif
