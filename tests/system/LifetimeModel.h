// What an application that has done these steps may rely on: which cameras a search finds, which camera object stands
// behind which number, and what state it is in.
#ifndef TESTS_SYSTEM_LIFETIMEMODEL_H
#define TESTS_SYSTEM_LIFETIMEMODEL_H

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "include/ZelCamera.h"

namespace zel::test {

struct ModelCamera {
    static constexpr int kEndless = std::numeric_limits<int>::max();

    ModelCamera(int of_library, int index_in_library) : library(of_library), index(index_in_library) {}

    int library;
    int index;  // within the library
    bool plugged = true;
    // Its library was shut down by a search: until the next one nothing is promised but that the object is there.
    bool unsure = false;
    ZelCamera* object = nullptr;  // null: to be taken with GetCamera
    bool open = false;
    int due = 0;        // frames that are still to come, at least
    int buffers = 8;    // as set
    int allocated = 0;  // as of the last start; 0: unknown
    std::vector<ZelImage*> held;

    bool Usable() const { return object && plugged && !unsure; }
    void Closed() {
        open = false;
        due = allocated = 0;
        held.clear();
    }
    void Forget() {
        object = nullptr;
        buffers = 8;
        Closed();
    }
};

class LifetimeModel {
  public:
    static constexpr int kNone = -1, kLeft = -2, kLibraries = 3, kUsb = 2, kColor = 2, kCameras = 4, kNumbers = 8;

    std::array<ModelCamera, kCameras> cameras{ModelCamera(0, 0), ModelCamera(1, 0), ModelCamera(2, 0),
                                              ModelCamera(2, 1)};
    std::vector<ZelCamera*> retired;  // objects that were replaced; all that they may do is answer false

    int At(int number) const { return m_Table[static_cast<std::size_t>(number)]; }
    // Whether the library tells the SDK of plugging.
    bool Heard(const ModelCamera& camera) const { return m_Heard[static_cast<std::size_t>(camera.library)]; }
    // The number that an event of this camera is reported with.
    int Told(const ModelCamera& camera) const {
        return m_Offset[static_cast<std::size_t>(camera.library)] + camera.index;
    }

    // All plugged in, none known.
    void Opened() {
        for (ModelCamera& camera : cameras) {
            camera.Forget();
            camera.plugged = true;
            camera.unsure = false;
        }
        retired.clear();
        m_Table.fill(kNone);
        m_Offset.fill(kNone);
        m_Heard.fill(false);
    }

    // Result: how many cameras a search finds.
    int Search() {
        m_Table.fill(kNone);
        int number = 0;
        for (int library = 0; library < kLibraries; ++library) {
            const int first = number;
            for (int i = 0; i < kCameras; ++i) {
                ModelCamera& camera = cameras[static_cast<std::size_t>(i)];
                if (camera.library != library) continue;
                if (camera.plugged) m_Table[static_cast<std::size_t>(number++)] = i;
            }
            const bool stays = number > first || library == kUsb;
            m_Offset[static_cast<std::size_t>(library)] = stays ? first : kNone;
            if (stays) m_Heard[static_cast<std::size_t>(library)] = true;
            for (ModelCamera& camera : cameras) {
                if (camera.library == library && !stays) camera.unsure = true;
            }
        }
        return number;
    }

    void Unplugged(ModelCamera& camera) {
        camera.plugged = false;
        camera.due = 0;
    }
    // A camera that is not open comes back with a new object.
    void Plugged(int number_of_camera) {
        ModelCamera& camera = cameras[static_cast<std::size_t>(number_of_camera)];
        camera.plugged = true;
        const int told = Told(camera);
        if (camera.open || camera.unsure || !Heard(camera) || told < 0 || told >= kNumbers) return;
        // With an unplugged camera before it in its library the search had it at another number, where it is no more.
        std::replace(m_Table.begin(), m_Table.end(), number_of_camera, kLeft);
        m_Table[static_cast<std::size_t>(told)] = number_of_camera;
        if (camera.object) retired.push_back(camera.object);
        camera.Forget();
    }
    bool Retired(const ZelCamera* object) const {
        return std::find(retired.begin(), retired.end(), object) != retired.end();
    }

  private:
    std::array<int, kNumbers> m_Table{};     // camera behind each number
    std::array<int, kLibraries> m_Offset{};  // number of a library's first camera
    std::array<bool, kLibraries> m_Heard{};
};

}  // namespace zel::test

#endif
