// A camera's calibration flash that answers at once, and tables to put into it. The layout is built here byte by byte,
// not with the code under test.
//
//     ScriptedFlash flash;
//     flash.Install(MakeTable(30, 4), MakeTable(40, 4));
//     flash.m_Fault = [](const std::string& command) { ... };     // answers in the flash's place
#ifndef TESTS_TAPBALANCE_SCRIPTEDFLASH_H
#define TESTS_TAPBALANCE_SCRIPTEDFLASH_H

#include <cstring>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "calibration/TapTable.h"
#include "tests/support/ScriptedTransport.h"

namespace zel::test {

// Uneven levels from 12 mV on and gains around 1, all with few decimals. `variant` makes tables differ.
inline TapTable MakeTable(int rows, int taps, int variant = 0) {
    TapTable table(rows, taps);
    for (int row = 0; row < rows; ++row) {
        TapRow values;
        values.millivolts = static_cast<float>(12 + 900 * row / rows + 3 * (row * row % 5)) + 0.25f;
        for (int tap = 0; tap < taps; ++tap) {
            const int thousandths =
                950 + 30 * tap + (row * (7 + tap) + 11 * variant) % 23 + row * (tap % 2 ? -1 : 1) / 2;
            values.gains[static_cast<std::size_t>(tap)] = static_cast<float>(thousandths) / 1000.0f;
        }
        table.SetRow(row, values);
    }
    return table;
}

inline Bytes FloatBytes(float value) {
    Bytes bytes(4);
    std::memcpy(bytes.data(), &value, 4);  // both products are little-endian
    return bytes;
}

inline Bytes Digest(const TapTable& table) {
    Bytes bytes = LittleEndian(table.Taps()) + LittleEndian(table.Rows());
    for (const float value : table.Millivolts()) bytes = bytes + FloatBytes(value);
    for (int tap = 0; tap < table.Taps(); ++tap) {
        for (const float value : table.Gains(tap)) bytes = bytes + FloatBytes(value);
    }
    Sha1 sha;
    sha.Update(bytes);
    const Sha1::Digest digest = sha.Finish();
    return Bytes(digest.begin(), digest.end());
}

struct Entry {
    int rows;
    int columns;
    int offset;
    Bytes digest = Bytes(20);
};

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
            if (!command.starts_with(start) || times == 0) return std::nullopt;
            --times;
            return reply;
        };
    }

    void Put(std::size_t position, const Bytes& bytes) {
        std::copy(bytes.begin(), bytes.end(), m_Content.begin() + static_cast<std::ptrdiff_t>(position));
    }
    void PutDirectory(int tables, const Entry& first, const Entry& second) {
        Bytes bytes{static_cast<unsigned char>(tables)};
        for (const Entry* entry : {&first, &second}) {
            bytes = bytes + Low(entry->rows) + Low(entry->columns) + LittleEndian(entry->offset) + entry->digest;
        }
        Put(0, bytes);
    }
    void PutTable(std::size_t position, const TapTable& table) {
        for (int row = 0; row < table.Rows(); ++row) {
            Bytes bytes = FloatBytes(table.Millivolts()[static_cast<std::size_t>(row)]);
            for (int tap = 0; tap < table.Taps(); ++tap) {
                bytes = bytes + FloatBytes(table.Gains(tap)[static_cast<std::size_t>(row)]);
            }
            Put(position, bytes);
            position += bytes.size();
        }
    }
    // Both tables, neither at the beginning of a page.
    void Install(const TapTable& first, const TapTable& second) {
        const int first_at = static_cast<int>(std::max<std::size_t>(m_PageSize, 57)) + 10;
        const int second_at = first_at + 4 * first.Columns() * first.Rows() + 6;
        PutDirectory(2, {first.Rows(), first.Columns(), first_at, Digest(first)},
                     {second.Rows(), second.Columns(), second_at, Digest(second)});
        PutTable(static_cast<std::size_t>(first_at), first);
        PutTable(static_cast<std::size_t>(second_at), second);
    }
    const Bytes& Content() const { return m_Content; }

    int Count(const std::string& start) const {
        return static_cast<int>(std::count_if(m_Commands.begin(), m_Commands.end(),
                                              [&](const std::string& c) { return c.starts_with(start); }));
    }

    // The answer datagram to a text datagram; empty: none.
    Bytes Answer(const Bytes& datagram) {
        const std::string command(datagram.begin() + 3, datagram.end());
        m_Commands.push_back(command);
        if (m_Fault) {
            if (const std::optional<std::string> reply = m_Fault(command))
                return reply->empty() ? Bytes() : TextReply(*reply);
        }
        return TextReply(Reply(command));
    }

  private:
    static Bytes Low(int value) {
        const Bytes bytes = LittleEndian(value);
        return Bytes(bytes.begin(), bytes.begin() + 2);
    }
    static std::string Hex(std::size_t value) {
        std::ostringstream text;
        text << std::hex << value;
        return text.str();
    }

    std::string Reply(const std::string& command) {
        std::istringstream in(command);
        std::string tb, verb, what;
        in >> tb >> verb;
        if (verb == "f") return "OK";
        if (verb == "p") {
            in >> what;
            if (what == "s") return Hex(m_PageSize);
            if (what == "n") return Hex(m_Content.size() / m_PageSize);
            m_Buffer.assign(m_PageSize, 0xFF);
            return "OK";
        }
        std::vector<std::size_t> numbers;
        for (std::size_t number = 0; in >> std::hex >> number;) numbers.push_back(number);
        if (numbers.empty()) return "ERR";
        const auto page = m_Content.begin() + static_cast<std::ptrdiff_t>(numbers[0] * m_PageSize);
        if (verb == "g" || verb == "s") {
            if (numbers[0] >= m_Content.size() / m_PageSize) return "ERR page";
            if (verb == "g") std::copy_n(page, m_PageSize, m_Buffer.begin());
            if (verb == "s") std::copy_n(m_Buffer.begin(), m_PageSize, page);
            return "OK";
        }
        const std::size_t count = verb == "r" ? numbers.at(1) : numbers.size() - 1;
        if (numbers[0] + count > m_PageSize || count > 8) return "ERR range";
        std::string text;
        for (std::size_t i = 0; i < count; ++i) {
            unsigned char& byte = m_Buffer[numbers[0] + i];
            if (verb == "w") byte = static_cast<unsigned char>(numbers[i + 1]);
            text += (i ? " " : "") + Hex(byte);
        }
        return verb == "w" ? "OK" : text;
    }

    std::size_t m_PageSize;
    Bytes m_Content;
    Bytes m_Buffer;
};

}  // namespace zel::test

#endif
