#include "devices/sim/firmware/Flash.h"

#include <algorithm>

namespace zel::sim {

Flash::Flash(std::span<const std::uint8_t> content)
    : m_Content(std::size_t{kPageSize} * kPages, kErased), m_Buffer(kPageSize, kErased) {
    std::copy_n(content.begin(), std::min(content.size(), m_Content.size()), m_Content.begin());
}

void Flash::PowerCycle() { ClearBuffer(); }

void Flash::ClearBuffer() {
    std::fill(m_Buffer.begin(), m_Buffer.end(), kErased);
    m_Page.reset();
}

bool Flash::LoadPage(std::uint32_t page) {
    if (page >= kPages) return false;
    std::copy_n(m_Content.begin() + static_cast<std::ptrdiff_t>(page * kPageSize), kPageSize, m_Buffer.begin());
    m_Page = page;
    return true;
}

bool Flash::StorePage(std::uint32_t page) {
    if (page >= kPages) return false;
    std::copy(m_Buffer.begin(), m_Buffer.end(), m_Content.begin() + static_cast<std::ptrdiff_t>(page * kPageSize));
    m_Page = page;
    return true;
}

std::span<const std::uint8_t> Flash::Read(std::uint32_t offset, std::uint32_t count) const {
    if (offset > kPageSize || count > kPageSize - offset) return {};
    return std::span(m_Buffer).subspan(offset, count);
}

bool Flash::Write(std::uint32_t offset, std::span<const std::uint8_t> bytes) {
    if (offset > kPageSize || bytes.size() > kPageSize - offset) return false;
    std::copy(bytes.begin(), bytes.end(), m_Buffer.begin() + static_cast<std::ptrdiff_t>(offset));
    return true;
}

std::optional<std::uint32_t> Flash::Position(std::uint32_t offset) const {
    if (!m_Page) return std::nullopt;
    return *m_Page * kPageSize + offset;
}

}  // namespace zel::sim
