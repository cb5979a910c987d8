#include "devices/sim/sensor/LightPicture.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <new>
#include <stdexcept>
#include <thread>

#include "devices/sim/scene/Scene.h"
#include "devices/sim/scene/Spectrum.h"

namespace zel::sim {
namespace {

constexpr std::size_t kPixelsPerWorker = 256 * 256;  // below that a thread costs more than it saves

std::size_t Workers(std::size_t pixels) {
    return std::clamp<std::size_t>(pixels / kPixelsPerWorker, 1, std::max(std::thread::hardware_concurrency(), 1u));
}

// Calls `work` with each item, one on this thread and the others on threads of their own. A thread that can't be had
// leaves its work to the others.
template <class Item, class Work>
void RunOnThreads(std::vector<Item>& items, const Work& work) {
    std::vector<std::thread> threads;
    threads.reserve(items.size());
    try {
        for (std::size_t i = 1; i < items.size(); ++i) threads.emplace_back(work, std::ref(items[i]));
    } catch (const std::exception&) {
        // The rows are shared out one by one: those at work take them all.
    }
    work(items[0]);
    for (std::thread& thread : threads) thread.join();
}

}  // namespace

bool LightPicture::Look(const std::string& scene, unsigned width, unsigned height, int phase) noexcept {
    try {
        const auto source = MakeScene(scene, width, height);
        if (!source) return false;
        std::vector<std::uint16_t> levels(static_cast<std::size_t>(width) * height);
        std::vector<std::vector<Rgb>> rows(Workers(levels.size()), std::vector<Rgb>(width));
        std::atomic<unsigned> next_row{0};
        const auto work = [&](std::vector<Rgb>& row) {
            for (unsigned y = next_row++; y < height; y = next_row++) {
                source->Row(y, row);
                std::uint16_t* const out = levels.data() + static_cast<std::size_t>(y) * width;
                for (unsigned x = 0; x < width; ++x) {
                    const float level = PixelResponse(phase, x, y, row[x]) * kUnitLevel + 0.5f;
                    out[x] = static_cast<std::uint16_t>(std::clamp(level, 0.0f, 65535.0f));
                }
            }
        };
        RunOnThreads(rows, work);
        m_Levels = std::move(levels);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
}

}  // namespace zel::sim
