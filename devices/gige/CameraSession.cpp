// Opening a camera, and what is set then.
#include "devices/gige/CameraSession.h"

#include <algorithm>
#include <cmath>

#include "devices/gige/Failure.h"
#include "devices/gige/LinkShares.h"
#include "include/ZelParameters.h"
#include "platform/Clock.h"

namespace zel::gige {

namespace {

constexpr guint16 kControlPort = 3956;
constexpr double kLongestSide = 65535;
constexpr double kMostSamples = 1 << 28;

// The address of this computer that packets to `address` leave from.
std::string LocalAddress(const std::string& address) {
    ErrorSlot error;
    const ObjectPtr<GSocket> socket(
        g_socket_new(G_SOCKET_FAMILY_IPV4, G_SOCKET_TYPE_DATAGRAM, G_SOCKET_PROTOCOL_UDP, error));
    const ObjectPtr<GSocketAddress> camera(g_inet_socket_address_new_from_string(address.c_str(), kControlPort));
    if (!socket || !camera || !g_socket_connect(socket.get(), camera.get(), nullptr, error)) {
        throw Failure(ZEL_ERROR_CAMERA_COMM_FAILURE, "there is no way to " + address);
    }
    const ObjectPtr<GSocketAddress> local(g_socket_get_local_address(socket.get(), error));
    if (!local) throw Failure(ZEL_ERROR_CAMERA_COMM_FAILURE, error.Text());
    const MemoryPtr<char> text(
        g_inet_address_to_string(g_inet_socket_address_get_address(G_INET_SOCKET_ADDRESS(local.get()))));
    return text.get();
}

}  // namespace

// Outlives the session where a signal is just under way.
struct CameraSession::LossNotice {
    platform::Mutex lock;
    std::function<void()> tell ZEL_GUARDED_BY(lock);
};

CameraSession::CameraSession(const std::string& address, std::function<void()> lost)
    : m_Address(address), m_Port(LocalAddress(address)), m_Camera(Open(address, m_Port)), m_Features(m_Camera.get()) {
    ListenForLoss(std::move(lost));
    try {
        SetDefaults();
        TakeFullFrames();
        ChooseFormat();
        NegotiatePackets();
        LinkShares::Get().Join(m_Port);
    } catch (...) {
        StopListening();
        throw;
    }
}

CameraSession::~CameraSession() {
    LinkShares::Get().Leave(m_Port);
    StopListening();
}

void CameraSession::StopListening() {
    const platform::ScopedLock lock(m_Notice->lock);
    m_Notice->tell = nullptr;
}

// A loss is told on a thread of the device, which holds the device meanwhile. Let go of last by that thread, the device
// would wait for it, which is for the thread itself, and GLib ends the process. So everybody else lets go first; what
// somebody never lets go of stays.
void CameraSession::EndCamera::operator()(ArvCamera* camera) const {
    constexpr int kMostLooks = 1000;
    GObject* const device = G_OBJECT(g_object_ref(arv_camera_get_device(camera)));
    g_object_unref(camera);
    const auto held = [&] { return g_atomic_int_get(&device->ref_count) > 1; };
    for (int look = 0; look < kMostLooks && held(); ++look) platform::SleepMilliseconds(5);
    if (!held()) g_object_unref(device);
}

CameraSession::CameraPtr CameraSession::Open(const std::string& address, const std::string& port) {
    const ObjectPtr<GInetAddress> local(g_inet_address_new_from_string(port.c_str()));
    const ObjectPtr<GInetAddress> remote(g_inet_address_new_from_string(address.c_str()));
    ErrorSlot error;
    ObjectPtr<ArvDevice> device(arv_gv_device_new(local.get(), remote.get(), error));
    if (!device) throw Failure(ZEL_ERROR_CAMERA_COMM_FAILURE, std::string("it does not answer: ") + error.Text());
    if (!arv_gv_device_is_controller(ARV_GV_DEVICE(device.get()))) {
        // Some cameras leave a stranger's good-bye unanswered.
        throw Failure(ZEL_ERROR_UNSUPPORTED, "another program controls it", std::move(device));
    }
    CameraPtr camera(arv_camera_new_with_device(device.get(), error));
    if (!camera) throw Failure(ZEL_ERROR_CAMERA_INVALID_DATA, error.Text());
    arv_camera_set_range_check_policy(camera.get(), ARV_RANGE_CHECK_POLICY_ENABLE);
    // Packets taken off the network card itself never come on the loopback, and need rights elsewhere.
    arv_camera_gv_set_stream_options(camera.get(), ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
    arv_camera_gv_set_packet_size_adjustment(camera.get(), ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER);
    return camera;
}

void CameraSession::ListenForLoss(std::function<void()> lost) {
    m_Notice = std::make_shared<LossNotice>();
    m_Notice->lock.lock();
    m_Notice->tell = [this, lost = std::move(lost)] {
        m_Features.BecomeSilent("the camera does not answer any more");
        Wake();
        lost();
    };
    m_Notice->lock.unlock();
    using Shared = std::shared_ptr<LossNotice>;
    const auto tell = [](ArvDevice*, void* data) {
        const Shared notice = *static_cast<Shared*>(data);
        const platform::ScopedLock lock(notice->lock);
        if (notice->tell) notice->tell();
    };
    const auto forget = [](void* data, GClosure*) { delete static_cast<Shared*>(data); };
    g_signal_connect_data(Device(), "control-lost", G_CALLBACK(static_cast<void (*)(ArvDevice*, void*)>(tell)),
                          new Shared(m_Notice), forget, GConnectFlags{});
}

// What a program before us left in the camera counts for nothing. The first line is the first write: a camera that
// answers questions and takes no commands is noticed here.
void CameraSession::SetDefaults() {
    m_Features.Prefer("TLParamsLocked", 0.0);
    if (!m_Features.Execute("AcquisitionStop")) {
        throw Failure(Gone() ? ZEL_ERROR_CAMERA_COMM_FAILURE : ZEL_ERROR_CAMERA_INVALID_DATA,
                      "it takes no commands: " + m_Features.LastError());
    }
    m_Features.Prefer("AcquisitionMode", "Continuous");
    m_Features.Do("switching triggers off", [](ArvCamera* c, GError** error) { arv_camera_clear_triggers(c, error); });
    m_Features.Prefer("TriggerSelector", "FrameStart");
    m_Features.Prefer("ExposureMode", "Timed");
    for (const char* const automatic : {"ExposureAuto", "GainAuto", "BlackLevelAuto", "BalanceWhiteAuto"}) {
        m_Features.Prefer(automatic, "Off");
    }
    m_Features.Prefer("GainSelector", "All");
    m_Features.Prefer("BlackLevelSelector", "All");
    if (m_Features.Has("ChunkModeActive")) {
        m_Features.Do("switching chunks off",
                      [](ArvCamera* c, GError** error) { arv_camera_set_chunk_mode(c, FALSE, error); });
    }
    for (std::string& source : m_Features.Choices("TriggerSource")) {
        if (source.starts_with("Line")) m_Lines.push_back(std::move(source));
    }
}

void CameraSession::TakeFullFrames() {
    for (const char* const factor :
         {"BinningHorizontal", "BinningVertical", "DecimationHorizontal", "DecimationVertical"}) {
        m_Features.Prefer(factor, 1.0);
    }
    m_Features.Prefer("OffsetX", 0.0);
    m_Features.Prefer("OffsetY", 0.0);
    const auto full = [&](const char* name) {
        const auto bounds = m_Features.BoundsOf(name);
        if (bounds) m_Features.SetNumber(name, bounds->maximum);
        const double side = m_Features.Number(name).value_or(0);
        if (side < 1 || side > kLongestSide) {
            throw Failure(ZEL_ERROR_CAMERA_INVALID_DATA,
                          std::string(name) + " makes no sense: " + std::to_string(static_cast<std::int64_t>(side)) +
                              (m_Features.LastError().empty() ? "" : " (" + m_Features.LastError() + ")"));
        }
        return static_cast<int>(side);
    };
    m_Width = full("Width");
    m_Height = full("Height");
    if (double{kMostSamples} < static_cast<double>(m_Width) * m_Height) {
        throw Failure(ZEL_ERROR_CAMERA_INVALID_DATA, "frames of that size are not taken");
    }
}

// What a format is called has to agree with its number, which tells the bits of a sample.
bool CameraSession::TryFormat(const PixelFormat& format) {
    if (!m_Features.SetText("PixelFormat", format.name)) return false;
    ArvPixelFormat number = 0;
    const bool read = m_Features.Do(
        "PixelFormat", [&](ArvCamera* camera, GError** error) { number = arv_camera_get_pixel_format(camera, error); });
    if (!read || static_cast<int>(number >> 16 & 255) != BitsOnLink(format.packing)) return false;
    const platform::ScopedLock lock(m_Lock);
    m_Format = format;
    return true;
}

void CameraSession::ChooseFormat() {
    const auto names = m_Features.Choices("PixelFormat");
    m_Formats = RankFormats(names);
    if (std::ranges::any_of(m_Formats, [&](const PixelFormat& format) { return TryFormat(format); })) return;
    std::string all;
    for (const std::string& name : names) all += (all.empty() ? "" : ", ") + name;
    throw Failure(Gone() ? ZEL_ERROR_CAMERA_COMM_FAILURE : ZEL_ERROR_CAMERA_INVALID_DATA,
                  "none of its pixel formats can be taken (" + (all.empty() ? "it names none" : all) + ")");
}

void CameraSession::SetFormat(const std::string& name) {
    const auto at = std::ranges::find(m_Formats, name, &PixelFormat::name);
    if (at == m_Formats.end()) throw Failure(ZEL_ERROR_INVALID_PARAMETER, "not one of its formats");
    {
        const platform::ScopedLock lock(m_Lock);
        if (m_Acquiring) throw Failure(ZEL_ERROR_UNSUPPORTED, "not while it is running");
    }
    const std::string before = Format().name;
    if (TryFormat(*at)) return;
    m_Features.SetText("PixelFormat", before);
    throw Failure(ZEL_ERROR_CAMERA_INVALID_DATA, "the camera does not take it: " + m_Features.LastError());
}

PixelFormat CameraSession::Format() const {
    const platform::ScopedLock lock(m_Lock);
    return m_Format;
}

// The largest packets that get through; where a camera can't try, those that it has.
void CameraSession::NegotiatePackets() {
    guint bytes = 0;
    m_Features.Do("packet size",
                  [&](ArvCamera* camera, GError** error) { bytes = arv_camera_gv_auto_packet_size(camera, error); });
    if (bytes == 0) {
        m_Features.Do("packet size",
                      [&](ArvCamera* camera, GError** error) { bytes = arv_camera_gv_get_packet_size(camera, error); });
    }
    m_PacketBytes = static_cast<int>(std::clamp(bytes, 46u, 65535u));
    m_Features.Do("clock", [&](ArvCamera* camera, GError** error) {
        m_ClockHz = arv_gv_device_get_timestamp_tick_frequency(ARV_GV_DEVICE(arv_camera_get_device(camera)), error);
    });
    const double bytes_per_second = m_Features.Number("DeviceLinkSpeed").value_or(0);
    const double megabits = m_Features.Number("GevLinkSpeed").value_or(0);
    const double bits = bytes_per_second > 0 ? bytes_per_second * 8 : megabits * 1e6;
    m_LinkSpeedTold = bits >= 1e7 && bits <= 1e12;
    if (m_LinkSpeedTold) m_LinkBitsPerSecond = bits;
    if (Gone()) throw Failure(ZEL_ERROR_CAMERA_COMM_FAILURE, m_Features.LastError());
}

}  // namespace zel::gige
