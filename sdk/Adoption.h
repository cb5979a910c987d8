// Gives a transport its camera object: the one that it has, or a new one.
#ifndef SDK_ADOPTION_H
#define SDK_ADOPTION_H

#include <cstddef>

#include "sdk/InterfaceLibrary.h"

class ZelCamera;

namespace zel {

// A transport that a library has made for the camera with this number.
struct MadeTransport {
    ICameraInterface* camera_interface;  // may be null
    int library;
    DestroyCameraInterfaceFunction destroy_camera_interface;
    std::size_t number;
};

// The camera object has its place in the tables when these return: one thread at a time, so that none is put there that
// another thread has just retired.

// A search found the transport: it keeps the camera object that it talks to, or gets one, which is bound to it.
// `camera` is null when the object could not be made; false when the transport had to be destroyed again for want of
// memory.
bool AdoptFound(const MadeTransport& transport, const char* text, ZelCamera*& camera);

// The camera was plugged in: the transport gets a new camera object. One that it had is retired, and destroyed when no
// application can hold it; one in use stays and is the result. Null when there is none.
ZelCamera* AdoptConnected(const MadeTransport& transport, const char* text);

}  // namespace zel

#endif
