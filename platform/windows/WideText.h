// Between this tree's UTF-8 and the system's 16-bit characters.
#ifndef PLATFORM_WINDOWS_WIDETEXT_H
#define PLATFORM_WINDOWS_WIDETEXT_H

#include <string>
#include <string_view>

namespace zel::platform {

// Bytes that are no UTF-8 become replacement characters.
std::wstring Wide(std::string_view utf8);
std::string Utf8(std::wstring_view wide);

}  // namespace zel::platform

#endif
