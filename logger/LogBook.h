// The logs that were granted. A log is what a handle stands for: a name at an outlet.
#ifndef LOGGER_LOGBOOK_H
#define LOGGER_LOGBOOK_H

#include <map>
#include <string>
#include <utility>

#include "logger/LogOutlet.h"
#include "platform/Mutex.h"

namespace zel::logger {

struct Log {
    std::string name;  // "source" or "source[instance]"
    const LogOutlet* outlet;
};

class LogBook {
  public:
    // The log of this name at the outlet that ZEL_LOG asks for now; null when it asks for none. The same names and the
    // same value get the same log. Logs stay until the process ends: a caller gives one back by its names only,
    // which several callers may share.
    Log* Find(const char* source_name, const char* instance_name);

  private:
    const LogOutlet& Outlet(const std::string& value) ZEL_REQUIRES(m_Lock);

    platform::Mutex m_Lock;
    std::map<std::string, LogOutlet> m_Outlets ZEL_GUARDED_BY(m_Lock);                      // by the value of ZEL_LOG
    std::map<std::pair<std::string, const LogOutlet*>, Log> m_Logs ZEL_GUARDED_BY(m_Lock);  // by name and outlet
};

}  // namespace zel::logger

#endif
