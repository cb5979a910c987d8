// The text commands of the firmware.
//
// Command:  9 | length (2, big-endian) | text       or the text alone
// Reply:    9 | length (2, big-endian) | text CR LF NUL

#include "devices/sim/firmware/Firmware.h"

namespace zel::sim {

namespace {

constexpr std::size_t kHeader = 3;

void AppendTextReply(const std::string& text, std::vector<std::uint8_t>& answer) {
    const std::size_t length = text.size() + 3;
    answer.insert(answer.end(), {9, static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length)});
    answer.insert(answer.end(), text.begin(), text.end());
    answer.insert(answer.end(), {'\r', '\n', 0});
}

// Takes the first word off a command.
std::string_view NextWord(std::string_view& rest) {
    const std::size_t begin = std::min(rest.find_first_not_of(' '), rest.size());
    const std::size_t end = std::min(rest.find(' ', begin), rest.size());
    const std::string_view word = rest.substr(begin, end - begin);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return word;
}

}  // namespace

std::string_view CommandText(std::span<const std::uint8_t> datagram) {
    std::string_view text(reinterpret_cast<const char*>(datagram.data()), datagram.size());
    if (datagram.size() >= kHeader && datagram[0] == 9 &&
        datagram.size() - kHeader == std::size_t{datagram[1]} * 256 + datagram[2]) {
        text.remove_prefix(kHeader);
    }
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n' || text.back() == '\0' || text.back() == ' ')) {
        text.remove_suffix(1);
    }
    return text;
}

void Firmware::Handle(std::span<const std::uint8_t> datagram, std::vector<std::uint8_t>& answer) {
    if (IsTableRequest(datagram)) {
        HandleTable(datagram, answer);
    } else {
        AppendTextReply(AnswerText(CommandText(datagram)), answer);
    }
}

bool Firmware::BeginsTableRow(std::span<const std::uint8_t> datagram) const {
    if (IsTableRequest(datagram)) return false;
    std::string_view rest = CommandText(datagram);
    return NextWord(rest) == "tb" && m_Flash.BeginsRow(rest);
}

std::string Firmware::Description() const {
    return "ZEL camera " + m_Registers.Text(HW_MODEL) + "\r\nSerial: " + m_Registers.Text(SERIAL_NUMBER) +
           "\r\nName: " + Name() + "\r\nFirmware: " + m_Registers.Text(FW_VERSION) +
           "\r\nFPGA: 118\r\nSensor: " + std::to_string(m_Model.width) + "x" + std::to_string(m_Model.height) + ", " +
           std::to_string(m_Model.bits) + " bit, " + std::to_string(m_Taps) + (m_Taps == 1 ? " tap" : " taps");
}

std::string Firmware::AnswerText(std::string_view command) {
    std::string_view rest = command;
    const std::string_view word = NextWord(rest);
    if (command == "info") return Description();
    if (command == "name") return Name();
    if (word == "name") {
        m_Registers.StoreText(CAMERA_NAME, std::string(rest));
        return "OK";
    }
    if (word == "tb") return m_Flash.Answer(rest, m_Busy);
    bool known = false;
    if (command == "arm") {
        Arm();
        known = true;
    } else if (word == "trig") {
        known = TriggerCommand(rest);
    } else if (word.substr(0, 4) == "cam.") {
        known = CameraCommand(command.substr(4));
    }
    return known ? "OK" : "ERR";
}

// "sw on", "sw off": triggers by command. "cl ..." and "a ...": the two trigger inputs; "hi", "lo" and "low" set the
// polarity.
bool Firmware::TriggerCommand(std::string_view arguments) {
    const std::string_view input = NextWord(arguments);
    const std::string_view setting = NextWord(arguments);
    bool* const on = input == "sw" ? &m_TriggerSoftware : input == "cl" ? &m_TriggerCl : &m_TriggerA;
    if (input != "sw" && input != "cl" && input != "a") return false;
    if (setting == "on" || setting == "off") {
        *on = setting == "on";
        return true;
    }
    if (input == "sw" || (setting != "hi" && setting != "lo" && setting != "low")) return false;
    m_Registers.Store(HW_TRIG_POLARITY, setting == "hi" ? 0 : 1);
    return true;
}

bool Firmware::CameraCommand(std::string_view arguments) {
    if (arguments == "calc") {
        StartCalculation();
    } else if (arguments == "sw trig on" || arguments == "sw trig off") {
        m_TriggerSoftware = arguments == "sw trig on";
    } else if (arguments == "arm") {
        Arm();
    } else if (arguments == "stop") {
        Halt();
    } else {
        return false;
    }
    return true;
}

}  // namespace zel::sim
