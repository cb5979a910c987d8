// What a datagram asks for, as one line of the simulated camera's log.
#ifndef SIM_EXCHANGETEXT_H
#define SIM_EXCHANGETEXT_H

#include <cstdint>
#include <span>
#include <string>

namespace zel::sim {

// "GET EXPOSURE_TIME", "SET EXPOSURE_TIME 5000", "ATTRIBUTES V_BIN", or "text " and the command with its line end
// written as \r\n.
std::string ExchangeText(std::span<const std::uint8_t> datagram);

// The entry that a table request is about; -1 for everything else.
int ExchangeEntry(std::span<const std::uint8_t> datagram);

}  // namespace zel::sim

#endif
