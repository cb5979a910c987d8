// A GigE Vision camera as a camera of the kit: the parameter table in terms of the features of GenICam's naming
// convention. docs/gige.md has the list.
#ifndef GIGE_GIGECAMERA_H
#define GIGE_GIGECAMERA_H

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "devices/gige/CameraSession.h"
#include "devices/gige/Caretaker.h"
#include "devices/gige/Discovery.h"
#include "devices/kit/BackEnd.h"
#include "platform/Mutex.h"

namespace zel::gige {

class GigeCamera : public kit::BackEnd {
  public:
    using LossHandler = std::function<void(GigeCamera&)>;

    // `lost` is a task of the caretaker's.
    GigeCamera(FoundCamera facts, std::weak_ptr<Caretaker> caretaker, LossHandler lost);

    kit::Description Describe() const override;
    int Connect() override;
    void PowerOn(kit::ParameterTable& table) override;
    void Disconnect() override;
    std::optional<kit::Attributes> AttributesOf(int index) override;
    int Read(int index, kit::Value& value) override;
    int Write(int index, kit::Value& value) override;
    std::optional<std::string> Text(std::string_view command) override;
    void Start(kit::FrameSink& sink, const kit::Run& run) override;
    void Stop() override;

    // It was found under this address. What an open one had is lost: it is opened anew. False when that failed.
    bool Return(const FoundCamera& facts);
    void Forget();  // an open one is gone
    bool IsOpen() const;
    bool IsLost() const;  // an open one that is gone, and not back yet

  private:
    using Session = std::shared_ptr<CameraSession>;

    FoundCamera Facts() const;
    Session Opened() const;
    Session MakeSession();
    void Complain(const std::string& text) const;
    void LookAfter(const Session& session);
    void StoreDefaults();

    std::optional<kit::Attributes> FrameAttributes(int index) const;
    std::optional<kit::Attributes> FeatureAttributes(int index, CameraSession& session);
    int ReadText(int index, CameraSession& session, std::string& text) const;
    std::string SetFeature(CameraSession& session, const std::string& name, const std::string& value);

    const std::weak_ptr<Caretaker> m_Caretaker;
    const LossHandler m_OnLoss;

    mutable platform::Mutex m_Lock;
    FoundCamera m_Facts ZEL_GUARDED_BY(m_Lock);
    Session m_Session ZEL_GUARDED_BY(m_Lock);
    bool m_Open ZEL_GUARDED_BY(m_Lock) = false;  // as the host has it; a lost camera has no session meanwhile

    kit::ParameterTable* m_Table = nullptr;  // the kit's, touched where it allows it
    std::atomic<int> m_TriggerLine = 0;
    std::atomic<bool> m_TriggerLow = false;
};

}  // namespace zel::gige

#endif
