// Every camera object that the manager made and has not destroyed yet, with what it takes to destroy it. An object
// stays here when another one takes its place in the tables, so that closing the SDK finds all of them.
//
// The newest object made around a transport is the one that the transport talks to; older ones are retired. Not locked:
// the register is part of the tables.
#ifndef SDK_CAMERAREGISTER_H
#define SDK_CAMERAREGISTER_H

#include <vector>

#include "link/CameraInterfaceLibrary.h"

class ZelCamera;

namespace zel {

struct RegisteredCamera {
    ZelCamera* camera = nullptr;  // null when only the transport could be made
    ICameraInterface* camera_interface = nullptr;
    DestroyCameraInterfaceFunction destroy_camera_interface = nullptr;
    int library = 0;          // index of the library that made the transport
    bool retired = false;     // another object has the transport
    bool handed_out = false;  // an application may hold a pointer to the object
};

class CameraRegister {
  public:
    // False when memory ran out.
    bool Add(const RegisteredCamera& entry);
    void Remove(const ZelCamera* camera);
    // The camera object that this transport talks to, or null.
    ZelCamera* Current(const ICameraInterface* camera_interface) const;
    // Whether any entry has this transport, those being closed included.
    bool Knows(const ICameraInterface* camera_interface) const;
    void Retire(const ZelCamera* camera);
    void HandOut(const ZelCamera* camera);
    bool HandedOut(const ZelCamera* camera) const;
    // Calls visit(camera object) for each, those being closed included.
    template <class Visit>
    void ForEach(Visit visit) const {
        for (const std::vector<RegisteredCamera>* list : {&m_Entries, &m_Closing}) {
            for (const RegisteredCamera& entry : *list) {
                if (entry.camera) visit(entry);
            }
        }
    }
    // Takes all entries out of the register and lists them for whoever closes them: those of `first`, in that order,
    // then the others in the order of their making. The list stays until the next call or ForgetClosed().
    const std::vector<RegisteredCamera>& CloseAll(ZelCamera* const* first, int first_count);
    void ForgetClosed() { m_Closing.clear(); }
    // The object is about to be deleted: nobody comes across it any more.
    void Forget(const ZelCamera* camera);

  private:
    std::vector<RegisteredCamera> m_Entries;
    std::vector<RegisteredCamera> m_Closing;
};

}  // namespace zel

#endif
