// The camera's flash memory as its firmware reaches it: pages, and a buffer of one page that they go through.
#ifndef SIM_FLASH_H
#define SIM_FLASH_H

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace zel::sim {

class Flash {
  public:
    static constexpr std::uint32_t kPageSize = 264;
    static constexpr std::uint32_t kPages = 256;
    static constexpr std::uint8_t kErased = 0xFF;

    // content: the first bytes of the memory; the rest is erased.
    explicit Flash(std::span<const std::uint8_t> content = {});

    // Power off and on: the pages stay.
    void PowerCycle();

    void ClearBuffer();
    // False for a page that is not there.
    bool LoadPage(std::uint32_t page);
    bool StorePage(std::uint32_t page);
    // The bytes of the buffer; empty when they are not all inside it.
    std::span<const std::uint8_t> Read(std::uint32_t offset, std::uint32_t count) const;
    bool Write(std::uint32_t offset, std::span<const std::uint8_t> bytes);

    // Where an offset of the buffer lies in the memory, while the buffer holds a page that was loaded.
    std::optional<std::uint32_t> Position(std::uint32_t offset) const;
    std::span<const std::uint8_t> Content() const { return m_Content; }

  private:
    std::vector<std::uint8_t> m_Content;
    std::vector<std::uint8_t> m_Buffer;
    std::optional<std::uint32_t> m_Page;  // that was loaded last
};

}  // namespace zel::sim

#endif
