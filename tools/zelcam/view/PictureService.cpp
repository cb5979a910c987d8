#include "tools/zelcam/view/PictureService.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "tools/zelcam/view/FrameReducer.h"

namespace zelcam {

namespace {

constexpr std::chrono::milliseconds kStatePeriod{250};
constexpr std::chrono::milliseconds kStatisticsPeriod{100};
constexpr std::chrono::seconds kRateWindow{2};
constexpr std::uint32_t kMagic = 0x564C455A;  // "ZELV"

// docs/viewer-protocol.md draws it. All products are little-endian.
static_assert(std::endian::native == std::endian::little);

PictureMessage MessageOf(const LiveFrame& frame, const Samples& samples, const ReducedPicture& picture,
                         std::uint32_t view) {
    PictureMessage message;
    std::size_t at = 0;
    const auto put = [&](auto value) {
        std::memcpy(message.header.data() + at, &value, sizeof value);
        at += sizeof value;
    };
    const auto number = [](auto value) { return static_cast<std::uint32_t>(value); };
    put(kMagic);
    put(static_cast<std::uint16_t>(kPictureHeaderSize));
    put(static_cast<std::uint16_t>(samples.channels));
    put(number(frame.frame.number()));
    put(number(samples.bits));
    for (const unsigned value : {samples.width, samples.height, picture.area.x, picture.area.y, picture.area.width,
                                 picture.area.height, picture.columns, picture.rows}) {
        put(number(value));
    }
    put(frame.hand_over_ms);
    put(view);
    put(number(frame.frame.exposure().count()));
    put(WallClockMs());
    message.samples = picture.samples;
    return message;
}

template <class Value>
Json OrNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json();
}

}  // namespace

PictureService::PictureService(PageOutlet& pages, NewestFrame& newest, Bell& bell, const FrameTaker& taker,
                               ConditionSource condition)
    : m_Pages(pages),
      m_Newest(newest),
      m_Bell(bell),
      m_Taker(taker),
      m_Condition(std::move(condition)),
      m_Thread([this] { Work(); }) {}

PictureService::~PictureService() {
    {
        const std::lock_guard lock(m_Mutex);
        m_Quit = true;
    }
    m_Bell.Ring();
    m_Thread.join();
}

void PictureService::Join(int client) {
    const std::lock_guard lock(m_Mutex);
    m_Clients[client];
}

void PictureService::Leave(int client) {
    const std::lock_guard lock(m_Mutex);
    m_Clients.erase(client);
}

void PictureService::Look(int client, const ViewRequest& view) {
    {
        const std::lock_guard lock(m_Mutex);
        const auto entry = m_Clients.find(client);
        if (entry == m_Clients.end()) return;
        // A page that has just come is told what there is.
        m_ProbesChanged = m_ProbesChanged || !entry->second.view;
        entry->second.view = view;
        entry->second.again = true;
    }
    m_Bell.Ring();
}

void PictureService::Measure(int client, const Probe& probe) {
    {
        const std::lock_guard lock(m_Mutex);
        const auto entry = m_Clients.find(client);
        if (entry == m_Clients.end()) return;
        entry->second.probe = probe;
        m_ProbesChanged = true;
    }
    m_Bell.Ring();
}

void PictureService::Shown(int client, std::uint32_t frame, double at) {
    const double now_ms = WallClockMs();
    const Clock::time_point now = Clock::now();
    {
        const std::lock_guard lock(m_Mutex);
        const auto entry = m_Clients.find(client);
        if (entry == m_Clients.end() || !entry->second.under_way || entry->second.frame != frame) return;
        Client& page = entry->second;
        page.under_way = false;
        page.sequence_at_shown = m_Taker.Sequence();
        ++page.shown;
        page.shown_at.push_back(now);
        // The clock of another computer may say anything.
        page.latency_ms = (at >= page.sent_ms && at <= now_ms ? at : now_ms) - page.hand_over_ms;
    }
    m_Bell.Ring();
}

void PictureService::BeginRun() {
    const std::lock_guard lock(m_Mutex);
    for (auto& [number, client] : m_Clients) {
        client.shown = client.skipped = client.passed_over = 0;
        client.sequence = client.sequence_at_shown = m_Taker.Sequence();
    }
}

void PictureService::Work() {
    std::uint64_t heard = 0;
    while (true) {
        m_Bell.WaitUntil(heard, std::min(m_NextState, Clock::now() + kStatisticsPeriod));
        bool measure = false;
        {
            const std::lock_guard lock(m_Mutex);
            if (m_Quit) return;
            measure = !m_Clients.empty();
        }
        if (const LiveFramePointer frame = m_Newest.Get(); frame && measure) {
            SendPictures(frame);
            SendStatistics(*frame);
        }
        if (Clock::now() >= m_NextState) SendState();
    }
}

void PictureService::CountGap(Client& client, std::uint64_t sequence) {
    if (client.sequence == 0 || sequence <= client.sequence + 1) return;
    const std::uint64_t gap = sequence - client.sequence - 1;
    const std::uint64_t busy =
        client.sequence_at_shown > client.sequence ? client.sequence_at_shown - client.sequence : 0;
    client.skipped += std::min(gap, busy);
    client.passed_over += gap - std::min(gap, busy);
}

std::vector<PictureService::Order> PictureService::TakeOrders(const LiveFrame& frame) {
    std::vector<Order> orders;
    const std::lock_guard lock(m_Mutex);
    for (auto& [number, client] : m_Clients) {
        if (!client.view || client.under_way || (frame.sequence <= client.sequence && !client.again)) continue;
        orders.push_back({number, *client.view});
        CountGap(client, frame.sequence);
        client.sequence = frame.sequence;
        client.again = false;
        client.under_way = true;
        client.frame = frame.frame.number();
        client.hand_over_ms = frame.hand_over_ms;
        client.sent_ms = WallClockMs();
    }
    return orders;
}

void PictureService::SendPictures(const LiveFramePointer& frame) {
    const std::vector<Order> orders = TakeOrders(*frame);
    const Samples samples = frame->ViewSamples();
    // Pages that look at the same part in the same size share the samples.
    std::vector<std::pair<ViewRequest, ReducedPicture>> made;
    for (const Order& order : orders) {
        auto same = std::find_if(made.begin(), made.end(), [&](const auto& entry) {
            return entry.first.area == order.view.area && entry.first.columns == order.view.columns &&
                   entry.first.rows == order.view.rows;
        });
        if (same == made.end()) same = made.insert(same, {order.view, Reduce(samples, order.view)});
        m_Pages.SendPicture(order.client, MessageOf(*frame, samples, same->second, order.view.number));
    }
}

void PictureService::SendStatistics(const LiveFrame& frame) {
    if (Clock::now() < m_NextStatistics) return;
    const bool fresh = frame.sequence != m_MeasuredSequence;
    std::vector<std::pair<int, Probe>> wanted;
    {
        const std::lock_guard lock(m_Mutex);
        if (!fresh && !std::exchange(m_ProbesChanged, false)) return;
        for (const auto& [number, client] : m_Clients) {
            if (client.view) wanted.emplace_back(number, client.probe);
        }
    }
    if (wanted.empty()) return;
    const Samples samples = frame.ViewSamples();
    if (fresh) m_Measured = m_Statistics.Measure(samples);
    m_MeasuredSequence = frame.sequence;
    const Json common = StatisticsMessage(frame.frame.number(), m_Measured);
    for (const auto& [client, probe] : wanted) {
        Json message = common;
        AddProbe(message, probe, samples);
        m_Pages.SendText(client, MessageText(message), PageOutlet::Need::kWhenInTime);
    }
    m_NextStatistics = Clock::now() + kStatisticsPeriod;
}

void PictureService::SendState() {
    m_NextState = Clock::now() + kStatePeriod;
    const CameraCondition condition = m_Condition();
    const TakenFrames taken = m_Taker.Taken();
    std::vector<std::pair<int, Json>> messages;
    {
        const std::lock_guard lock(m_Mutex);
        for (auto& [number, client] : m_Clients) {
            messages.emplace_back(number, StateFor(client, condition, taken, m_Clients.size()));
        }
    }
    for (const auto& [client, message] : messages) {
        m_Pages.SendText(client, MessageText(message), PageOutlet::Need::kWhenInTime);
    }
}

Json PictureService::StateFor(Client& client, const CameraCondition& condition, const TakenFrames& taken,
                              std::size_t clients) {
    const Clock::time_point now = Clock::now();
    while (!client.shown_at.empty() && now - client.shown_at.front() > kRateWindow) client.shown_at.pop_front();
    const double shown_rate =
        static_cast<double>(client.shown_at.size()) / std::chrono::duration<double>(kRateWindow).count();
    const std::uint64_t no_buffer = taken.missing > condition.lost_on_link ? taken.missing - condition.lost_on_link : 0;
    Json json;
    json["type"] = "state";
    const bool running = condition.running && !condition.link_lost;
    json["running"] = running;
    json["link"] = condition.link_lost ? "lost" : "up";
    json["recording"] = condition.recording;
    json["frames"] = {{"delivered", taken.delivered},        {"shown", client.shown},
                      {"lost_link", condition.lost_on_link}, {"lost_buffer", no_buffer},
                      {"passed_over", client.passed_over},   {"skipped", client.skipped}};
    json["rate"] = {{"camera", running ? taken.rate : 0.0}, {"shown", shown_rate}};
    json["latency_ms"] = {{"hand_over", taken.delivered > 0 ? Json(taken.arrival_to_hand_ms) : Json()},
                          {"shown", OrNull(client.latency_ms)}};
    json["temperature_c"] = OrNull(condition.temperature_c);
    json["exposure_us"] = OrNull(condition.exposure_us);
    json["frame_time_us"] = OrNull(condition.frame_time_us);
    json["gain"] = OrNull(condition.gain);
    json["clients"] = clients;
    return json;
}

}  // namespace zelcam
