// The "tb" commands: a host's way to the flash memory. Numbers are hexadecimal in commands and replies.
//
//   tb f s            begins access to the flash memory
//   tb p s            size of a page             tb p n            number of pages
//   tb p c            clears the page buffer
//   tb g PAGE         page -> buffer             tb s PAGE         buffer -> page
//   tb r AT COUNT     bytes of the buffer        tb w AT BYTE ...  bytes into the buffer
//
// Reading commands answer numbers with a blank between them, the others "OK"; a wrong command answers "ERR" and why.
#ifndef SIM_FLASHCOMMANDS_H
#define SIM_FLASHCOMMANDS_H

#include <array>
#include <chrono>
#include <string>
#include <string_view>

#include "devices/sim/firmware/Flash.h"

namespace zel::sim {

// How long the memory takes.
struct FlashTimes {
    std::chrono::microseconds load{0};
    std::chrono::microseconds store{0};
};

class FlashCommands {
  public:
    explicit FlashCommands(std::span<const std::uint8_t> content) : m_Flash(content) {}

    void PowerCycle();

    // arguments: what follows "tb ". Adds to `busy` how long the command keeps the camera busy.
    std::string Answer(std::string_view arguments, std::chrono::microseconds& busy);
    void SetTimes(const FlashTimes& times) { m_Times = times; }

    // Whether this command begins to read a table's row.
    bool BeginsRow(std::string_view arguments) const;
    // The row whose reading begins now tells this gain of tap 1, until it is read again.
    void SpoilNextRow(float gain);

  private:
    struct Command;
    std::string Page(const Command& command, std::chrono::microseconds& busy);
    std::string Read(const Command& command);
    std::string Write(const Command& command);

    Flash m_Flash;
    FlashTimes m_Times;
    bool m_SpoilNext = false;
    std::array<std::uint8_t, 4> m_Spoiled{};  // bytes that are told in place of the memory's
    std::uint32_t m_SpoiledAt = 0;            // their position, 0: none
};

}  // namespace zel::sim

#endif
