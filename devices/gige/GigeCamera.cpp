// A camera's life: found, opened, run, lost, found again.
#include "devices/gige/GigeCamera.h"

#include <cstdio>
#include <exception>

#include "devices/gige/Failure.h"
#include "include/ZelParameters.h"

namespace zel::gige {

namespace {

constexpr double kGigabit = 125e6;  // bytes per second of the link

// Runs a task on the caretaker's thread, or here when there is none any more.
void Later(const std::weak_ptr<Caretaker>& caretaker, const Caretaker::Task& task) {
    const auto alive = caretaker.lock();
    if (!alive || !alive->Post(task)) task();
}

}  // namespace

GigeCamera::GigeCamera(FoundCamera facts, std::weak_ptr<Caretaker> caretaker, LossHandler lost)
    : m_Caretaker(std::move(caretaker)), m_OnLoss(std::move(lost)), m_Facts(std::move(facts)) {}

FoundCamera GigeCamera::Facts() const {
    const platform::ScopedLock lock(m_Lock);
    return m_Facts;
}

GigeCamera::Session GigeCamera::Opened() const {
    const platform::ScopedLock lock(m_Lock);
    return m_Session;
}

bool GigeCamera::IsOpen() const {
    const platform::ScopedLock lock(m_Lock);
    return m_Open;
}

bool GigeCamera::IsLost() const {
    const platform::ScopedLock lock(m_Lock);
    return m_Open && (!m_Session || m_Session->Gone());
}

kit::Description GigeCamera::Describe() const {
    const FoundCamera facts = Facts();
    return {facts.vendor + " " + facts.model,
            facts.serial,
            "GigE",
            {facts.address, facts.hardware, "GigE Vision"},
            kGigabit};
}

void GigeCamera::Complain(const std::string& text) const {
    const FoundCamera facts = Facts();
    std::fprintf(stderr, "%s %s (%s): %s\n", facts.model.c_str(), facts.serial.c_str(), facts.address.c_str(),
                 text.c_str());
}

// A session whose camera is gone takes seconds to end, whoever lets go of it last.
GigeCamera::Session GigeCamera::MakeSession() {
    const auto lost = [this, caretaker = m_Caretaker] {
        if (const auto alive = caretaker.lock()) alive->Post([this] { m_OnLoss(*this); });
    };
    const auto end = [caretaker = m_Caretaker](CameraSession* session) {
        if (!session->Gone()) {
            delete session;
            return;
        }
        Later(caretaker, [session] { delete session; });
    };
    return {new CameraSession(Facts().address, lost), end};
}

int GigeCamera::Connect() {
    try {
        const Session session = MakeSession();
        {
            const platform::ScopedLock lock(m_Lock);
            m_Session = session;
            m_Open = true;
        }
        StoreDefaults();
        return ZEL_NO_ERROR;
    } catch (const Failure& failure) {
        Complain(failure.what());
        Later(m_Caretaker, [remains = failure.Remains()]() mutable { remains.reset(); });
        return failure.Code();
    } catch (const std::exception&) {
        return ZEL_ERROR_UNKNOWN;
    }
}

void GigeCamera::PowerOn(kit::ParameterTable& table) {
    m_Table = &table;
    StoreDefaults();
}

// What the camera is becomes known when it is opened, not when it is switched on.
void GigeCamera::StoreDefaults() {
    m_TriggerLine = 0;
    m_TriggerLow = false;
    for (int index = 0; m_Table && index < SYNC_TABLE_SELECT_MAX; ++index) {
        const auto attributes = AttributesOf(index);
        if (!attributes) continue;
        kit::Value value = attributes->default_value;
        if (attributes->type == kit::EntryType::kDouble) value = static_cast<double>(attributes->default_value);
        if (attributes->type == kit::EntryType::kText) {
            value = std::string();
            Read(index, value);
        }
        m_Table->Store(index, std::move(value));
    }
}

void GigeCamera::Disconnect() {
    Session session;
    const platform::ScopedLock lock(m_Lock);
    m_Open = false;
    session.swap(m_Session);
}

void GigeCamera::Forget() {
    Session session;
    const platform::ScopedLock lock(m_Lock);
    session.swap(m_Session);
}

bool GigeCamera::Return(const FoundCamera& facts) {
    {
        const platform::ScopedLock lock(m_Lock);
        m_Facts = facts;
        if (!m_Open || (m_Session && !m_Session->Gone())) return true;
    }
    try {
        Session session = MakeSession();
        const platform::ScopedLock lock(m_Lock);
        if (m_Open) m_Session.swap(session);
        return true;
    } catch (const Failure& failure) {
        Later(m_Caretaker, [remains = failure.Remains()]() mutable { remains.reset(); });
        return false;
    }
}

// A camera that left a request unanswered is gone, also where Aravis has not noticed yet.
void GigeCamera::LookAfter(const Session& session) {
    if (!session->Gone()) return;
    if (const auto caretaker = m_Caretaker.lock()) caretaker->Post([this] { m_OnLoss(*this); });
}

void GigeCamera::Start(kit::FrameSink& sink, const kit::Run& run) {
    const Session session = Opened();
    if (!session) return;
    try {
        session->Acquire(sink, run, {m_TriggerLine, m_TriggerLow});
    } catch (const Failure& failure) {
        Complain(std::string("it can't run: ") + failure.what());
    }
    if (const std::string losses = session->Losses(); !losses.empty()) Complain(losses);
    LookAfter(session);
}

void GigeCamera::Stop() {
    if (const Session session = Opened()) session->Wake();
}

}  // namespace zel::gige
