// A camera's calibration flash that answers at once, and tables to put into it.
//
//     ScriptedFlash flash;
//     flash.Install(MakeTable(30, 4), MakeTable(40, 4));
//     flash.m_Fault = [](const std::string& command) { ... };     // answers in the flash's place
#ifndef TESTS_TAPBALANCE_SCRIPTEDFLASH_H
#define TESTS_TAPBALANCE_SCRIPTEDFLASH_H

#include <charconv>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "calibration/TableDirectory.h"
#include "tests/support/ScriptedTransport.h"

namespace zel::test {

// Uneven levels from 12 mV on and gains around 1, all with few decimals. `variant` makes tables differ.
inline TapTable MakeTable(int rows, int taps, int variant = 0) {
    TapTable table(rows, taps);
    for (int row = 0; row < rows; ++row) {
        TapRow values{static_cast<float>(12 + 900 * row / rows + 3 * (row * row % 5)) + 0.25f, {}};
        for (int tap = 0; tap < taps; ++tap) {
            const int thousandths =
                950 + 30 * tap + (row * (7 + tap) + 11 * variant) % 23 + row * (tap % 2 ? -1 : 1) / 2;
            values.gains[static_cast<std::size_t>(tap)] = static_cast<float>(thousandths) / 1000.0f;
        }
        table.SetRow(row, values);
    }
    return table;
}

class ScriptedFlash {
  public:
    explicit ScriptedFlash(std::size_t page_size = 256, std::size_t pages = 64)
        : m_PageSize(page_size), m_Content(page_size * pages, 0xFF), m_Buffer(page_size) {}

    // Answers the next command itself: no text is no reply at all; not engaged leaves it to the flash.
    using Fault = std::function<std::optional<std::string>(const std::string& command)>;
    Fault m_Fault;
    std::vector<std::string> m_Commands;
    // Answers commands that begin with `start`, `times` times.
    void Fail(const std::string& start, const std::string& reply, int times = 1 << 30) {
        m_Fault = [=](const std::string& command) mutable -> std::optional<std::string> {
            if (!command.starts_with(start) || times-- <= 0) return std::nullopt;
            return reply;
        };
    }

    void Put(std::size_t position, const Bytes& bytes) {
        std::ranges::copy(bytes, m_Content.begin() + static_cast<std::ptrdiff_t>(position));
    }
    void PutDirectory(int tables, const TableEntry& first, const TableEntry& second) {
        const TableDirectory::Bytes bytes = TableDirectory{tables, {first, second}}.Encode();
        Put(0, Bytes(bytes.begin(), bytes.end()));
    }
    // Both tables one behind the other from `start` on, `gap` bytes apart.
    void PutTables(std::size_t start, std::size_t gap, const TapTable& first, const TapTable& second) {
        const std::size_t next = start + first.FlashBytes().size() + gap;
        PutDirectory(2, {first.Rows(), first.Columns(), static_cast<std::uint32_t>(start), first.Digest()},
                     {second.Rows(), second.Columns(), static_cast<std::uint32_t>(next), second.Digest()});
        Put(start, first.FlashBytes());
        Put(next, second.FlashBytes());
    }
    // Neither at the beginning of a page.
    void Install(const TapTable& first, const TapTable& second) {
        PutTables(std::max(m_PageSize, TableDirectory::kSize) + 10, 6, first, second);
    }
    const Bytes& Content() const { return m_Content; }

    int Count(const std::string& start) const {
        return static_cast<int>(std::ranges::count_if(m_Commands, [&](auto& text) { return text.starts_with(start); }));
    }

    // The answer datagram to a text datagram; empty: none.
    Bytes Answer(const Bytes& datagram) {
        const std::string command(datagram.begin() + 3, datagram.end());
        m_Commands.push_back(command);
        const std::optional<std::string> reply = m_Fault ? m_Fault(command) : std::nullopt;
        if (!reply) return TextReply(Reply(command));
        return reply->empty() ? Bytes() : TextReply(*reply);
    }

  private:
    static std::string Hex(std::size_t value) {
        char text[20];
        return std::string(text, std::to_chars(text, text + sizeof text, value, 16).ptr);
    }

    std::string Reply(const std::string& command) {
        if (command == "tb f s") return "OK";
        if (command == "tb p s") return "0x" + Hex(m_PageSize);
        if (command == "tb p n") return "0X" + Hex(m_Content.size() / m_PageSize);
        if (command == "tb p c") return m_Buffer.assign(m_PageSize, 0xFF), "OK";
        const char verb = command.at(3);
        std::vector<std::size_t> numbers;
        for (const char* at = command.c_str() + 4; *at;) {
            char* end = nullptr;
            numbers.push_back(std::strtoul(at, &end, 16));
            if (end == at) return "ERR";
            at = end;
        }
        if (numbers.empty()) return "ERR";
        if (verb == 'g' || verb == 's') {
            if (numbers[0] >= m_Content.size() / m_PageSize) return "ERR page";
            const auto page = m_Content.begin() + static_cast<std::ptrdiff_t>(numbers[0] * m_PageSize);
            if (verb == 'g') std::copy_n(page, m_PageSize, m_Buffer.begin());
            if (verb == 's') std::copy_n(m_Buffer.begin(), m_PageSize, page);
            return "OK";
        }
        const std::size_t count = verb == 'r' ? numbers.at(1) : numbers.size() - 1;
        if (numbers[0] + count > m_PageSize || count > 8) return "ERR range";
        std::string text;
        for (std::size_t i = 0; i < count; ++i) {
            unsigned char& byte = m_Buffer[numbers[0] + i];
            if (verb == 'w') byte = static_cast<unsigned char>(numbers[i + 1]);
            text += (i ? " " : "") + Hex(byte);
        }
        return verb == 'w' ? "OK" : text;
    }

    std::size_t m_PageSize;
    Bytes m_Content;
    Bytes m_Buffer;
};

}  // namespace zel::test

#endif
