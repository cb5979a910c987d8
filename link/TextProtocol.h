// Text commands to the camera and its text replies, one command and one reply at a time.
//
// Datagram header, common to both protocols:
//
//    offset  size  field
//    0       1     datagram id: 9 = text from the host, 0 = parameter table
//    1       2     payload length, big-endian, counting what follows
//    3       n     payload
#ifndef LINK_TEXTPROTOCOL_H
#define LINK_TEXTPROTOCOL_H

#include "link/ExchangeLock.h"
#include "sdk/Logger.h"

class ICameraInterface;

namespace zel {

class TextProtocol {
  public:
    static constexpr int kLongestCommand = 252;  // characters: the length is sent in one byte
    static constexpr int kReplyCapacity = 4096;  // bytes that a buffer given to Recv or Exchange must hold

    // camera may be null. exchange_lock serialises this camera's exchanges of both protocols.
    TextProtocol(ICameraInterface* camera, const char* instance_name, ExchangeLock& exchange_lock);

    // Sends one command; text beyond 252 characters is cut off. False only without a transport, whatever the transport
    // answers. Takes no lock.
    bool Send(const char* text);

    // Receives one reply into `out` (kReplyCapacity bytes; null drops it). timeout_ms is accepted and ignored: header
    // and payload each have 5000 ms. True when a whole datagram of at most 4095 bytes came in time. Takes no lock.
    bool Recv(char* out, int timeout_ms);

    // Send and Recv as one exchange under the camera's exchange lock. Nothing is sent when exchanges are to end.
    bool Exchange(const char* text, char* out);

  private:
    ICameraInterface* m_Camera;
    Logger m_Logger;
    ExchangeLock& m_ExchangeLock;
};

}  // namespace zel

#endif
