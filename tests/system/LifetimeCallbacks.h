// The callbacks of a random test: they count themselves, tell of calls that must not come any more, and one of them at
// a time does something inside that was planned.
#ifndef TESTS_SYSTEM_LIFETIMECALLBACKS_H
#define TESTS_SYSTEM_LIFETIMECALLBACKS_H

#include <array>
#include <atomic>
#include <functional>

#include "include/ZelCameraInternal.h"
#include "include/ZelSDK.h"

namespace zel::test {

enum CallbackKind { kImage, kNotification, kScratchpad, kControl, kControlEx, kText, kConnect, kCallbackKinds };
inline constexpr const char* kCallbackNames[] = {"image", "notification", "scratchpad", "control", "extended control",
                                                 "text",  "connect"};

class LifetimeCallbacks;

struct Callback {
    LifetimeCallbacks* all = nullptr;
    int kind = kImage;
    std::atomic<int> inside{0};
    std::atomic<bool> over{false};  // from here on a call is a fault
};

// Of one camera; the connect callback has one of its own. They outlive the SDK.
struct CallbackSet {
    std::array<Callback, kCallbackKinds> of;

    void SetOver(bool over, CallbackKind first = kImage, CallbackKind last = kNotification) {
        for (int kind = first; kind <= last; ++kind) of[static_cast<std::size_t>(kind)].over = over;
    }
    int Inside(CallbackKind first = kImage, CallbackKind last = kScratchpad) const {
        int inside = 0;
        for (int kind = first; kind <= last; ++kind) inside += of[static_cast<std::size_t>(kind)].inside;
        return inside;
    }
};

class LifetimeCallbacks {
  public:
    std::atomic<long> calls{0};
    std::atomic<long> frames{0};
    std::atomic<int> unwanted{-1};               // kind of a callback that was called although it is over
    std::atomic<int> connections{0}, told{-99};  // connect callbacks, and the number that the last one told

    void Install(ZelCamera* object, CallbackSet& set) {
        Own(set);
        object->SetImageCallback(OnImage, &set.of[kImage]);
        object->SetImageNotificationCallback(OnNotification, &set.of[kNotification]);
        static_cast<ZelCameraInternal*>(object)->SetScratchpadCallback(OnScratchpad, &set.of[kScratchpad]);
        object->SetCameraControlCallbackEx(OnControlEx, &set);
        object->SetCameraControlCallback(OnControl, &set);
        object->SetTextCommandCallback(OnText, &set.of[kText]);
    }
    static void Clear(ZelCamera* object) {
        object->SetImageCallback(nullptr, nullptr);
        object->SetImageNotificationCallback(nullptr, nullptr);
        static_cast<ZelCameraInternal*>(object)->SetScratchpadCallback(nullptr, nullptr);
        object->SetCameraControlCallbackEx(nullptr, nullptr);
        object->SetCameraControlCallback(nullptr, nullptr);
        object->SetTextCommandCallback(nullptr, nullptr);
    }
    bool InstallConnect(CallbackSet& set) {
        Own(set);
        return zel_set_camera_connect_callback(OnConnect, &set.of[kConnect]) != 0;
    }

    // The next call of this callback does `what`.
    void Plan(Callback& callback, std::function<void()> what) {
        m_Planned = std::move(what);
        m_PlannedIn = &callback;
        m_State = kWaiting;
    }
    bool Done() const { return m_State == kDone; }
    // Takes the plan back; false when it is being done or was.
    bool TakeBack() {
        int waiting = kWaiting;
        return m_State.compare_exchange_strong(waiting, kIdle);
    }

  private:
    enum { kIdle, kWaiting, kDoing, kDone };

    void Own(CallbackSet& set) {
        for (int kind = 0; kind < kCallbackKinds; ++kind) {
            Callback& callback = set.of[static_cast<std::size_t>(kind)];
            if (!callback.all) callback.all = this, callback.kind = kind;  // before the first call of it
            callback.over = false;
        }
    }
    void Called(Callback& callback) {
        ++calls;
        ++callback.inside;
        if (callback.over) unwanted = callback.kind;
        int waiting = kWaiting;
        if (m_State == kWaiting && m_PlannedIn == &callback && m_State.compare_exchange_strong(waiting, kDoing)) {
            m_Planned();
            m_State = kDone;
        }
    }
    template <class After>
    static void Run(void* context, After after) {
        Callback& callback = *static_cast<Callback*>(context);
        callback.all->Called(callback);
        after();
        --callback.inside;
    }
    // A frame stays readable in its callback, whatever happened to the camera in there.
    static void Read(const ZelImage* image) {
        static std::atomic<unsigned> sum{0};
        sum += image->pixels[0] + image->pixels[image->w * image->h - 1] + image->image_number;
    }

    static void ZEL_CALL OnImage(ZelImage* image, void* context) {
        Run(context, [&] { Read(image); });
        ++static_cast<Callback*>(context)->all->frames;
    }
    static int ZEL_CALL OnScratchpad(ZelColorImage* image, void* context) {
        Run(context, [&] { Read(image); });
        return 0;
    }
    static void ZEL_CALL OnNotification(int, void* context) {
        Run(context, [] {});
    }
    static void ZEL_CALL OnControl(int, void* context) {
        Run(&static_cast<CallbackSet*>(context)->of[kControl], [] {});
    }
    static void ZEL_CALL OnControlEx(int, const ZelCameraControlRecord*, void* context) {
        Run(&static_cast<CallbackSet*>(context)->of[kControlEx], [] {});
    }
    static void ZEL_CALL OnText(const char*, void* context) {
        Run(context, [] {});
    }
    static void ZEL_CALL OnConnect(int, int number, const char*, const char*, const char*, void* context) {
        auto& all = *static_cast<Callback*>(context)->all;
        all.told = number;
        Run(context, [] {});
        ++all.connections;
    }

    std::function<void()> m_Planned;
    std::atomic<Callback*> m_PlannedIn{nullptr};
    std::atomic<int> m_State{kIdle};
};

}  // namespace zel::test

#endif
