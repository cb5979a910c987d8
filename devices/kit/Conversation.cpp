// Switching on, running, and the text commands.
#include "devices/kit/Conversation.h"

#include <algorithm>

#include "devices/kit/Wire.h"

namespace zel::kit {

void Conversation::PowerOn() {
    Halt();
    for (int i = 0; i < SYNC_TABLE_SELECT_MAX; ++i) {
        const Attributes attributes = m_BackEnd.AttributesOf(i).value_or(Attributes());
        if (attributes.type == EntryType::kText) {
            m_Table.Store(i, m_Table.Text(i));
        } else if (attributes.type == EntryType::kDouble) {
            m_Table.Store(i, static_cast<double>(attributes.default_value));
        } else {
            m_Table.Store(i, attributes.default_value);
        }
    }
    m_TriggerSoftware = m_TriggerCl = m_TriggerA = false;
    m_BackEnd.PowerOn(m_Table);
    m_Table.MarkAllUnread();
}

void Conversation::Handle(std::span<const std::uint8_t> datagram, std::vector<std::uint8_t>& answer) {
    if (!IsTableRequest(datagram)) return AppendTextReply(AnswerText(CommandText(datagram)), answer);
    std::vector<std::uint8_t> reply;
    int exception = kExceptionIncompleteData;
    if (const auto request = ReadTableRequest(datagram)) {
        exception = Request(request->command, request->index, request->data, reply);
    }
    AppendTableReply(TableCommand(datagram), reply, exception, answer);
}

void Conversation::Refuse(std::span<const std::uint8_t> datagram, int exception, std::vector<std::uint8_t>& answer) {
    if (IsTableRequest(datagram)) {
        AppendTableReply(TableCommand(datagram), {}, exception, answer);
    } else {
        AppendTextReply("ERR", answer);
    }
}

// The length of a run when the host asks for one of so many frames, 0: without an end.
int Conversation::Limited(int frames) const {
    const int longest = m_BackEnd.LongestRun();
    if (longest <= 0) return std::max(frames, 0);
    return frames <= 0 ? longest : std::min(frames, longest);
}

// A camera that is armed goes on waiting when it is told to run. One that runs begins anew.
void Conversation::Begin(bool triggered) {
    const bool hardware = HardwareTriggered();
    m_Control.Begin({triggered, hardware, Limited(m_Table.Number(FRAME_COUNT))});
    m_BackEnd.Stop();
}

void Conversation::Halt() {
    m_Control.Halt();
    m_BackEnd.Stop();
}

void Conversation::SoftwareTrigger() {
    if (m_TriggerSoftware && m_Control.AddTrigger()) m_BackEnd.Trigger();
}

void Conversation::SetSequence(int frames) {
    m_Table.Store(FRAME_COUNT, std::max(frames, 0));
    m_Control.Acquiring() ? SetRunLength(frames) : m_Control.SetLength(frames);
}

void Conversation::SetRunLength(int frames) {
    m_Control.SetLength(Limited(frames));
    if (!m_Control.Acquiring()) m_BackEnd.Stop();
}

std::string Conversation::Introduction() const {
    const std::string taps = std::to_string(std::max(m_Table.Number(SENSOR_TAPS_VAL), 1));
    return "Camera " + m_Table.Text(HW_MODEL) + "\r\nSerial: " + m_Table.Text(SERIAL_NUMBER) +
           "\r\nName: " + m_Table.Text(CAMERA_NAME) + "\r\nFirmware: " + m_Table.Text(FW_VERSION) +
           "\r\nSensor: " + std::to_string(m_Table.Number(H_SIZE)) + "x" + std::to_string(m_Table.Number(V_SIZE)) +
           ", " + std::to_string(m_Table.Number(BITS_PER_PIXEL)) + " bit, " + taps + (taps == "1" ? " tap" : " taps");
}

std::string Conversation::AnswerText(std::string_view command) {
    if (const auto reply = m_BackEnd.Text(command)) return *reply;
    std::string_view rest = command;
    const std::string_view word = NextWord(rest);
    if (command == "info") return Introduction();
    if (command == "name") return m_Table.Text(CAMERA_NAME);
    bool known = false;
    if (word == "name") {
        known = Write(CAMERA_NAME, std::string(rest)) == 0;
    } else if (command == "arm") {
        Begin(true);
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
bool Conversation::TriggerCommand(std::string_view arguments) {
    const std::string_view input = NextWord(arguments);
    const std::string_view setting = NextWord(arguments);
    bool* const on = input == "sw" ? &m_TriggerSoftware : input == "cl" ? &m_TriggerCl : &m_TriggerA;
    if (input != "sw" && input != "cl" && input != "a") return false;
    if (setting == "on" || setting == "off") {
        *on = setting == "on";
        return true;
    }
    if (input == "sw" || (setting != "hi" && setting != "lo" && setting != "low")) return false;
    return Write(HW_TRIG_POLARITY, setting == "hi" ? 0 : 1) == 0;
}

bool Conversation::CameraCommand(std::string_view arguments) {
    if (arguments == "calc") return Write(CALC_STATE, 1) == 0;
    if (arguments == "sw trig on" || arguments == "sw trig off") {
        m_TriggerSoftware = arguments == "sw trig on";
    } else if (arguments == "arm") {
        Begin(true);
    } else if (arguments == "stop") {
        Halt();
    } else {
        return false;
    }
    return true;
}

}  // namespace zel::kit
