// The datagrams of the parameter table.
//
// Request, value form (the value only with SET) and block form:
//
//    offset  size  field
//    0       1     datagram id: 0
//    1       2     length of what follows, big-endian
//    3       1     command
//    4       2     argument length, big-endian: index, and value or data
//    6       4     index, little-endian
//    10      4, n  value, little-endian, or n bytes of data
//
// Reply, followed by an exception datagram:
//
//    0       1     datagram id
//    1       2     length of what follows, big-endian, at most 255
//    3       1     command
//    4       2     data length, big-endian
//    6       n     data; a value is little-endian
//
// Exception datagram:
//
//    0       1     datagram id
//    1       2     length of what follows, big-endian; 0 = no exception
//    5       1     exception code
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>

#include "link/ICameraInterface.h"
#include "link/ReceiveBytes.h"
#include "link/SyncTable.h"
#include "link/SyncTableNames.h"

namespace zel {

namespace {

constexpr int kRequestHead = 10;  // everything before a value or data
constexpr int kValueSize = 4;
constexpr int kIndexSize = 4;
constexpr int kLongestReply = 255;
constexpr int kLongestBlock = 0xFFFF - (kRequestHead - kDatagramHeaderSize);  // what the length field can tell
constexpr int kDataLengthOffset = 4;
constexpr int kDataOffset = 6;
constexpr int kExceptionCodeOffset = 5;
// The largest copy starts at kDataOffset and takes a whole attribute record.
constexpr int kReplyBuffer = kDatagramHeaderSize + kLongestReply;
static_assert(kReplyBuffer >= kDataOffset + static_cast<int>(sizeof(SyncTableAttributes)));

void PutBigEndian16(unsigned char* bytes, int value) {
    bytes[0] = static_cast<unsigned char>(value >> 8);
    bytes[1] = static_cast<unsigned char>(value);
}

void PutLittleEndian32(unsigned char* bytes, int value) {
    for (int i = 0; i < 4; ++i) bytes[i] = static_cast<unsigned char>(static_cast<unsigned>(value) >> (8 * i));
}

int LittleEndian32(const unsigned char* bytes) {
    unsigned value = 0;
    for (int i = 3; i >= 0; --i) value = value << 8 | bytes[i];
    return static_cast<int>(value);
}

void PutRequestHead(unsigned char* datagram, int command, int index, int data_size) {
    datagram[0] = 0;
    PutBigEndian16(datagram + 1, kRequestHead - kDatagramHeaderSize + data_size);
    datagram[3] = static_cast<unsigned char>(command);
    PutBigEndian16(datagram + kDataLengthOffset, kIndexSize + data_size);
    PutLittleEndian32(datagram + kDataOffset, index);
}

}  // namespace

bool SyncTable::CommandSend(int command, int index, int value) {
    const SyncTableCommandText name(command);
    ZEL_LOG(m_Logger, kLogTrace, "SyncTable::CommandSend", "command:%s index:%s value:%d) - entry", name.text,
            SyncTableName(index), value);
    const int data_size = command == SYNC_TABLE_CMD_SET ? kValueSize : 0;
    const int size = kRequestHead + data_size;
    std::array<unsigned char, kRequestHead + kValueSize> datagram{};
    PutRequestHead(datagram.data(), command, index, data_size);
    if (data_size) PutLittleEndian32(datagram.data() + kRequestHead, value);

    State::m_CommandTimeMs = platform::MillisecondClock();
    ZEL_LOG(m_Logger, kLogTrace, "SyncTable::CommandSend", "calling m_Camera->SendData(len:%d)", size);
    if (!m_Camera || m_ExchangeLock.Cancelled() || m_Camera->SendData(size, datagram.data()) != size) {
        ZEL_LOG(m_Logger, kLogError, "SyncTable::CommandSend",
                "***ERROR***:command:%s index:%s value:%d) - m_Camera->SendData(len:%d) failed", name.text,
                SyncTableName(index), value, size);
        return false;
    }
    ZEL_LOG(m_Logger, kLogTrace, "SyncTable::CommandSend", "command:%s index:%s value:%d - exit success", name.text,
            SyncTableName(index), value);
    return true;
}

// On purpose: the argument length goes out as its low byte alone, and the transport's answer is not looked at.
bool SyncTable::CommandSend(int index, const void* buffer, int num_bytes) {
    const SyncTableCommandText name(SYNC_TABLE_CMD_SET);
    ZEL_LOG(m_Logger, kLogTrace, "SyncTable::CommandSend", "command:%s index:%s num_bytes:%d - entry", name.text,
            SyncTableName(index), num_bytes);
    if (!m_Camera || m_ExchangeLock.Cancelled() || num_bytes < 0 || num_bytes > kLongestBlock) return false;
    const int size = kRequestHead + num_bytes;
    const std::unique_ptr<unsigned char[]> datagram(new (std::nothrow) unsigned char[static_cast<std::size_t>(size)]);
    if (!datagram) return false;
    PutRequestHead(datagram.get(), SYNC_TABLE_CMD_SET, index, num_bytes);
    datagram[kDataLengthOffset] = 0;
    if (num_bytes > 0) {
        std::memcpy(datagram.get() + kRequestHead, static_cast<const unsigned char*>(buffer) + kBlockDataOffset,
                    static_cast<std::size_t>(num_bytes));
    }

    State::m_CommandTimeMs = platform::MillisecondClock();
    m_Camera->SendData(size, datagram.get());
    std::copy_n(datagram.get(), std::min(size, State::kLastRequestSize), m_State.m_LastRequest.begin());
    ZEL_LOG(m_Logger, kLogTrace, "SyncTable::CommandSend", "command:%s index:%s num_bytes:%d - exit success", name.text,
            SyncTableName(index), num_bytes);
    return true;
}

// Bytes that the reply announces in its data length but does not carry read as zero.
bool SyncTable::CommandRecv(int* value_out, void* data_out, int data_capacity) {
    if (!m_Camera) return false;
    const platform::TimerResolution resolution;
    std::array<unsigned char, kReplyBuffer> reply{};
    if (!ReceivePart(reply.data(), kDatagramHeaderSize)) {
        ZEL_LOG(m_Logger, kLogError, "SyncTable::CommandRecv", "timout");  // spelt so
        return false;
    }
    const int length = BigEndian16(reply.data() + 1);
    if (length > kLongestReply) return false;
    if (!ReceivePart(reply.data() + kDatagramHeaderSize, length)) {
        ZEL_LOG(m_Logger, kLogError, "SyncTable::CommandRecv", "timeout");
        return false;
    }

    const int data_length = BigEndian16(reply.data() + kDataLengthOffset);
    ZEL_LOG(m_Logger, kLogTrace, "SyncTable::CommandRecv", "len:%d", data_length);
    if (data_out && data_capacity > 0) {
        std::memcpy(data_out, reply.data() + kDataOffset,
                    static_cast<std::size_t>(std::min(data_length, data_capacity)));
    }
    if (value_out) {
        *value_out = LittleEndian32(reply.data() + kDataOffset);
        ZEL_LOG(m_Logger, kLogTrace, "SyncTable::CommandRecv", "CommandRecv() value :%d\n", *value_out);
    }
    return ReceiveException();
}

bool SyncTable::ReceiveException() {
    std::array<unsigned char, kReplyBuffer> datagram{};
    if (!ReceivePart(datagram.data(), kDatagramHeaderSize)) {
        ZEL_LOG(m_Logger, kLogError, "SyncTable::CommandRecv", "timeout in exception");
        return false;
    }
    const int length = BigEndian16(datagram.data() + 1);
    ZEL_LOG(m_Logger, kLogTrace, "SyncTable::CommandRecv", "CommandRecv()  datagram exception size :%d", length);
    if (length <= kLongestReply && !ReceivePart(datagram.data() + kDatagramHeaderSize, length)) return false;
    if (length == 0) {
        State::m_CommandTimeMs = platform::MillisecondClock() - State::m_CommandTimeMs;
        return true;
    }
    const int code = datagram[kExceptionCodeOffset];
    ZEL_LOG(m_Logger, kLogError, "SyncTable::CommandRecv", "%s", SyncTableExceptionText(code).text);
    if (code == kExceptionBadIndex) m_State.m_LastException = kExceptionBadIndex;
    return false;
}

bool SyncTable::ReceivePart(unsigned char* into, int length) {
    int received = 0;
    return ReceiveBytes(*m_Camera, m_ExchangeLock, into, length, received, [this](int bytes_to_recv) {
        ZEL_LOG(m_Logger, kLogTrace, "SyncTable::CommandRecv", "calling m_Camera->RecvData(bytes_to_recv:%d)",
                bytes_to_recv);
    });
}

}  // namespace zel
