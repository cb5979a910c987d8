/// @file
/// What a camera has to be able to do: the author of a plug-in writes one of these, the kit does the rest.
#ifndef DEVICES_KIT_BACKEND_H
#define DEVICES_KIT_BACKEND_H

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "devices/kit/Entry.h"
#include "devices/kit/FrameSink.h"
#include "devices/kit/ParameterTable.h"

namespace zel::kit {

/// Who a camera is, told before it is opened. Texts are cut at 63 bytes.
struct Description {
    std::string name;                      ///< as a user knows it
    std::string serial;                    ///< serial number, unique among the cameras of a maker
    std::string port_type;                 ///< "GigE", "USB 3.0"
    std::array<std::string, 3> addresses;  ///< whatever finds the camera on its link
    double link_bytes_per_second = 0.0;    ///< what the link can carry; 0: not known
};

/// How an acquisition begins.
struct Run {
    bool triggered = false;  ///< frames come by trigger; else one after the other
    bool hardware = false;   ///< the trigger comes from the input (HW_TRIG_SOURCE), not from the host
    int frames = 0;          ///< after so many it is over; 0: until it is stopped
};

/// One camera. The kit keeps its parameter table, speaks both protocols for it, checks types, access and bounds, does
/// the sequence, the calculation state and the trigger commands, and owns the thread that frames come from.
///
/// Threads. Describe() is called on any thread. Connect(), Disconnect(), Attributes(), Read(), Write() and Text() are
/// called one at a time, on whichever thread the host talks on. Prepare() and Start() are called on the camera's frame
/// thread while those go on. Stop() and Trigger() are called on any thread. No lock that frames need is held in any of
/// them, so Read() and Write() may take as long as the camera takes to answer (the host gives up after 5 s).
///
/// Nothing may throw across it; what does is answered to the host as a failure.
class BackEnd {
  public:
    virtual ~BackEnd() = default;

    /// The camera as it is found in a search, open or not.
    virtual Description Describe() const = 0;

    /// The host opens the link.
    /// @return 0, or one of ZEL_ERROR_... (ZelSDK.h): it can't be opened
    virtual int Connect() { return 0; }
    /// The host closes it. No run is under way, but for the one in whose frame handler the host does so: that one has
    /// ended, and Start() goes on behind Give().
    virtual void Disconnect() {}

    /// The camera was switched on: made, plugged in again, or reset by the host. `table` holds the defaults and the
    /// texts of before; texts, and numbers that no default tells, are stored now. It is the same each time and lives as
    /// long as the back end, which may look into it and store what follows from other settings inside AttributesOf(),
    /// Read(), Write() and Text().
    virtual void PowerOn(ParameterTable& table) { static_cast<void>(table); }

    /// What an entry is now; none when this camera has no such entry. Asked before each write and whenever the host
    /// asks, so bounds may follow other settings. H_SIZE, V_SIZE and BITS_PER_PIXEL must be there: a frame has so many
    /// columns, rows and bits.
    virtual std::optional<Attributes> AttributesOf(int index) = 0;
    /// Brings an entry up to date before the host reads it.
    /// @param index         0 to 88
    /// @param[in,out] value what the table holds: what was written last, or the default
    /// @return 0, or one of SyncTableException
    virtual int Read(int index, Value& value) {
        static_cast<void>(index), static_cast<void>(value);
        return 0;
    }
    /// The host writes an entry. Type, access and bounds were checked; what stands in `value` afterwards goes into the
    /// table, so a camera that rounds says so here. What follows from it (EXPOSURE_ACTUAL, FRAME_TIME ...) is answered
    /// by Read().
    /// @return 0, or one of SyncTableException: refused, nothing changed
    virtual int Write(int index, Value& value) {
        static_cast<void>(index), static_cast<void>(value);
        return 0;
    }
    /// A text command. What a back end leaves, the kit answers: "info", "name", "trig ...", "arm" and "cam. ..." as
    /// this system's own cameras do, everything else "ERR".
    /// @return the reply without a line end; none: left to the kit
    virtual std::optional<std::string> Text(std::string_view command) {
        static_cast<void>(command);
        return std::nullopt;
    }

    /// The host is starting the camera: what a run needs may be made ready, so that the first frame comes soon. Called
    /// on the frame thread, first while the host goes on with its preparations, then with the settings of the run; the
    /// host's start waits for it.
    virtual void Prepare() {}
    /// After how many frames every run ends by itself, whatever the host asks for; 0: only when it is asked for.
    virtual int LongestRun() const { return 0; }
    /// The acquisition: gives frames until the sink has ended, then returns, soon. Returning early halts the camera.
    virtual void Start(FrameSink& sink, const Run& run) = 0;
    /// The sink has just ended: wakes a Start() that waits for something else than the sink. Start() may have returned.
    virtual void Stop() {}
    /// The host gave a software trigger while a triggered run is on; the sink counts it as well.
    virtual void Trigger() {}
};

}  // namespace zel::kit

#endif
