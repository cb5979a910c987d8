// What the computer brings along: processor, memory, and the limits that fast links run into.
#include <fmt/format.h>

#include "kernels/CpuSupport.h"
#include "kernels/Kernels.h"
#include "platform/Memory.h"
#include "platform/SystemLimits.h"
#include "tools/zelcam/doctor/Checks.h"

namespace zelcam {

namespace {

using zel::platform::kUnlimited;

// The SDK's pool has eight buffers unless an application asks for others; the frames are of four megapixels.
constexpr std::uint64_t kPool = std::uint64_t{8} * 2048 * 2048 * 2;

// What the GigE plug-in asks for: as much as a link of 1 Gbit/s brings in while a busy system lets a program wait.
constexpr std::uint64_t kGigabitBytesPerMs = 125000;
constexpr std::uint64_t kReceiveBuffer = std::uint64_t{8} << 20;

// Eight frames of the pool on their way at once.
constexpr std::uint64_t kUsbMemory = kPool;

const char* YesOrNo(bool yes) { return yes ? "yes" : "no"; }

void CheckProcessor(Examination& examination) {
    const bool avx2 = zel::kernels::CpuHasAvx2();
    const bool fma = zel::kernels::CpuHasFma();
    const bool avx512 = zel::kernels::CpuHasAvx512();
    const std::string kernels = zel::kernels::Kernels().name;
    examination.Add(avx2 ? State::kOk : State::kNote, "processor",
                    fmt::format("AVX2: {}, FMA: {}, AVX-512: {}; pixels are worked on by the {} kernels", YesOrNo(avx2),
                                YesOrNo(fma), YesOrNo(avx512), kernels),
                    avx2 ? "" : "a processor with AVX2 is several times as fast with color and 12-bit frames",
                    {{"avx2", avx2}, {"fma", fma}, {"avx512", avx512}, {"kernels", kernels}});
}

void CheckMemory(Examination& examination) {
    const std::uint64_t available = zel::platform::AvailablePhysicalMemory();
    if (available == 0) {
        return examination.Add(State::kNote, "memory", "the system does not tell how much memory is available");
    }
    const bool enough = available > kPool;
    examination.Add(enough ? State::kOk : State::kWarning, "memory",
                    BytesText(available) + " available; eight buffers of 2048 x 2048 take " + BytesText(kPool),
                    enough ? "" : "close other programs, or use fewer --buffers",
                    {{"available", available}, {"pool", kPool}});
}

void CheckRealTime(Examination& examination) {
    const auto priority = zel::platform::RealTimePriorityLimit();
    const auto memory = zel::platform::LockedMemoryLimit();
    if (!priority || !memory) {
        return examination.Add(State::kOk, "real_time",
                               "this system limits neither priorities nor locked memory of a single program");
    }
    const std::string priorities = *priority == 0            ? "none"
                                   : *priority == kUnlimited ? "all"
                                                             : "up to " + std::to_string(*priority);
    examination.Add(*priority > 0 ? State::kOk : State::kNote, "real_time",
                    "real-time priorities: " + priorities + "; locked memory: " + BytesText(*memory),
                    *priority > 0 ? ""
                                  : "a plug-in that wants them needs '@video - rtprio 50' and '@video - memlock "
                                    "unlimited' in /etc/security/limits.d/zel.conf",
                    {{"rtprio", *priority}, {"memlock", *memory}});
}

void CheckReceiveBuffers(bool network, Examination& examination) {
    const auto limit = zel::platform::ReceiveBufferLimit();
    const auto by_default = zel::platform::ReceiveBufferDefault();
    if (!limit || !by_default) {
        return examination.Add(State::kOk, "receive_buffers", "this system has no limit for receive buffers");
    }
    const bool enough = *limit >= kReceiveBuffer;
    const State lacking = network ? State::kWarning : State::kNote;
    examination.Add(
        enough ? State::kOk : lacking, "receive_buffers",
        fmt::format("receive buffers: {} (default {}), {:.1f} ms of a gigabit link", BytesText(*limit),
                    BytesText(*by_default), static_cast<double>(*limit) / kGigabitBytesPerMs),
        enough ? ""
               : fmt::format("the GigE plug-in asks for {0}, with less frames are lost on a busy computer: sudo "
                             "sysctl -w net.core.rmem_max={1} now; echo net.core.rmem_max={1} | sudo tee "
                             "/etc/sysctl.d/60-zel.conf for good",
                             BytesText(kReceiveBuffer), kReceiveBuffer),
        {{"rmem_max", *limit}, {"rmem_default", *by_default}, {"needed", kReceiveBuffer}});
}

void CheckUsbMemory(bool usb, Examination& examination) {
    const auto limit = zel::platform::UsbMemoryLimit();
    if (!limit) return;
    const bool enough = *limit >= kUsbMemory;
    const State lacking = usb ? State::kWarning : State::kNote;
    examination.Add(enough ? State::kOk : lacking, "usb_memory", "memory for USB transfers: " + BytesText(*limit),
                    enough ? ""
                           : fmt::format("eight frames of 2048 x 2048 at once need {0}: write {0} to "
                                         "/sys/module/usbcore/parameters/usbfs_memory_mb",
                                         kUsbMemory >> 20),
                    {{"limit", *limit}, {"needed", kUsbMemory}});
}

}  // namespace

void CheckSystem(const CameraCounts& cameras, Examination& examination) {
    examination.Begin("system");
    CheckProcessor(examination);
    CheckMemory(examination);
    CheckRealTime(examination);
    CheckReceiveBuffers(NetworkIsWanted(cameras), examination);
    CheckUsbMemory(cameras.usb, examination);
}

}  // namespace zelcam
