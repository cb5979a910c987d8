#include "devices/sim/scene/SceneFile.h"

#include <algorithm>

#include "devices/sim/scene/PictureDecoder.h"
#include "devices/sim/scene/PlainMath.h"

namespace zel::sim {
namespace {

// The transfer curve of ordinary picture files, undone.
std::vector<float> MakeLinearTable() {
    std::vector<float> table(65536);
    for (std::size_t i = 0; i < table.size(); ++i) {
        const double v = static_cast<double>(i) / 65535.0;
        table[i] = static_cast<float>(v <= 0.04045 ? v / 12.92 : PlainPow((v + 0.055) / 1.055, 2.4));
    }
    return table;
}

// For all scenes: it takes longer to make than a small picture to read.
const std::vector<float>& LinearTable() {
    static const std::vector<float> s_Table = MakeLinearTable();
    return s_Table;
}

}  // namespace

std::unique_ptr<SceneFile> SceneFile::Load(const std::string& path, unsigned width, unsigned height,
                                           std::string& reason) {
    DecodedPicture picture;
    if (!DecodePicture(path, picture, reason)) return nullptr;
    auto scene = std::make_unique<SceneFile>();
    scene->m_Samples = std::move(picture.rgb);
    scene->m_Width = picture.width;
    scene->m_Height = picture.height;
    LinearTable();  // what it throws is thrown here
    // Picture samples per pixel of the frame; the smaller of the two fills the frame both ways.
    const double step = std::min(static_cast<double>(picture.width) / std::max(width, 1u),
                                 static_cast<double>(picture.height) / std::max(height, 1u));
    scene->m_Columns = MakeAxis(width, picture.width, step);
    scene->m_Rows = MakeAxis(height, picture.height, step);
    return scene;
}

// A picture smaller than the frame (step up to 1): the two samples beside the pixel's centre, by distance. A larger
// one: every sample under the pixel, by the part that it covers.
SceneFile::Axis SceneFile::MakeAxis(std::size_t frame, std::size_t picture, double step) {
    Axis axis;
    axis.taps.resize(frame);
    const double last = static_cast<double>(picture) - 1.0;
    const double offset = (static_cast<double>(picture) - static_cast<double>(frame) * step) / 2.0;
    for (std::size_t i = 0; i < frame; ++i) {
        const double left = offset + static_cast<double>(i) * step;
        const double centre = left + step / 2.0 - 0.5;  // in sample centres
        Taps& taps = axis.taps[i];
        taps.begin = axis.weights.size();
        if (step <= 1.0) {
            const double place = std::clamp(centre, 0.0, last);
            taps.first = std::min(static_cast<std::size_t>(place), picture - 1);
            const double fraction = place - static_cast<double>(taps.first);
            axis.weights.push_back(static_cast<float>(1.0 - fraction));
            if (taps.first + 1 < picture) axis.weights.push_back(static_cast<float>(fraction));
        } else {
            taps.first = std::min(static_cast<std::size_t>(std::max(left, 0.0)), picture - 1);
            for (std::size_t s = taps.first; s < picture && static_cast<double>(s) < left + step; ++s) {
                const double from = std::max(left, static_cast<double>(s));
                const double to = std::min(left + step, static_cast<double>(s) + 1.0);
                axis.weights.push_back(static_cast<float>(std::max(0.0, to - from) / step));
            }
        }
        taps.end = axis.weights.size();
    }
    return axis;
}

std::span<const std::uint16_t> SceneFile::PictureRow(std::size_t y) const {
    return std::span(m_Samples).subspan(y * m_Width * 3, m_Width * 3);
}

void SceneFile::Row(unsigned y, std::span<Rgb> row) const {
    const std::vector<float>& linear = LinearTable();
    const Taps& vertical = m_Rows.taps[y];
    std::fill(row.begin(), row.end(), Rgb{});
    for (std::size_t v = vertical.begin; v < vertical.end; ++v) {
        const auto source = PictureRow(vertical.first + (v - vertical.begin));
        for (std::size_t x = 0; x < std::min(row.size(), m_Columns.taps.size()); ++x) {
            const Taps& taps = m_Columns.taps[x];
            for (std::size_t i = taps.begin; i < taps.end; ++i) {
                const float weight = m_Columns.weights[i] * m_Rows.weights[v];
                const std::size_t s = (taps.first + (i - taps.begin)) * 3;
                row[x].r += weight * linear[source[s]];
                row[x].g += weight * linear[source[s + 1]];
                row[x].b += weight * linear[source[s + 2]];
            }
        }
    }
}

}  // namespace zel::sim
