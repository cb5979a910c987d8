// The features of an open camera by name: numbers whatever their kind, texts, choices, commands. Aravis' objects are
// not made for several threads: every access to one goes through here, one at a time. What goes wrong is told as a
// text, and a camera that left all repetitions of a request unanswered is not asked again, so that nobody waits for it
// twice.
#ifndef GIGE_GENICAMFEATURES_H
#define GIGE_GENICAMFEATURES_H

#include <arv.h>

#include <atomic>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "devices/gige/GObjects.h"
#include "platform/Mutex.h"

namespace zel::gige {

struct Bounds {
    double minimum;
    double maximum;
};

class GenicamFeatures {
  public:
    using Call = std::function<void(ArvCamera* camera, GError** error)>;

    explicit GenicamFeatures(ArvCamera* camera) : m_Camera(camera) {}

    // Does something with the camera that is in none of the operations below. False when it failed.
    bool Do(const char* what, const Call& call);

    // The first of the names that is a number, is there and can be read now; empty: none.
    std::string FirstNumber(std::initializer_list<const char*> names);
    bool Has(const char* name);
    bool HasChoice(const char* name, const char* choice);

    std::optional<double> Number(const std::string& name);
    std::optional<Bounds> BoundsOf(const std::string& name);
    std::optional<std::string> Text(const char* name);
    std::vector<std::string> Choices(const char* name);

    // A number that lies between two steps of the camera becomes the one below.
    bool SetNumber(const std::string& name, double value);
    bool SetText(const char* name, const std::string& text);  // a text or a choice
    bool Execute(const char* name);

    // Sets what is there to be set; a camera without the feature, or without the choice, stays as it is.
    void Prefer(const char* name, const char* choice);
    void Prefer(const char* name, double value);

    // Why the last operation that failed did.
    std::string LastError();
    // Whether the camera is gone: it did not answer, or its control was lost.
    bool Silent() const { return m_Silent; }
    void BecomeSilent(const std::string& reason);

  private:
    ArvGcNode* Node(const std::string& name) ZEL_REQUIRES(m_Lock);
    bool Failed(const char* what, const ErrorSlot& error) ZEL_REQUIRES(m_Lock);

    ArvCamera* const m_Camera;
    platform::Mutex m_Lock;
    platform::Mutex m_ErrorLock;  // of its own: the reason can be asked for while the camera is waited for
    std::string m_LastError ZEL_GUARDED_BY(m_ErrorLock);
    std::atomic<bool> m_Silent = false;
};

}  // namespace zel::gige

#endif
