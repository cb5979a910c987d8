// The answers of a small camera: a parameter table and text replies in maps, to hand to ScriptedTransport::SetHandler.
//
//     TableCamera model;
//     model.m_Values[H_SIZE] = 640;
//     model.m_Texts["info"] = "MODEL 1";
//     transport.SetHandler(model.Handler());   // the model must outlive the transport's use
//
// It begins as a camera of 16 x 8 samples. A GET answers the block or the value (0 when there is none), a SET stores
// the value or the block, GET_ATTRIBUTES answers the record that was set or one with wide limits. An entry in
// m_Exceptions answers with that exception code instead. Not locked: drive it from one thread at a time (the SDK's
// exchange lock does).
#ifndef TESTS_SUPPORT_TABLECAMERA_H
#define TESTS_SUPPORT_TABLECAMERA_H

#include <map>
#include <string>

#include "tests/support/ScriptedTransport.h"

namespace zel::test {

struct TableCamera {
    std::map<int, int> m_Values = {
        {H_SIZE, 16}, {V_SIZE, 8}, {BITS_PER_PIXEL, 12}, {BYTES_PER_PIXEL, 2},  {H_ROI_PIXELS, 16},   {V_ROI_PIXELS, 8},
        {H_BIN, 1},   {V_BIN, 1},  {SENSOR_TAPS_VAL, 1}, {CLOCK_SPEED_VAL, 20}, {EXPOSURE_TIME, 700}, {CALC_STATE, 2}};
    std::map<int, Bytes> m_Blocks = {{HW_MODEL, TextBytes("A30-M")}};
    std::map<int, SyncTableAttributes> m_Attributes;
    std::map<int, int> m_Exceptions;
    std::map<std::string, std::string> m_Texts;  // command without its line end, to its reply; others answer "OK"

    ScriptedTransport::Handler Handler() {
        return [this](const Bytes& datagram) { return Answer(datagram); };
    }

    Bytes Answer(const Bytes& datagram) {
        if (datagram.size() >= 3 && datagram[0] == 9) {
            std::string command(datagram.begin() + 3, datagram.end());
            command.erase(command.find_last_not_of("\r\n") + 1);
            return TextReply(m_Texts.contains(command) ? m_Texts[command] : "OK");
        }
        if (datagram.size() < 10) return {};
        const int index = Word(datagram, 6);
        if (m_Exceptions.contains(index)) return ExceptionReply(m_Exceptions[index]);
        switch (datagram[3]) {
            case SYNC_TABLE_CMD_GET:
                return m_Blocks.contains(index) ? BlockReply(m_Blocks[index]) : ValueReply(m_Values[index]);
            case SYNC_TABLE_CMD_SET:
                if (SyncTableIsBlock(index) || datagram.size() != 14) {
                    m_Blocks[index] = Bytes(datagram.begin() + 10, datagram.end());
                } else {
                    m_Values[index] = Word(datagram, 10);
                }
                return SetReply();
            case SYNC_TABLE_CMD_GET_ATTRIBUTES:
                return AttributesReply(m_Attributes.contains(index)
                                           ? m_Attributes[index]
                                           : MakeAttributes(index, SyncTableName(index), 0, 0x7FFFFFFF, 0));
            default:
                return {};
        }
    }

    // A number of a request.
    static int Word(const Bytes& bytes, std::size_t offset) {
        unsigned value = 0;
        for (std::size_t i = 4; i-- > 0;) value = value << 8 | bytes[offset + i];
        return static_cast<int>(value);
    }
};

}  // namespace zel::test

#endif
