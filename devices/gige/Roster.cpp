#include "devices/gige/Roster.h"

#include <algorithm>

namespace zel::gige {

namespace {

// An answer may be lost on its way: one miss is none.
constexpr int kMissesOfOneThatIsGone = 2;

}  // namespace

// A camera is known by maker, model and serial number, wherever it comes up. Two with one serial number are told apart
// by their addresses, so those who are where they were come first.
void Roster::Update(const std::vector<FoundCamera>& found) {
    std::vector<const FoundCamera*> seen(m_Known.size(), nullptr);
    std::vector<bool> taken(found.size(), false);
    const auto match = [&](bool same_address) {
        for (std::size_t k = 0; k < seen.size(); ++k) {
            const Known& known = m_Known[k];
            const bool may_move = !known.plugged || !known.camera->IsOpen();
            for (std::size_t i = 0; i < found.size() && !seen[k]; ++i) {
                if (taken[i] || !known.facts.SameMake(found[i])) continue;
                if (same_address ? known.facts.address != found[i].address : !may_move) continue;
                seen[k] = &found[i];
                taken[i] = true;
            }
        }
    };
    match(true);
    match(false);
    for (std::size_t k = 0; k < seen.size(); ++k) {
        if (seen[k]) {
            See(m_Known[k], *seen[k]);
        } else {
            Miss(m_Known[k]);
        }
    }
    for (std::size_t i = 0; i < found.size(); ++i) {
        if (!taken[i]) Add(found[i]);
    }
}

void Roster::Add(const FoundCamera& facts) {
    auto camera = std::make_unique<GigeCamera>(facts, m_Caretaker, [this](GigeCamera& lost) { Lose(lost); });
    GigeCamera* const raw = camera.get();
    m_Known.reserve(m_Known.size() + 1);
    const int number = m_Cameras.Add(std::move(camera));
    if (number >= 0) m_Known.push_back({facts, raw, number, true, 0});
}

void Roster::See(Known& known, const FoundCamera& facts) {
    known.facts = facts;
    known.misses = 0;
    // One that does not let itself be opened again is looked at again after the next look.
    if (known.plugged && known.camera->IsOpen()) return;
    if (!known.camera->Return(facts) || known.plugged) return;
    known.plugged = true;
    m_Cameras.SetPlugged(known.number, true);
}

// Whether an open camera is there is for its heartbeat to say.
void Roster::Miss(Known& known) {
    if (!known.plugged || known.camera->IsOpen() || ++known.misses < kMissesOfOneThatIsGone) return;
    known.plugged = false;
    m_Cameras.SetPlugged(known.number, false);
}

// The news may be old: told more than once, and the camera is back.
void Roster::Lose(GigeCamera& camera) {
    if (!camera.IsLost()) return;
    const auto known = std::ranges::find(m_Known, &camera, &Known::camera);
    if (known == m_Known.end() || !known->plugged) return;
    known->plugged = false;
    m_Cameras.SetPlugged(known->number, false);
    camera.Forget();
}

}  // namespace zel::gige
