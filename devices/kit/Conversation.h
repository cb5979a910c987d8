// What a camera answers in both protocols, on top of its back end: the parameter table with its checks, the calculation
// state, sequence and trigger switches, and the text commands that every camera knows. One call at a time; it knows
// nothing of links or threads.
#ifndef DEVICES_KIT_CONVERSATION_H
#define DEVICES_KIT_CONVERSATION_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "devices/kit/BackEnd.h"
#include "devices/kit/RunControl.h"

namespace zel::kit {

class Conversation {
  public:
    Conversation(BackEnd& back_end, RunControl& control) : m_BackEnd(back_end), m_Control(control) {}

    // Everything but texts goes back to its default.
    void PowerOn();

    // Appends to `answer` what the camera sends back for one datagram.
    void Handle(std::span<const std::uint8_t> datagram, std::vector<std::uint8_t>& answer);
    // As Handle, but a table request is refused with this exception code and a text command with an error.
    static void Refuse(std::span<const std::uint8_t> datagram, int exception, std::vector<std::uint8_t>& answer);

    // The length of the runs to come, and of the one that is on; 0: without an end.
    void SetSequence(int frames);
    // Of the run that is on alone, counted from its start.
    void SetRunLength(int frames);
    // The trigger input: whether it is switched on, and which of its edges triggers.
    bool HardwareTriggered() const { return m_Table.Number(HW_TRIG_SOURCE) != 0 || m_TriggerCl || m_TriggerA; }
    bool ActiveLow() const { return m_Table.Number(HW_TRIG_POLARITY) == 1; }
    const ParameterTable& Table() const { return m_Table; }

  private:
    // Table requests: 0 or an exception code.
    int Request(int command, int index, std::span<const std::uint8_t> data, std::vector<std::uint8_t>& reply);
    int Get(int index, EntryType type, std::vector<std::uint8_t>& reply);
    int Set(int index, const Attributes& attributes, std::span<const std::uint8_t> data);
    int Write(int index, Value value);
    bool RegionFits(int index, int value) const;
    void FollowRegion(int index);
    void Follow(int index);
    void Refresh(int index);
    std::vector<std::uint8_t> UnreadIndices();

    // Text commands.
    std::string AnswerText(std::string_view command);
    std::string Introduction() const;
    bool TriggerCommand(std::string_view arguments);
    bool CameraCommand(std::string_view arguments);

    int Limited(int frames) const;
    void Begin(bool triggered);
    void Halt();
    void SoftwareTrigger();

    BackEnd& m_BackEnd;
    RunControl& m_Control;
    ParameterTable m_Table;
    bool m_TriggerSoftware = false;  // the three switches of the "trig" commands
    bool m_TriggerCl = false;
    bool m_TriggerA = false;
};

}  // namespace zel::kit

#endif
