#include "bindings/gstreamer/ZelSrc.h"

#include <gst/base/gstpushsrc.h>
#include <gst/video/gstvideopool.h>
#include <gst/video/video.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <utility>

#include "bindings/gstreamer/CameraSource.h"
#include "bindings/gstreamer/FrameBuffer.h"
#include "bindings/gstreamer/Messages.h"
#include "bindings/gstreamer/Properties.h"

namespace zel::gst {

namespace {

// A frame is pushed within so long after it arrived, even when frames come more slowly.
constexpr GstClockTime kLongestHandOver = 50 * GST_MSECOND;
constexpr const char* kTemplate = GST_VIDEO_CAPS_MAKE("{ GRAY16_LE, GRAY16_BE, GRAY8, BGR, RGB }");

struct State {
    std::mutex mutex;
    Settings settings;  // guarded by it
    CameraSource source;

    // The streaming thread's.
    bool scale = true;
    GstVideoInfo format;
    Picture negotiated;
    GstClockTime last = GST_CLOCK_TIME_NONE;  // time stamp of the frame before
};

struct ZelSrc {
    GstPushSrc parent;
    State* state;
};

struct ZelSrcClass {
    GstPushSrcClass parent;
    void (*trigger)(ZelSrc*);
};

G_DEFINE_TYPE(ZelSrc, zel_src, GST_TYPE_PUSH_SRC)

template <class Object>
State& StateOf(Object* object) {
    return *reinterpret_cast<ZelSrc*>(object)->state;
}

// Nothing is thrown through GStreamer: an Error becomes a message, and the answer is `failed`.
template <class Object, class Answer, class Body, class Tell>
Answer Guard(Object* object, Answer failed, const Tell& tell, const Body& body) {
    GstElement* const element = GST_ELEMENT(object);
    try {
        return body();
    } catch (const Error& error) {
        tell(element, error);
    } catch (const std::bad_alloc&) {
        tell(element, Error(ErrorKind::failed, "memory ran out"));
    } catch (const std::exception& error) {
        tell(element, Error(ErrorKind::failed, error.what()));
    }
    return failed;
}

GstClockTime FrameDuration(const Picture& picture) {
    return picture.frame_us > 0 ? picture.frame_us * GST_USECOND : GST_CLOCK_TIME_NONE;
}

// ---- properties ----

void SetProperty(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
    State& state = StateOf(object);
    Settings settings;
    {
        const std::lock_guard lock(state.mutex);
        if (!StoreProperty(state.settings, id, value)) {
            G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
            return;
        }
        settings = state.settings;
    }
    Guard(object, false, PostWarning, [&] {
        if (id == kPropertyExposure) state.source.SetExposure(settings.exposure_us);
        if (id == kPropertyGain) state.source.SetGain(settings.gain);
        return true;
    });
}

void GetProperty(GObject* object, guint id, GValue* value, GParamSpec* spec) {
    State& state = StateOf(object);
    switch (id) {
        case kPropertyBits:
            return g_value_set_uint(value, state.source.IsOpen() ? state.source.CurrentPicture().bits : 0);
        case kPropertyDropped:
            return g_value_set_uint64(value, state.source.Dropped());
        case kPropertyStats:
            return g_value_take_boxed(value, StatsOf(state.source.CurrentCounts()));
        default:
            break;
    }
    const std::lock_guard lock(state.mutex);
    if (!LoadProperty(state.settings, id, value)) G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
}

void TakeTrigger(ZelSrc* element) {
    Guard(element, false, PostWarning, [element] {
        element->state->source.Trigger();
        return true;
    });
}

// ---- states ----

gboolean Start(GstBaseSrc* base) {
    State& state = StateOf(base);
    return Guard(base, FALSE, PostError, [&state] {
        Settings settings;
        {
            const std::lock_guard lock(state.mutex);
            settings = state.settings;
        }
        state.scale = settings.scale;
        state.negotiated = {};
        state.last = GST_CLOCK_TIME_NONE;
        state.source.Open(settings);
        return TRUE;
    });
}

gboolean Stop(GstBaseSrc* base) {
    return Guard(base, FALSE, PostWarning, [base] {
        StateOf(base).source.Close();
        return TRUE;
    });
}

gboolean Unlock(GstBaseSrc* base) {
    StateOf(base).source.Halt();
    return TRUE;
}

gboolean UnlockStop(GstBaseSrc* base) {
    StateOf(base).source.GoOn();
    return TRUE;
}

GstStateChangeReturn ChangeState(GstElement* element, GstStateChange change) {
    CameraSource& source = StateOf(element).source;
    if (change == GST_STATE_CHANGE_PAUSED_TO_PLAYING) source.Play();
    const GstStateChangeReturn result = GST_ELEMENT_CLASS(zel_src_parent_class)->change_state(element, change);
    if (change == GST_STATE_CHANGE_PLAYING_TO_PAUSED) {
        Guard(element, false, PostWarning, [&source] {
            source.Pause();
            return true;
        });
    }
    if (change == GST_STATE_CHANGE_READY_TO_NULL) source.Release();
    return result;
}

// ---- negotiation ----

GstCaps* CapsOf(const Picture& picture) {
    GstCaps* const caps = gst_caps_from_string(picture.color ? "video/x-raw, format={ BGR, RGB }"
                                                             : "video/x-raw, format={ GRAY16_LE, GRAY16_BE, GRAY8 }");
    int rate = 0;
    int per = 1;
    if (picture.frame_us > 0) {
        const auto frame_us = static_cast<int>(std::min(picture.frame_us, static_cast<unsigned>(G_MAXINT)));
        const int divisor = static_cast<int>(gst_util_greatest_common_divisor(G_USEC_PER_SEC, frame_us));
        rate = static_cast<int>(G_USEC_PER_SEC) / divisor;
        per = frame_us / divisor;
    }
    gst_caps_set_simple(caps, "width", G_TYPE_INT, static_cast<int>(picture.width), "height", G_TYPE_INT,
                        static_cast<int>(picture.height), "framerate", GST_TYPE_FRACTION, rate, per,
                        "pixel-aspect-ratio", GST_TYPE_FRACTION, static_cast<int>(picture.binning.x),
                        static_cast<int>(picture.binning.y), "interlace-mode", G_TYPE_STRING, "progressive", nullptr);
    return caps;
}

GstCaps* GetCaps(GstBaseSrc* base, GstCaps* filter) {
    const CameraSource& source = StateOf(base).source;
    GstCaps* const caps =
        source.IsOpen() ? CapsOf(source.CurrentPicture()) : gst_pad_get_pad_template_caps(GST_BASE_SRC_PAD(base));
    if (!filter) return caps;
    GstCaps* const wanted = gst_caps_intersect_full(filter, caps, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(caps);
    return wanted;
}

gboolean SetCaps(GstBaseSrc* base, GstCaps* caps) { return gst_video_info_from_caps(&StateOf(base).format, caps); }

// For frames that are copied: the pool that the next element offers, or one of our own.
gboolean DecideAllocation(GstBaseSrc* base, GstQuery* query) {
    const State& state = StateOf(base);
    GstCaps* caps = nullptr;
    gst_query_parse_allocation(query, &caps, nullptr);
    GstBufferPool* pool = nullptr;
    guint size = static_cast<guint>(GST_VIDEO_INFO_SIZE(&state.format));
    guint least = 0;
    guint most = 0;
    const bool offered = gst_query_get_n_allocation_pools(query) > 0;
    if (offered) {
        guint offered_size = 0;
        gst_query_parse_nth_allocation_pool(query, 0, &pool, &offered_size, &least, &most);
        size = std::max(size, offered_size);
    }
    if (!pool) pool = gst_video_buffer_pool_new();
    GstStructure* const config = gst_buffer_pool_get_config(pool);
    gst_buffer_pool_config_set_params(config, caps, size, least, most);
    if (gst_query_find_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr)) {
        gst_buffer_pool_config_add_option(config, GST_BUFFER_POOL_OPTION_VIDEO_META);
    }
    gst_buffer_pool_set_config(pool, config);
    if (offered) {
        gst_query_set_nth_allocation_pool(query, 0, pool, size, least, most);
    } else {
        gst_query_add_allocation_pool(query, pool, size, least, most);
    }
    gst_object_unref(pool);
    return GST_BASE_SRC_CLASS(zel_src_parent_class)->decide_allocation(base, query);
}

gboolean Query(GstBaseSrc* base, GstQuery* query) {
    const CameraSource& source = StateOf(base).source;
    if (GST_QUERY_TYPE(query) != GST_QUERY_LATENCY || !source.IsOpen()) {
        return GST_BASE_SRC_CLASS(zel_src_parent_class)->query(base, query);
    }
    // Time stamps are those of the arrival; what comes after it is hand-over and processing. The pool keeps the others.
    const GstClockTime duration = FrameDuration(source.CurrentPicture());
    const bool known = GST_CLOCK_TIME_IS_VALID(duration);
    const GstClockTime least = known ? std::min(duration, kLongestHandOver) : kLongestHandOver;
    const GstClockTime most = known ? least + duration * static_cast<guint64>(source.Buffers()) : GST_CLOCK_TIME_NONE;
    gst_query_set_latency(query, TRUE, least, most);
    return TRUE;
}

// ---- frames ----

// When the frame arrived, as the pipeline counts time.
GstClockTime ArrivalOf(GstElement* element, const Frame& frame) {
    GstClock* const clock = gst_element_get_clock(element);
    if (!clock) return GST_CLOCK_TIME_NONE;
    const GstClockTime now = gst_clock_get_time(clock);
    gst_object_unref(clock);
    const GstClockTime before =
        gst_element_get_base_time(element) + static_cast<GstClockTime>(frame.hand_over().count());
    return now > before ? now - before : 0;
}

// Arrivals are told in milliseconds, so that frames close together might seem to come in another order. A clock that
// was set back further is followed.
GstClockTime Behind(GstClockTime before, GstClockTime arrival) {
    constexpr GstClockTime kCoarse = 10 * GST_MSECOND;
    const bool both = GST_CLOCK_TIME_IS_VALID(before) && GST_CLOCK_TIME_IS_VALID(arrival);
    return both && arrival <= before && before - arrival < kCoarse ? before + 1 : arrival;
}

// The frame as a buffer: its own memory where that fits and enough of the camera's is left, else a copy.
GstFlowReturn BufferOf(GstBaseSrc* base, Frame frame, GstBuffer** buffer) {
    const State& state = StateOf(base);
    if (LiesAs(state.format, frame) && state.source.MayLend()) {
        *buffer = Lend(std::move(frame), state.scale);
        return GST_FLOW_OK;
    }
    GstBufferPool* const pool = gst_base_src_get_buffer_pool(base);
    const GstFlowReturn flow = gst_buffer_pool_acquire_buffer(pool, buffer, nullptr);
    gst_object_unref(pool);
    if (flow != GST_FLOW_OK) return flow;
    if (Copy(frame, state.scale, state.format, *buffer)) return GST_FLOW_OK;
    gst_clear_buffer(buffer);
    throw Error(ErrorKind::failed, "the memory for a frame can't be written");
}

// The next frame, which may be after a pause, or when a lost link is back. Anything but GST_FLOW_OK: there is none.
GstFlowReturn TakeFrame(GstBaseSrc* base, Taken& taken) {
    State& state = StateOf(base);
    bool hole = false;
    while (true) {
        try {
            taken = state.source.Next();
            taken.hole = taken.hole || hole;
            if (taken.frame) return GST_FLOW_OK;
            if (taken.over) return GST_FLOW_EOS;
            if (state.source.IsHalted()) return GST_FLOW_FLUSHING;
            if (const GstFlowReturn flow = gst_base_src_wait_playing(base); flow != GST_FLOW_OK) return flow;
            continue;
        } catch (const Error& error) {
            if (error.kind() != ErrorKind::link_lost || !state.source.Reconnects()) throw;
            PostWarning(GST_ELEMENT(base), error);
            hole = true;
        }
        state.source.AwaitLink();
    }
}

GstFlowReturn Create(GstPushSrc* push, GstBuffer** out) {
    GstBaseSrc* const base = GST_BASE_SRC(push);
    GstElement* const element = GST_ELEMENT(push);
    State& state = StateOf(push);
    return Guard(push, GST_FLOW_ERROR, PostError, [&] {
        Taken taken;
        if (const GstFlowReturn flow = TakeFrame(base, taken); flow != GST_FLOW_OK) return flow;
        const GstClockTime arrival = Behind(state.last, ArrivalOf(element, taken.frame));
        state.last = arrival;
        const Picture picture = state.source.CurrentPicture();
        if (picture != state.negotiated) {
            if (!gst_base_src_negotiate(base)) return GST_FLOW_NOT_NEGOTIATED;
            state.negotiated = picture;
        }
        const std::uint64_t number = taken.frame.number();
        GstBuffer* buffer = nullptr;
        const GstFlowReturn flow = BufferOf(base, std::move(taken.frame), &buffer);
        if (flow != GST_FLOW_OK) return flow;
        GST_BUFFER_PTS(buffer) = arrival;
        GST_BUFFER_DURATION(buffer) = FrameDuration(picture);
        GST_BUFFER_OFFSET(buffer) = number;
        GST_BUFFER_OFFSET_END(buffer) = number + 1;
        if (taken.hole) {
            GST_BUFFER_FLAG_SET(buffer, GST_BUFFER_FLAG_DISCONT);
            PostDrops(element, state.source.Dropped(), state.source.Frames(), arrival, FrameDuration(picture));
        }
        *out = buffer;
        return GST_FLOW_OK;
    });
}

// ---- type ----

void Finalize(GObject* object) {
    delete std::exchange(reinterpret_cast<ZelSrc*>(object)->state, nullptr);
    G_OBJECT_CLASS(zel_src_parent_class)->finalize(object);
}

void zel_src_init(ZelSrc* element) {
    element->state = new State;
    gst_video_info_init(&element->state->format);
    gst_base_src_set_live(GST_BASE_SRC(element), TRUE);
    gst_base_src_set_format(GST_BASE_SRC(element), GST_FORMAT_TIME);
}

void zel_src_class_init(ZelSrcClass* zel_class) {
    GObjectClass* const object_class = G_OBJECT_CLASS(zel_class);
    object_class->set_property = SetProperty;
    object_class->get_property = GetProperty;
    object_class->finalize = Finalize;
    InstallProperties(object_class);
    zel_class->trigger = TakeTrigger;
    g_signal_new("trigger", G_TYPE_FROM_CLASS(zel_class),
                 static_cast<GSignalFlags>(G_SIGNAL_RUN_LAST | G_SIGNAL_ACTION), G_STRUCT_OFFSET(ZelSrcClass, trigger),
                 nullptr, nullptr, nullptr, G_TYPE_NONE, 0);

    GstElementClass* const element_class = GST_ELEMENT_CLASS(zel_class);
    element_class->change_state = ChangeState;
    gst_element_class_set_static_metadata(element_class, "Scientific camera source", "Source/Video/Hardware",
                                          "Frames of a camera of the ZEL Camera SDK",
                                          "The ZEL Camera SDK developers <developers@zel-camera-sdk.invalid>");
    GstCaps* const caps = gst_caps_from_string(kTemplate);
    gst_element_class_add_pad_template(element_class, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);

    GstBaseSrcClass* const base_class = GST_BASE_SRC_CLASS(zel_class);
    base_class->start = Start;
    base_class->stop = Stop;
    base_class->unlock = Unlock;
    base_class->unlock_stop = UnlockStop;
    base_class->get_caps = GetCaps;
    base_class->set_caps = SetCaps;
    base_class->decide_allocation = DecideAllocation;
    base_class->query = Query;
    GST_PUSH_SRC_CLASS(zel_class)->create = Create;
}

}  // namespace

GType ZelSrcType() { return zel_src_get_type(); }

}  // namespace zel::gst
