#include "logger/LogBook.h"

#include <cstdlib>

namespace zel::logger {

Log* LogBook::Find(const char* source_name, const char* instance_name) {
    const platform::ScopedLock lock(m_Lock);
    const char* value = std::getenv("ZEL_LOG");
    const LogOutlet& outlet = Outlet(value ? value : "");
    if (!outlet.Open()) return nullptr;
    std::string name = source_name;
    if (*instance_name) name += std::string("[") + instance_name + "]";
    return &m_Logs.try_emplace({name, &outlet}, Log{name, &outlet}).first->second;
}

const LogOutlet& LogBook::Outlet(const std::string& value) { return m_Outlets.try_emplace(value, value).first->second; }

}  // namespace zel::logger
