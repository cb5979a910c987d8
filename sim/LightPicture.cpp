#include "sim/LightPicture.h"

#include <algorithm>
#include <new>
#include <stdexcept>

#include "sim/Scene.h"
#include "sim/Spectrum.h"

namespace zel::sim {

bool LightPicture::Look(const std::string& scene, unsigned width, unsigned height, int phase) noexcept {
    try {
        const auto source = MakeScene(scene, width, height);
        if (!source) return false;
        std::vector<Rgb> row(width);
        std::vector<std::uint16_t> levels(static_cast<std::size_t>(width) * height);
        std::uint16_t* out = levels.data();
        for (unsigned y = 0; y < height; ++y) {
            source->Row(y, row);
            for (unsigned x = 0; x < width; ++x) {
                const float level = PixelResponse(phase, x, y, row[x]) * kUnitLevel + 0.5f;
                *out++ = static_cast<std::uint16_t>(std::clamp(level, 0.0f, 65535.0f));
            }
        }
        m_Levels = std::move(levels);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
}

}  // namespace zel::sim
