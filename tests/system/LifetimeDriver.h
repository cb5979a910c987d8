// Does the operations of an application in any order, outside of callbacks and inside, and compares with the model.
#ifndef TESTS_SYSTEM_LIFETIMEDRIVER_H
#define TESTS_SYSTEM_LIFETIMEDRIVER_H

#include <algorithm>
#include <cstring>
#include <shared_mutex>

#include "tests/system/LifetimeOperations.h"

namespace zel::test {

class LifetimeDriver : public LifetimeOperations {
  public:
    LifetimeDriver(unsigned seed, Note note) : LifetimeOperations(seed, std::move(note)) { AfterEnd(); }

    // For other threads: the objects may be called while `calling` is held, the SDK while `using_sdk` is. They begin
    // nothing while `ending`, so that the driver gets its turn.
    std::atomic<bool> ending{false};
    std::shared_mutex calling, using_sdk;

    void Step() {
        m_At = static_cast<int>(Roll(LifetimeModel::kCameras));
        // Most can be done with a camera that works.
        for (int i = 0, most = Roll(4) ? LifetimeModel::kCameras : 0; i < most && !Working(); ++i)
            m_At = (m_At + 1) % LifetimeModel::kCameras;
        m_Connections = m_Callbacks.connections;
        m_Either = false;
        Do(Choose(&Operation::weight).name);
        for (const ModelCamera& camera : m_Model.cameras) {
            const bool known = camera.object && !camera.unsure;
            Expect(!known || IsOpen(*camera.object) == camera.open, camera.open ? "it is closed" : "it is open");
        }
        const int unwanted = m_Callbacks.unwanted;
        if (unwanted >= 0) Expect(false, std::string("a call after the end: ") + kPlaceNames[unwanted]);
    }

    // Every camera is opened, gives all its frames and is closed, whatever was before, and the SDK is destroyed.
    void CleanSession() {
        alone = true;
        for (const char* name : {"close SDK", "search", "get cameras"}) Do(name);
        for (m_At = 0; m_At < LifetimeModel::kCameras; ++m_At) {
            for (const char* name : {"open", "count records", "close"}) Do(name);
        }
        Do("destroy SDK");
    }

  private:
    using D = LifetimeDriver;
    enum Ends { kNothing, kCamera, kSdk, kSdkObject };
    struct Operation {
        const char* name;
        unsigned weight, inside;  // outside and inside of callbacks
        Ends ends;
        bool (D::*possible)();  // outside
        int (D::*call)();       // on any thread
        int (D::*after)();      // what it answers, and the model after it; null: true
    };
    static const Operation kOperations[18];

    const Operation& Choose(unsigned Operation::*weight) {
        std::vector<const Operation*> choice;
        for (const Operation& operation : kOperations) {
            if (weight == &Operation::inside || (this->*operation.possible)())
                choice.insert(choice.end(), operation.*weight, &operation);
        }
        return *choice[Roll(choice.size())];
    }
    void Do(const char* name) override {
        m_Note(name + (" " + std::to_string(m_At)));
        const auto named = [&](const Operation& operation) { return !std::strcmp(operation.name, name); };
        const Operation& operation = *std::find_if(std::begin(kOperations), std::end(kOperations), named);
        MayEnd(operation.ends, [&] { Call(operation, kOutside); });
        Compare(operation);
    }
    // Inside the connect callback an application looks for the camera that it was told of.
    bool LooksForIt(const Operation& operation) { return m_Place == kConnect && operation.possible == &D::Known; }
    void Call(const Operation& operation, Place place) {
        m_Place = place;
        m_Object = LooksForIt(operation) ? m_Sdk->GetCamera(m_Callbacks.told) : Camera().object;
        m_Answer = 0;
        if (m_Object || !LooksForIt(operation)) m_Answer = (this->*operation.call)();
    }
    void Compare(const Operation& operation) {
        if (LooksForIt(operation)) Met(m_At, m_Object);
        if (LooksForIt(operation) && !m_Object) return;
        const int answer = m_Answer;
        const int expected = operation.after ? (this->*operation.after)() : 1;
        Expect(answer == expected, operation.name + (" answers " + std::to_string(answer)));
    }
    void MayEnd(Ends ends, const std::function<void()>& what) {
        if (ends < kSdk) return what();
        ending = true;
        const std::unique_lock none_calls(calling);
        std::unique_lock none_uses(using_sdk, std::defer_lock);
        if (ends == kSdkObject) none_uses.lock();
        ending = false;
        for (auto& object : objects) object = nullptr;
        if (ends == kSdkObject) sdk = nullptr;
        what();
    }

    // An operation inside a callback, or one that ends something beside another thread's call: in a callback as well,
    // or waiting for a reply.
    int Inside() {
        const Operation& operation = Choose(&Operation::inside);
        const bool ends = operation.ends != kNothing;
        // Beside further threads an exchange does not tell that it is this call's.
        auto place = Working() ? static_cast<Place>(Roll(ends && alone ? kOutside : kExchange)) : kConnect;
        if (place == kScratchpad && m_At != LifetimeModel::kColor) place = kImage;
        if (place == kConnect && !Tellable()) place = kText;
        // The number that is told may lead to another camera.
        if (place == kConnect && Camera().plugged && m_Model.table[m_Model.Told(Camera())] != m_At) return 1;
        const bool frames = place <= kScratchpad;
        const bool may_be_beside = ends && !(place == kConnect && operation.ends == kCamera);
        const bool beside = place == kExchange || (may_be_beside && Roll(2) == 0);
        m_Note(std::string(beside ? "  beside " : "  inside ") + kPlaceNames[place] + ": " + operation.name);

        GiveBack();
        if (frames) Empty();
        m_Either = frames && !beside && (!alone || Roll(3) == 0);  // the start may still be under way
        std::atomic<bool> is_inside{false}, go{!beside && (m_Either || !frames)};
        ZelCamera* const object = Camera().object;
        std::string exchanges;
        Control("exchanges #", &exchanges);
        const bool plugs = place == kConnect || (place == kControl && Roll(2) == 0);
        const std::string command = place == kExchange ? Roll(8) ? "fault # delay 20" : "fault # no-reply times=0"
                                    : !plugs           ? "event # 2"
                                    : Camera().plugged ? "unplug #"
                                                       : "plug #";
        if (plugs) m_Model.Toggled(m_At);
        const auto bring = [&] {
            if (frames) Launch(*object, kCountless);
            if (place == kText) object->SetTextCommand("info");
            if (!frames && place != kText) Control(command);
            if (place == kExchange) object->GetParameterValue(ZEL_PARAM_EXPOSURE_TIME);
            if (!beside) go = true;
        };
        CallbackSet& set = place == kConnect ? m_Sets[kConnectSet] : Set();
        const bool callback = place != kExchange;
        const auto planned = [&] {
            is_inside = true;
            while (!go) std::this_thread::yield();
            if (!beside) return Call(operation, place);
            if (object) object->GetParameterValue(ZEL_PARAM_EXPOSURE_TIME), object->Stop();
        };
        const auto has_come = [&] {
            std::string now;
            return callback ? is_inside.load() : Control("exchanges #", &now) && now != exchanges;
        };
        bool came = false;
        MayEnd(operation.ends, [&] {
            if (callback) m_Callbacks.Plan(set, place, planned);
            std::thread caller(bring);
            came = WaitFor("the call that is inside", has_come) || (callback && !m_Callbacks.TakeBack());
            if (!came) caller.join();
            if (beside) {
                go = true;
                Call(operation, kOutside);
                Expect(!callback || set.inside[place] == 0, "a callback runs on after the end");
            }
            if (!came) return;
            caller.join();
            WaitFor(
                "its end", [&] { return !callback || (m_Callbacks.Done() && set.inside[place] == 0); }, true);
        });
        if (place == kExchange) Control("fault # clear");
        if (!came && !beside) return 1;
        Compare(operation);
        if (operation.ends >= kSdk || place == kConnect) return 1;
        if (frames && !ends) Camera().allocated = Camera().buffers;
        m_Either = false;
        Do("stop");
        return 1;
    }
};

inline const LifetimeDriver::Operation LifetimeDriver::kOperations[18] = {
    {"plug", 40, 0, kNothing, &D::Unplugged, &D::Toggle, &D::AfterToggle},
    {"unplug", 4, 0, kNothing, &D::Plugged, &D::Toggle, &D::AfterToggle},
    {"search", 20, 6, kNothing, &D::Always, &D::Search, &D::AfterSearch},
    {"get cameras", 50, 6, kNothing, &D::Always, &D::GetCameras, &D::AfterGetCameras},
    {"open", 60, 6, kNothing, &D::Known, &D::Open, &D::AfterOpen},
    {"start", 30, 6, kNothing, &D::Known, &D::Start, &D::AfterStart},
    {"take", 40, 0, kNothing, &D::Working, &D::Take, nullptr},
    {"free", 16, 0, kNothing, &D::Holding, &D::Free, nullptr},
    {"stop", 8, 6, kNothing, &D::Known, &D::Stop, &D::AfterStop},
    {"close", 5, 8, kCamera, &D::Known, &D::Close, &D::AfterClose},
    {"set buffers", 5, 0, kNothing, &D::Working, &D::SetBuffers, nullptr},
    {"retired", 8, 0, kNothing, &D::AnyRetired, &D::ProbeRetired, nullptr},
    {"count records", 6, 0, kNothing, &D::Working, &D::CountRecords, nullptr},
    {"vanish", 4, 0, kNothing, &D::Vanishable, &D::Vanish, nullptr},
    {"switch callbacks", 0, 8, kNothing, &D::Always, &D::SwitchCallbacks, &D::AfterSwitchCallbacks},
    {"close SDK", 1, 1, kSdk, &D::Always, &D::CloseSdk, &D::AfterEnd},
    {"destroy SDK", 1, 1, kSdkObject, &D::Always, &D::DestroySdk, &D::AfterEnd},
    {"inside", 60, 0, kNothing, &D::Callable, &D::Inside, nullptr},
};

}  // namespace zel::test

#endif
