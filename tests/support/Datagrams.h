// The datagrams of both protocols as tests write them: what a camera answers, and what a host asks.
#ifndef TESTS_SUPPORT_DATAGRAMS_H
#define TESTS_SUPPORT_DATAGRAMS_H

#include <span>
#include <string_view>
#include <vector>

#include "link/SyncTableIndex.h"

namespace zel::test {

using Bytes = std::vector<unsigned char>;

inline Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline Bytes AsBytes(std::span<const unsigned char> bytes) { return Bytes(bytes.begin(), bytes.end()); }
inline Bytes TextBytes(std::string_view text) { return Bytes(text.begin(), text.end()); }

// Header and payload.
inline Bytes Datagram(int id, const Bytes& payload) {
    const std::size_t size = payload.size();
    return Bytes{static_cast<unsigned char>(id), static_cast<unsigned char>(size >> 8),
                 static_cast<unsigned char>(size)} +
           payload;
}

// As it lies in memory, which is how cameras send it, too.
template <class Value>
Bytes BytesOf(const Value& value) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(&value);
    return Bytes(bytes, bytes + sizeof value);
}
inline Bytes LittleEndian(int value) { return BytesOf(value); }

// A text reply as cameras end it: line end and zero byte, which the host drops.
inline Bytes TextReply(std::string_view text) { return Datagram(9, TextBytes(text) + Bytes{'\r', '\n', 0}); }

inline Bytes NoException() { return Datagram(0, {}); }
inline Bytes Exception(int code) { return Datagram(0, {0, 0, static_cast<unsigned char>(code)}); }

// A reply of the parameter table without its exception datagram.
inline Bytes TableReply(int command, const Bytes& data) { return Datagram(0, Datagram(command, data)); }

// Complete successful answers.
inline Bytes ValueReply(int value) { return TableReply(SYNC_TABLE_CMD_GET, LittleEndian(value)) + NoException(); }
inline Bytes BlockReply(const Bytes& data) { return TableReply(SYNC_TABLE_CMD_GET, data) + NoException(); }
inline Bytes SetReply() { return TableReply(SYNC_TABLE_CMD_SET, {}) + NoException(); }
inline Bytes AttributesReply(const SyncTableAttributes& record) {
    return TableReply(SYNC_TABLE_CMD_GET_ATTRIBUTES, BytesOf(record)) + NoException();
}

// A command that failed with an exception.
inline Bytes ExceptionReply(int code) { return TableReply(SYNC_TABLE_CMD_GET, LittleEndian(0)) + Exception(code); }

inline SyncTableAttributes MakeAttributes(int index, std::string_view name, int minimum, int maximum, int default_value,
                                          int flags = 1, int data_type = 3) {
    SyncTableAttributes record{index, {}, data_type, flags, minimum, maximum, default_value};
    name.copy(record.name, sizeof record.name);
    return record;
}

// Requests as the host sends them.
inline Bytes TextRequest(std::string_view text) { return Datagram(9, TextBytes(text)); }
inline Bytes TableRequest(int command, int index, const Bytes& data = {}) {
    return Datagram(0, Datagram(command, LittleEndian(index) + data));
}
inline Bytes GetRequest(int index) { return TableRequest(SYNC_TABLE_CMD_GET, index); }
inline Bytes SetRequest(int index, int value) { return TableRequest(SYNC_TABLE_CMD_SET, index, LittleEndian(value)); }

}  // namespace zel::test

#endif
