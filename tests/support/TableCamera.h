// The answers of a small camera: a parameter table and text replies in maps, to hand to ScriptedTransport::SetHandler.
//
//     TableCamera model;
//     model.m_Values[H_SIZE] = 640;
//     model.m_Texts["info"] = "MODEL 1";
//     transport.SetHandler(model.Handler());   // the model must outlive the transport's use
//
// A GET answers the block or the value (0 when none was set), a SET stores the value or the block, GET_ATTRIBUTES
// answers the record that was set or one with wide limits. An entry in m_Exceptions answers with that exception code
// instead. Not locked: drive it from one thread at a time (the SDK's exchange lock does).
#ifndef TESTS_SUPPORT_TABLECAMERA_H
#define TESTS_SUPPORT_TABLECAMERA_H

#include <map>
#include <string>

#include "tests/support/ScriptedTransport.h"

namespace zel::test {

class TableCamera {
  public:
    std::map<int, int> m_Values;
    std::map<int, Bytes> m_Blocks;
    std::map<int, SyncTableAttributes> m_Attributes;
    std::map<int, int> m_Exceptions;
    std::map<std::string, std::string> m_Texts;  // command without its line end, to its reply; others answer "OK"

    ScriptedTransport::Handler Handler() {
        return [this](const Bytes& datagram) { return Answer(datagram); };
    }

    Bytes Answer(const Bytes& datagram) {
        if (datagram.size() < 3) return {};
        if (datagram[0] == 9) return AnswerText(std::string(datagram.begin() + 3, datagram.end()));
        if (datagram.size() < 10) return {};
        const int index = Word(datagram, 6);
        if (const auto found = m_Exceptions.find(index); found != m_Exceptions.end()) {
            return ExceptionReply(found->second);
        }
        switch (datagram[3]) {
            case SYNC_TABLE_CMD_GET:
                return AnswerGet(index);
            case SYNC_TABLE_CMD_SET:
                return AnswerSet(index, datagram);
            case SYNC_TABLE_CMD_GET_ATTRIBUTES:
                return AnswerAttributes(index);
            default:
                return {};
        }
    }

  private:
    static int Word(const Bytes& bytes, std::size_t offset) {
        unsigned value = 0;
        for (std::size_t i = 4; i-- > 0;) value = value << 8 | bytes[offset + i];
        return static_cast<int>(value);
    }

    Bytes AnswerText(std::string command) const {
        while (!command.empty() && (command.back() == '\r' || command.back() == '\n')) command.pop_back();
        const auto found = m_Texts.find(command);
        return TextReply(found != m_Texts.end() ? found->second : "OK");
    }

    Bytes AnswerGet(int index) const {
        if (const auto found = m_Blocks.find(index); found != m_Blocks.end()) return BlockReply(found->second);
        const auto found = m_Values.find(index);
        return ValueReply(found != m_Values.end() ? found->second : 0);
    }

    Bytes AnswerSet(int index, const Bytes& datagram) {
        if (!SyncTableIsBlock(index) && datagram.size() == 14) {
            m_Values[index] = Word(datagram, 10);
        } else {
            m_Blocks[index] = Bytes(datagram.begin() + 10, datagram.end());
        }
        return SetReply();
    }

    Bytes AnswerAttributes(int index) const {
        const auto found = m_Attributes.find(index);
        return AttributesReply(found != m_Attributes.end()
                                   ? found->second
                                   : MakeAttributes(index, SyncTableName(index), 0, 0x7FFFFFFF, 0));
    }
};

}  // namespace zel::test

#endif
