#include "tests/system/LifetimeDriver.h"

#include <set>

namespace zel::test {

namespace {
constexpr std::size_t kMostHeld = 2;
constexpr int kCountless = 0;
}  // namespace

const LifetimeDriver::Action LifetimeDriver::kActions[] = {
    {"plug", 24, &LifetimeDriver::Unplugged, &LifetimeDriver::Toggle},
    {"unplug", 4, &LifetimeDriver::Plugged, &LifetimeDriver::Toggle},
    {"search", 16, &LifetimeDriver::Always, &LifetimeDriver::DoSearch},
    {"get cameras", 30, &LifetimeDriver::Always, &LifetimeDriver::DoGetCameras},
    {"open", 40, &LifetimeDriver::Known, &LifetimeDriver::DoOpen},
    {"start", 30, &LifetimeDriver::Known, &LifetimeDriver::DoStart},
    {"take", 40, &LifetimeDriver::Working, &LifetimeDriver::DoTake},
    {"free", 16, &LifetimeDriver::Holding, &LifetimeDriver::DoFree},
    {"stop", 8, &LifetimeDriver::Known, &LifetimeDriver::DoStop},
    {"close", 5, &LifetimeDriver::Known, &LifetimeDriver::DoClose},
    {"set buffers", 5, &LifetimeDriver::Working, &LifetimeDriver::DoSetBuffers},
    {"retired", 8, &LifetimeDriver::AnyRetired, &LifetimeDriver::DoProbeRetired},
    {"count records", 6, &LifetimeDriver::Working, &LifetimeDriver::DoCountRecords},
    {"reopen SDK", 1, &LifetimeDriver::Always, &LifetimeDriver::DoReopen},
    {"recreate SDK", 1, &LifetimeDriver::Always, &LifetimeDriver::DoRecreate},
    {"vanish", 4, &LifetimeDriver::Known, &LifetimeDriver::DoVanish},
    {"inside", 60, &LifetimeDriver::Callable, &LifetimeDriver::DoInside},
    {"close, call inside", 4, &LifetimeDriver::Working, &LifetimeDriver::DoCloseWithCallInside},
};

LifetimeDriver::LifetimeDriver(unsigned seed, bool alone, Watchdog& watchdog)
    : m_Alone(alone), m_Watchdog(watchdog), m_Random(seed) {
    constexpr const char* kNames[] = {"edt_camera_link.dll", "pleora_ebus.dll", "zel_usb.dll"};
    for (std::size_t i = 0; i < m_PlugIns.size(); ++i) {
        PlugIn& plug_in = m_PlugIns[i];
        plug_in.library = platform::LoadSharedLibrary(kNames[i]);
        plug_in.control = platform::FindFunction<ZelSimControlFunction>(plug_in.library, "zel_sim_control");
        plug_in.count = platform::FindFunction<GetNumCamerasFunction>(plug_in.library, "get_num_cameras");
    }
    Create();
}

void LifetimeDriver::Step() {
    m_At = static_cast<int>(Roll(LifetimeModel::kCameras));
    const auto weight = [&](const Action& action) { return (this->*action.possible)() ? action.weight : 0; };
    unsigned total = 0;
    for (const Action& action : kActions) total += weight(action);
    unsigned chosen = Roll(total);
    for (const Action& action : kActions) {
        const unsigned own = weight(action);
        if (chosen < own) {
            m_Watchdog.Note(action.name + (" " + std::to_string(m_At)));
            ++m_Counts[action.name];
            (this->*action.run)();
            break;
        }
        chosen -= own;
    }
    const int unwanted = m_Callbacks.unwanted;
    if (unwanted >= 0) Expect(false, std::string("a call after the end: ") + kCallbackNames[unwanted]);
}

void LifetimeDriver::PrintCounts() {
    for (const auto& [name, count] : m_Counts) std::printf("%s %d, ", name.c_str(), count);
    std::printf("callbacks %ld, frames in them %ld\n", m_Callbacks.calls.load(), m_Callbacks.frames.load());
}

bool LifetimeDriver::Control(const std::string& command, std::string* answer) {
    const std::size_t blank = command.find('#');
    char reply[256] = {};
    const std::string whole = std::string(command).replace(blank, 1, std::to_string(Camera().index));
    const bool done =
        m_PlugIns[static_cast<std::size_t>(Camera().library)].control(whole.c_str(), reply, sizeof reply) >= 0;
    if (answer) *answer = reply;
    return done;
}

void LifetimeDriver::Expect(bool holds, const std::string& what) {
    if (m_Alone && !holds) ADD_FAILURE() << what << ", camera " << m_At;
}

// Waits without an end for what must come (the watchdog has one). With other threads at the camera not all of it must.
bool LifetimeDriver::WaitFor(const char* what, const std::function<bool()>& holds, bool must) {
    m_Watchdog.Note(std::string("  waits: ") + what);
    for (int i = 0; !holds(); ++i) {
        if (!m_Alone && !must && i == 1000) return false;
        std::this_thread::yield();
    }
    return true;
}

// ---- SDK ----

void LifetimeDriver::Create() {
    m_Sdk = zel_create_sdk();
    Ended(false);
}

void LifetimeDriver::Ending(bool destroys, const std::function<void()>& end) {
    ending = true;
    const std::unique_lock none_calls(calling);
    std::unique_lock none_uses(using_sdk, std::defer_lock);
    if (destroys) none_uses.lock();
    ending = false;
    for (auto& object : objects) object = nullptr;
    if (destroys) sdk = nullptr;
    end();
}

// The SDK was closed or destroyed: opens it again.
void LifetimeDriver::Ended(bool destroyed) {
    if (destroyed) m_Sdk = zel_create_sdk();
    Expect(m_Sdk->GetNumberOfCameras() == 0, "a closed SDK finds no camera");
    Expect(!m_Sdk->GetCamera(0), "a closed SDK has no camera");
    Expect(zel_set_camera_connect_callback(nullptr, nullptr) == 0, "a closed SDK takes no callback");
    Expect(m_Sdk->Close(), "closing twice");
    EXPECT_TRUE(m_Sdk->Open());
    for (CallbackSet& set : m_Sets) Expect(set.Inside(kImage, kConnect) == 0, "no callback lives on");
    for (m_At = 0; m_At < LifetimeModel::kCameras; ++m_At) {
        Control("fault # clear");
        Control("plug #");
    }
    m_At = 0;
    m_Model.Opened();
    m_Callbacks.InstallConnect(m_ConnectSet);
    sdk = m_Sdk;
}

void LifetimeDriver::DoReopen() {
    Ending(false, [this] { Expect(m_Sdk->Close(), "ZelSDK::Close"); });
    for (CallbackSet& set : m_Sets) {
        Expect(set.Inside(kImage, kConnect) == 0, "a callback runs after ZelSDK::Close");
        set.SetOver(true, kImage, kConnect);
    }
    m_ConnectSet.SetOver(true, kConnect, kConnect);
    Ended(false);
}

void LifetimeDriver::Destroy() {
    Ending(true, [this] { zel_destroy_sdk(m_Sdk); });
    m_Sdk = nullptr;
}

void LifetimeDriver::DoRecreate() {
    Destroy();
    Ended(true);
}

int LifetimeDriver::Search() {
    for (ModelCamera& camera : m_Model.cameras) {
        // A library that was shut down may have begun anew; it alone knows.
        if (camera.unsure) camera.plugged = m_PlugIns[static_cast<std::size_t>(camera.library)].count() > 0;
    }
    return m_Sdk->GetNumberOfCameras();
}

void LifetimeDriver::Searched(int found) {
    const int expected = m_Model.Search();
    Expect(found == expected, "a search finds " + std::to_string(found) + ", not " + std::to_string(expected));
}

// GetCamera gave this object.
void LifetimeDriver::Met(int number, ZelCamera* object) {
    ModelCamera& camera = m_Model.cameras[static_cast<std::size_t>(number)];
    Expect(object, "the camera has an object");
    if (!object) return;
    Expect(!m_Model.Retired(object), "GetCamera gives an object that was replaced");
    Expect(!camera.object || camera.unsure || camera.object == object, "the camera keeps its object");
    if (object != camera.object) {
        if (camera.object) m_Model.retired.push_back(camera.object);
        camera.Forget();
        camera.object = object;
        m_Callbacks.Install(object, m_Sets[static_cast<std::size_t>(number)]);
    }
    objects[static_cast<std::size_t>(number)] = object;
    if (!camera.unsure) return;
    object->Close();
    camera.Closed();
    camera.unsure = false;
}

// GetCamera answered this for a number behind which this camera is.
void LifetimeDriver::Handed(int camera, ZelCamera* object) {
    if (camera >= 0) return Met(camera, object);
    Expect(!object || camera == LifetimeModel::kLeft, "GetCamera gives an object that no search found");
    Expect(!m_Model.Retired(object), "GetCamera gives an object that was replaced, at its old number");
}

void LifetimeDriver::DoGetCameras() {
    for (int number = 0; number < LifetimeModel::kNumbers; ++number) {
        ZelCamera* const object = m_Sdk->GetCamera(number);
        Handed(m_Model.At(number), object);
    }
}

// ---- Plugging ----

void LifetimeDriver::Toggle() {
    ModelCamera& camera = Camera();
    const bool told = Tellable();
    const int before = m_Callbacks.connections;
    const bool done = Control(camera.plugged ? "unplug #" : "plug #");
    Expect(done || camera.unsure, "the command");
    if (camera.plugged) {
        m_Model.Unplugged(camera);
    } else {
        m_Model.Plugged(m_At);
    }
    if (!told) return;
    Expect(m_Callbacks.connections == before + 1, "the connect callback comes once");
}

void LifetimeDriver::DoVanish() {
    ModelCamera& camera = Camera();
    if (!camera.plugged || !Tellable()) return;
    const int before = m_Callbacks.connections;
    const unsigned moment = camera.open ? Roll(4) : 4;
    GiveBack();
    constexpr const char* kFaults[] = {"start", "stop", "close", "frame", "connect"};
    Control("fault # unplug-" + std::string(kFaults[moment]));
    switch (moment) {
        case 0:
            Expect(!Object().Start(), "a start of a camera that is going");
            break;
        case 1:
            Expect(!Object().Stop(), "a stop of a camera that is going");
            break;
        case 2:
            DoClose();
            break;
        case 3:
            Object().Stop();
            Object().FreeAllPendingImages();
            Launch(kCountless);
            break;
        default:
            Expect(!Object().Open(), "a camera that is going opens");
    }
    WaitFor("the camera's disconnection", [&] { return m_Callbacks.connections > before; });
    m_Model.Unplugged(camera);
}

// ---- One camera ----

void LifetimeDriver::DoOpen() {
    ModelCamera& camera = Camera();
    const bool opened = Object().Open();
    if (camera.unsure && (camera.plugged || camera.open)) {
        camera.open |= opened;
        return;
    }
    Expect(opened == (camera.open || camera.plugged),
           opened ? "it opens" : "it does not open: error " + std::to_string(Object().GetLastError()));
    camera.open = opened;
}

// Sets the number of frames, 0 for no end, and starts.
bool LifetimeDriver::Launch(int frames) {
    Set().SetOver(false);
    Object().SetParameterValue(ZEL_PARAM_FRAME_COUNT, frames);
    return Object().Start();
}

void LifetimeDriver::DoStart() {
    ModelCamera& camera = Camera();
    const bool startable = Working();
    const int frames = static_cast<int>(Roll(2) * (1 + Roll(4)));
    if (camera.allocated != camera.buffers) GiveBack();
    if (startable && frames > 0) {
        DoStop();
        Object().FreeAllPendingImages();
    }
    const bool started = Launch(frames);
    Expect(camera.unsure || started == startable, started ? "it starts" : "it does not start");
    camera.due = !started ? 0 : frames > 0 ? frames : ModelCamera::kEndless;
    if (started) camera.allocated = camera.buffers;
}

ZelImage* LifetimeDriver::Take() {
    ModelCamera& camera = Camera();
    auto& color = static_cast<ZelColorCamera&>(Object());
    ZelImage* image = nullptr;
    const unsigned way = camera.due == ModelCamera::kEndless ? Roll(4) : Roll(2);
    const auto take = [&] {
        image = way == 0   ? Object().GetPendingImage()
                : way == 1 ? color.GetPendingColorImage()
                : way == 2 ? Object().GetLastPendingImage()
                           : color.GetLastPendingColorImage();
        return image || camera.due == 0;
    };
    if (!WaitFor("a frame", take) || !image) return nullptr;
    if (camera.due != ModelCamera::kEndless) camera.due = std::max(camera.due - 1, 0);
    return image;
}

void LifetimeDriver::DoTake() {
    std::vector<ZelImage*>& held = Camera().held;
    if (held.size() >= kMostHeld) GiveBack();
    ZelImage* const image = Take();
    if (!image) return;
    if (!m_Alone) return void(Object().FreeImage(image));
    Expect(std::find(held.begin(), held.end(), image) == held.end(), "a record is handed out once");
    held.push_back(image);
}

void LifetimeDriver::DoFree() {
    std::vector<ZelImage*>& held = Camera().held;
    ZelImage* const image = held.back();
    held.pop_back();
    Expect(image->w > 0 && std::count(image->pixels, image->pixels + image->w * image->h, 0xFFFF) >= 0,
           "the record is readable");
    Expect(Object().FreeImage(image) || Camera().unsure, "it is the application's");
    Expect(!Object().FreeImage(image) || Camera().due > 0, "it is the application's once");
}

void LifetimeDriver::GiveBack() {
    while (Holding()) DoFree();
}

// After a stop or close outside of callbacks.
void LifetimeDriver::Quiet() {
    Expect(Set().Inside() == 0, "a callback runs on after the end");
    if (m_Alone) Set().SetOver(true);
    Camera().due = 0;
}

void LifetimeDriver::DoStop() {
    const bool stopped = Object().Stop();
    Expect(Camera().unsure || !Camera().open || stopped == Camera().plugged, stopped ? "it stops" : "it does not stop");
    Quiet();
}

void LifetimeDriver::DoClose() {
    ModelCamera& camera = Camera();
    const std::vector<ZelImage*> held = camera.held;
    Expect(Object().Close() || camera.unsure, "it closes");
    Quiet();
    int open = 0;
    Object().IsOpen(&open);
    Expect(!open || camera.unsure, "it is closed");
    camera.held.clear();
    if (!camera.unsure) camera.Closed();
    for (ZelImage* image : held) Expect(!Object().FreeImage(image) || camera.unsure, "a record outlives its camera");
}

void LifetimeDriver::DoSetBuffers() {
    Camera().buffers = 6 + static_cast<int>(Roll(3));
    Expect(Object().SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, Camera().buffers), "it takes a number of buffers");
}

void LifetimeDriver::DoProbeRetired() {
    ZelCamera& object = *m_Model.retired[Roll(static_cast<unsigned>(m_Model.retired.size()))];
    int open = 0;
    Expect(!object.Open() && !object.Start(), "an object that was replaced opens or starts");
    Expect(!object.IsOpen(&open) || !open, "an object that was replaced is open");
    Expect(!object.GetPendingImage(), "an object that was replaced has frames");
}

// Every record of the pool can be had, and given back once.
void LifetimeDriver::DoCountRecords() {
    ModelCamera& camera = Camera();
    GiveBack();
    DoStop();
    Object().FreeAllPendingImages();
    Expect(Launch(kCountless), "it does not start to count");
    camera.due = ModelCamera::kEndless;
    camera.allocated = camera.buffers;
    std::set<ZelImage*> records;
    while (static_cast<int>(records.size()) < camera.buffers) {
        ZelImage* image = nullptr;
        if (!WaitFor("a record", [&] { return (image = Object().GetPendingImage()) != nullptr; })) break;
        records.insert(image);
    }
    DoStop();
    Expect(!Object().GetPendingImage(), "there are more records than were asked for");
    for (ZelImage* image : records) {
        Expect(Object().FreeImage(image), "a record is given back");
        Expect(!Object().FreeImage(image), "a record is given back twice");
    }
}

void LifetimeDriver::CleanSession() {
    DoReopen();
    m_Watchdog.Note("clean session");
    const int found = Search();
    EXPECT_EQ(found, LifetimeModel::kCameras);
    Searched(found);
    DoGetCameras();
    for (m_At = 0; m_At < LifetimeModel::kCameras; ++m_At) {
        ASSERT_TRUE(Known());
        EXPECT_TRUE(Object().Open());
        EXPECT_TRUE(Launch(kCountless));
        for (int frames = 0; frames < 5; ++frames) {
            ZelImage* image = nullptr;
            while (!(image = Object().GetPendingImage())) std::this_thread::yield();
            EXPECT_TRUE(Object().FreeImage(image));
        }
        EXPECT_TRUE(Object().Stop() && Object().Close());
    }
    m_At = 0;
}

}  // namespace zel::test
