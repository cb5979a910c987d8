// What an application that has done these steps may rely on: which cameras a search finds, which camera object stands
// behind which number, and what state it is in.
#ifndef TESTS_SYSTEM_LIFETIMEMODEL_H
#define TESTS_SYSTEM_LIFETIMEMODEL_H

#include <algorithm>
#include <limits>
#include <vector>

#include "include/ZelCamera.h"

namespace zel::test {

struct ModelCamera {
    static constexpr int kEndless = std::numeric_limits<int>::max();

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
    std::vector<ZelImage*> held{};

    bool Working() const { return object && open && plugged && !unsure; }
    void Closed() {
        open &= unsure;
        due = allocated = 0;
        held.clear();
    }
};

struct LifetimeModel {
    static constexpr int kNone = -1, kLeft = -2, kLibraries = 3, kUsb = 2, kColor = 2, kCameras = 4, kNumbers = 8;

    ModelCamera cameras[kCameras] = {{0, 0}, {1, 0}, {2, 0}, {2, 1}};
    std::vector<ZelCamera*> retired;  // objects that were replaced; all that they may do is answer false
    int table[kNumbers] = {kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone};  // camera behind each number
    int first[kLibraries] = {kNone, kNone, kNone};                                   // number of its first camera
    bool heard[kLibraries] = {};  // whether the library tells the SDK of plugging

    // The number that an event of this camera is reported with.
    int Told(const ModelCamera& camera) const { return first[camera.library] + camera.index; }
    bool Retired(const ZelCamera* object) const {
        return std::find(retired.begin(), retired.end(), object) != retired.end();
    }

    // Result: how many cameras a search finds.
    int Search() {
        std::fill_n(table, kNumbers, kNone);
        int number = 0;
        for (int library = 0; library < kLibraries; ++library) {
            first[library] = number;
            for (int i = 0; i < kCameras; ++i) {
                if (cameras[i].library == library && cameras[i].plugged) table[number++] = i;
            }
            if (number > first[library] || library == kUsb) {
                heard[library] = true;
                continue;
            }
            first[library] = kNone;
            for (ModelCamera& camera : cameras) camera.unsure |= camera.library == library;
        }
        return number;
    }
    // A camera that is not open comes back with a new object.
    void Toggled(int at) {
        ModelCamera& camera = cameras[at];
        camera.plugged = !camera.plugged;
        if (!camera.plugged) camera.due = 0;
        const int told = Told(camera);
        if (!camera.plugged || camera.open || camera.unsure || !heard[camera.library] || told >= kNumbers) return;
        // With an unplugged camera before it in its library the search had it at another number, where it is no more.
        std::replace(table, table + kNumbers, at, +kLeft);
        table[told] = at;
        Met(at, nullptr);
    }
    // The camera has this object from now on.
    void Met(int at, ZelCamera* object) {
        ModelCamera& camera = cameras[at];
        if (camera.object == object) return;
        if (camera.object) retired.push_back(camera.object);
        camera = {camera.library, camera.index, camera.plugged, camera.unsure, object};
    }
};

}  // namespace zel::test

#endif
