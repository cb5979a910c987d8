// What the driver does inside callbacks, and calls that are inside when something is closed.
#include "tests/system/LifetimeDriver.h"

namespace zel::test {

namespace {
constexpr const char* kWhatNames[] = {"search", "GetCamera", "Open",    "Close",         "Stop",
                                      "Start",  "clear",     "replace", "ZelSDK::Close", "zel_destroy_sdk"};
constexpr int kCountless = 0;
}  // namespace

void LifetimeDriver::CallInside(What what, CallbackKind kind) {
    while (!m_Go) std::this_thread::yield();
    m_Object = nullptr;
    if (kind != kConnect) {
        m_Object = Camera().object;
    } else if (what >= kOpen && what <= kStart) {
        m_Object = m_Sdk->GetCamera(m_Callbacks.told);
        if (!m_Object) return;
    }
    const CallbackKind first = kind <= kScratchpad ? kImage : kControl;
    const CallbackKind last = kind <= kScratchpad ? kScratchpad : kControlEx;
    switch (what) {
        case kSearch:
            m_Answer = Search();
            break;
        case kGet:
            m_Object = m_Sdk->GetCamera(m_Number);
            break;
        case kOpen:
            m_Answer = m_Object->Open();
            break;
        case kClose:
            m_Answer = m_Object->Close();
            if (m_Alone && kind <= kScratchpad) Set().SetOver(true);
            break;
        case kStop:
            m_Answer = m_Object->Stop();
            if (m_Alone && kind <= kScratchpad) Set().SetOver(true);
            break;
        case kStart:
            Set().SetOver(false);
            m_Answer = m_Object->Start();
            break;
        case kClear:
        case kReplace:
            if (kind == kConnect) {
                zel_set_camera_connect_callback(nullptr, nullptr);
            } else if (what == kClear) {
                LifetimeCallbacks::Clear(m_Object);
            } else {
                m_Callbacks.Install(m_Object, m_Replacement);
            }
            if (m_Alone && kind < kText) Set().SetOver(true, first, last);
            break;
        case kSdkClose:
            m_Answer = m_Sdk->Close() && !m_Sdk->Open();
            break;
        default:
            zel_destroy_sdk(m_Sdk);
            m_Answer = 1;
    }
}

// Makes the callback that was planned come.
void LifetimeDriver::Bring(CallbackKind kind) {
    if (kind <= kScratchpad) {
        Launch(kCountless);
    } else if (kind == kText) {
        Object().SetTextCommand("info");
    } else {
        const bool plugs = kind == kConnect || (kind == kControl && Roll(2) == 0);
        Control(!plugs ? "event # 2" : Camera().plugged ? "unplug #" : "plug #");
        if (plugs && Camera().plugged) {
            m_Model.Unplugged(Camera());
        } else if (plugs) {
            m_Model.Plugged(m_At);
        }
    }
    m_Go = true;
}

void LifetimeDriver::DoInside() {
    auto kind = Working() ? static_cast<CallbackKind>(Roll(kCallbackKinds)) : kConnect;
    if (kind == kScratchpad && m_At != LifetimeModel::kColor) kind = kImage;
    if (kind == kConnect && !Tellable()) kind = kText;
    auto what = static_cast<What>(Roll(Roll(4) == 0 ? kWhats : kSdkClose));
    if (kind == kConnect && Camera().plugged && m_Model.At(m_Model.Told(Camera())) != m_At) what = kSearch;
    const std::string name = std::string("inside ") + kCallbackNames[kind] + ": " + kWhatNames[what];
    m_Watchdog.Note("  " + name);
    ++m_Counts[name];
    const bool overlapping = !m_Alone || Roll(3) == 0;
    if (what == kStart) GiveBack();  // the pool may be another one then
    if (kind <= kScratchpad) {
        GiveBack();
        DoStop();
        Object().FreeAllPendingImages();
    }
    m_Number = static_cast<int>(Roll(LifetimeModel::kNumbers));
    m_Go = overlapping || kind > kScratchpad;
    Callback& callback = kind == kConnect ? m_ConnectSet.of[kConnect] : Set().of[kind];
    const bool ends = what >= kSdkClose;
    const auto bring = [&] {
        m_Callbacks.Plan(callback, [=, this] { CallInside(what, kind); });
        Bring(kind);
        return WaitFor("the callback's end", [&] { return m_Callbacks.Done(); }) || !m_Callbacks.TakeBack();
    };
    bool came = true;
    if (ends) {
        Ending(what == kDestroy, [&] {
            came = bring();
            if (came)
                WaitFor(
                    "the callback's return", [&] { return callback.inside == 0; }, true);
        });
    } else {
        came = bring();
    }
    if (!came) return;
    WaitFor(
        "the planned call", [&] { return m_Callbacks.Done(); }, true);
    CheckInside(what, kind, overlapping && kind <= kScratchpad);
}

void LifetimeDriver::CheckInside(What what, CallbackKind kind, bool overlapping) {
    ModelCamera& camera = Camera();
    const std::string where = std::string(" inside the ") + kCallbackNames[kind] + " callback";
    const auto answer = [&](bool expected) {
        Expect((m_Answer != 0) == expected, kWhatNames[what] + where + (m_Answer ? " is true" : " is false"));
    };
    if (kind == kConnect && what >= kOpen && what <= kStart) {
        Met(m_At, m_Object);
        if (!m_Object) return;
    }
    switch (what) {
        case kSearch:
            Searched(m_Answer);
            break;
        case kGet:
            Handed(m_Model.At(m_Number), m_Object);
            break;
        case kOpen:
            if (!overlapping) answer(camera.open || camera.plugged);
            if (kind == kConnect) camera.open = m_Answer != 0;
            break;
        case kClose:
            answer(true);
            camera.Closed();
            break;
        case kStop:
            if (camera.open && !overlapping) answer(camera.plugged);
            break;
        case kStart:
            answer(kind > kScratchpad && camera.open && camera.plugged);
            if (m_Answer) camera.allocated = camera.buffers;
            break;
        case kClear:
        case kReplace:
            if (kind == kConnect) return void(m_Callbacks.InstallConnect(m_ConnectSet));
            m_Callbacks.Install(camera.object, Set());
            break;
        default:
            answer(true);
            return Ended(what == kDestroy);
    }
    if (kind == kConnect) return;
    if (kind <= kScratchpad && what != kClose) camera.allocated = camera.buffers;
    DoStop();
    int open = 0;
    Object().IsOpen(&open);
    Expect(camera.unsure || (open != 0) == camera.open, std::string(open ? "open" : "closed") + " after it");
}

// Closes the camera or the SDK while a call on another thread is inside: in a callback, or waiting for a reply.
void LifetimeDriver::DoCloseWithCallInside() {
    enum Call { kInImage, kInText, kInConnect, kLateReply, kNoReply };
    constexpr const char* kCalls[] = {"image callback", "text callback", "connect callback", "late reply", "no reply"};
    // Beside further threads an exchange does not tell that it is this call's.
    const auto call = static_cast<Call>(!m_Alone        ? Roll(kLateReply)
                                        : Roll(20) == 0 ? unsigned{kNoReply}
                                                        : Roll(kNoReply));
    const unsigned closes = call == kInConnect ? 1 + Roll(2) : Roll(3);
    m_Watchdog.Note(std::string("  ") + kCalls[call] +
                    (closes == 0   ? ": camera"
                     : closes == 1 ? ": SDK"
                                   : ": destroy"));
    GiveBack();
    DoStop();
    Object().FreeAllPendingImages();
    ZelCamera* const object = Camera().object;
    if (call == kInConnect) {
        if (!Tellable()) return;
        DoClose();
        Toggle();
    }
    std::atomic<bool> inside{false};
    std::atomic<bool> closing{false};
    const auto wait_inside = [&, object] {
        inside = true;
        while (!closing) std::this_thread::yield();
        object->GetParameterValue(ZEL_PARAM_EXPOSURE_TIME);
        object->Stop();
    };
    std::thread caller;
    const auto close_it = [&] {
        Callback& callback =
            call == kInConnect ? m_ConnectSet.of[kConnect] : Set().of[call == kInImage ? kImage : kText];
        if (call <= kInConnect) m_Callbacks.Plan(callback, wait_inside);
        std::string exchanges;
        Control("exchanges #", &exchanges);
        if (call == kInImage) {
            Expect(Launch(kCountless), "it does not start");
        } else if (call == kInText) {
            caller = std::thread([object] { object->SetTextCommand("info"); });
        } else if (call == kInConnect) {
            caller = std::thread([this] { Control("plug #"); });
        } else {
            Control(call == kLateReply ? "fault # delay 20" : "fault # no-reply times=0");
            caller = std::thread([object] { object->GetParameterValue(ZEL_PARAM_EXPOSURE_TIME); });
        }
        const bool came = WaitFor("the call that is inside", [&] {
            std::string now;
            return call <= kInConnect ? inside.load() : Control("exchanges #", &now) && now != exchanges;
        });
        closing = true;
        if (!came && call <= kInConnect && !m_Callbacks.TakeBack())
            WaitFor(
                "its end", [&] { return m_Callbacks.Done(); }, true);
        if (closes == 0) Expect(object->Close(), "it closes with a call inside");
        if (closes == 1) Expect(m_Sdk->Close(), "ZelSDK::Close with a call inside");
        if (closes == 2) zel_destroy_sdk(m_Sdk);
        Expect(callback.inside == 0, "a callback runs on after the end");
        if (caller.joinable()) caller.join();
    };
    Ending(closes == 2, close_it);
    if (closes != 0) return Ended(closes == 2);
    Control("fault # clear");
    Camera().Closed();
    DoClose();
}

}  // namespace zel::test
