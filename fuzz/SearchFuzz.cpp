// Plug-ins that tell anything: counts, texts without an end that belongs to them, names written over, transports that
// are null or shared, exports left out, events for cameras that are none. The SDK searches, is asked, and closes; every
// transport that was made is destroyed once.
#include <array>
#include <memory>
#include <optional>
#include <set>

#include "fuzz/Input.h"
#include "fuzz/StandIns.h"
#include "include/ZelCamera.h"
#include "include/ZelSDK.h"
#include "link/CameraInterfaceLibrary.h"
#include "tests/support/FakeClock.h"
#include "tests/support/ScriptedTransport.h"

using namespace zel;
using namespace zel::test;

namespace {

constexpr int kLibraries = 3;
constexpr const char* kFiles[kLibraries] = {"edt_camera_link.dll", "pleora_ebus.dll", "zel_usb.dll"};
constexpr int kTransports = 4;

class Transport final : public ScriptedTransport {
  public:
    void SetCameraObject(ZelCamera* camera) override { m_Camera = camera; }
    ZelCamera* GetCameraObject() override { return m_Camera; }

  private:
    ZelCamera* m_Camera = nullptr;
};

struct Library {
    int count = 0;
    unsigned null_transports = 0;  // bits
    unsigned char name_end = 0;
    std::vector<std::optional<std::string>> texts;
    std::array<std::unique_ptr<Transport>, kTransports> transports;
    std::set<ICameraInterface*> live;
    ConnectionEventCallback callback = nullptr;
    int context = 0;
};
Library s_Libraries[kLibraries];

const char* Text(const Library& library, int camera, int select = 0) {
    if (library.texts.empty()) return nullptr;
    const auto& text = library.texts[static_cast<unsigned>(camera + select) % library.texts.size()];
    return text ? text->c_str() : nullptr;
}

template <int n>
struct PlugIn {
    static int ZEL_CALL GetNumCameras() { return s_Libraries[n].count; }
    static ICameraInterface* ZEL_CALL Create(int camera, char* name) {
        Library& library = s_Libraries[n];
        if (library.name_end) std::fill_n(name, 64, static_cast<char>(library.name_end));
        const auto place = static_cast<unsigned>(camera) % kTransports;
        if (library.null_transports >> place & 1) return nullptr;
        if (!library.transports[place]) library.transports[place] = std::make_unique<Transport>();
        library.live.insert(library.transports[place].get());
        return library.transports[place].get();
    }
    static void ZEL_CALL Destroy(ICameraInterface* transport) { FuzzCheck(s_Libraries[n].live.erase(transport) == 1); }
    static const char* ZEL_CALL LibraryText() { return Text(s_Libraries[n], 1); }
    static const char* ZEL_CALL CameraText(int camera) { return Text(s_Libraries[n], camera); }
    static const char* ZEL_CALL Address(int camera, int select) { return Text(s_Libraries[n], camera, select); }
    static void ZEL_CALL Unload() { s_Libraries[n].callback = nullptr; }
    static void ZEL_CALL SetCallback(ConnectionEventCallback callback, int context) {
        s_Libraries[n].callback = callback;
        s_Libraries[n].context = context;
    }

    static fuzz::Exports MakeExports() {
        return {{"get_num_cameras", reinterpret_cast<void*>(&GetNumCameras)},
                {"create_camera_interface", reinterpret_cast<void*>(&Create)},
                {"destroy_camera_interface", reinterpret_cast<void*>(&Destroy)},
                {"get_camera_interface_type_str", reinterpret_cast<void*>(&LibraryText)},
                {"get_version_str", reinterpret_cast<void*>(&LibraryText)},
                {"get_camera_name", reinterpret_cast<void*>(&CameraText)},
                {"get_camera_serial_num_str", reinterpret_cast<void*>(&CameraText)},
                {"get_camera_port_type", reinterpret_cast<void*>(&CameraText)},
                {"get_camera_address_str", reinterpret_cast<void*>(&Address)},
                {"lib_unload", reinterpret_cast<void*>(&Unload)},
                {"set_camera_connection_event_callback", reinterpret_cast<void*>(&SetCallback)}};
    }
};

void Ask(ZelSDK& sdk, int number) {
    for (const char* text : {sdk.GetCameraName(number), sdk.GetCameraSerialNumStr(number),
                             sdk.GetCameraInterfaceTypeStr(number), sdk.GetCameraAddressStr(number, number & 7)})
        FuzzCheck(!text || std::string_view(text).size() < 1024);
    int open = 1;
    if (ZelCamera* camera = sdk.GetCamera(number)) FuzzCheck(camera->IsOpen(&open) && open == 0);
}

void Do(ZelSDK& sdk, fuzz::Input& input) {
    Library& library = s_Libraries[input.Below(kLibraries)];
    const unsigned kind = input.Below(6);
    if (kind == 0) FuzzCheck(sdk.GetNumberOfCameras() <= 8);
    if (kind == 1) library.count = input.Number();
    if (kind == 2) library.null_transports = input.Byte();
    if (kind == 3) Ask(sdk, input.Number());
    if (kind == 4) {
        const int context = input.Below(4) ? library.context : input.Number();
        if (library.callback) library.callback(static_cast<int>(input.Below(4)), input.Number(), context);
    }
    if (kind == 5) FuzzCheck(sdk.Close() && sdk.Open());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Exports s_All[kLibraries] = {PlugIn<0>::MakeExports(), PlugIn<1>::MakeExports(),
                                                    PlugIn<2>::MakeExports()};
    fuzz::Input input(data, size);
    fuzz::SetLogging(input.Byte() >= 0xE0);
    fuzz::Exports exports[kLibraries];
    for (int n = 0; n < kLibraries; ++n) {
        Library& library = s_Libraries[n] = {};
        exports[n] = s_All[n];
        if (const unsigned gone = input.Byte(); gone < exports[n].size())
            exports[n].erase(std::next(exports[n].begin(), gone));
        library.count = input.Number();
        library.name_end = static_cast<unsigned char>(input.Byte());
        for (unsigned texts = input.Below(4); texts > 0; --texts) {
            const unsigned kind = input.Byte();
            library.texts.emplace_back(std::string(kind & 2 ? 300 : 0, 'x') + std::string(input.Text()));
            if (kind & 1) library.texts.back().reset();
        }
        fuzz::SetStandIn(kFiles[n], &exports[n]);
    }
    FakeClock clock;
    ZelSDK* const sdk = zel_create_sdk();
    FuzzCheck(sdk->Open());
    zel_set_camera_connect_callback(
        [](int, int, const char* name, const char* serial, const char* type, void*) {
            for (const char* text : {name, serial, type}) FuzzCheck(!text || std::string_view(text).size() < 64);
        },
        nullptr);
    sdk->GetNumberOfCameras();
    for (int i = 0; i < 16 && !input.Ended(); ++i) Do(*sdk, input);
    FuzzCheck(get_version_str() != nullptr);
    zel_destroy_sdk(sdk);
    for (Library& library : s_Libraries) {
        FuzzCheck(library.live.empty());
        library.transports = {};
    }
    return 0;
}
