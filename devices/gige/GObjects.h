// Owners of what Aravis and GLib give out.
#ifndef GIGE_GOBJECTS_H
#define GIGE_GOBJECTS_H

#include <glib-object.h>

#include <memory>

namespace zel::gige {

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
template <class Object>
using ObjectPtr = std::unique_ptr<Object, Unref>;

struct Free {
    void operator()(void* memory) const { g_free(memory); }
};
template <class Object>
using MemoryPtr = std::unique_ptr<Object, Free>;

// Where a call leaves its error.
class ErrorSlot {
  public:
    ErrorSlot() = default;
    ~ErrorSlot() { g_clear_error(&m_Error); }
    ErrorSlot(const ErrorSlot&) = delete;
    ErrorSlot& operator=(const ErrorSlot&) = delete;

    operator GError**() { return &m_Error; }
    const GError* Get() const { return m_Error; }
    const char* Text() const { return m_Error && m_Error->message ? m_Error->message : "no reason given"; }

  private:
    GError* m_Error = nullptr;
};

}  // namespace zel::gige

#endif
