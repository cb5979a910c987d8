// The cameras of the network that were ever found, and which of them are there.
#ifndef GIGE_ROSTER_H
#define GIGE_ROSTER_H

#include <chrono>
#include <vector>

#include "devices/gige/GigeCamera.h"
#include "devices/kit/Plugin.h"

namespace zel::gige {

// Used on the caretaker's thread alone.
class Roster {
  public:
    Roster(kit::Cameras& cameras, std::weak_ptr<Caretaker> caretaker) : m_Cameras(cameras), m_Caretaker(caretaker) {}

    // What a look has found.
    void Update(const std::vector<FoundCamera>& found);
    // An open camera does not answer any more.
    void Lose(GigeCamera& camera);

  private:
    struct Known {
        FoundCamera facts;
        GigeCamera* camera;
        int number;
        bool plugged;
        int misses;  // looks in a row that did not find it
    };

    void Add(const FoundCamera& facts);
    void See(Known& known, const FoundCamera& facts);
    void Miss(Known& known);

    kit::Cameras& m_Cameras;
    const std::weak_ptr<Caretaker> m_Caretaker;
    std::vector<Known> m_Known;
};

}  // namespace zel::gige

#endif
