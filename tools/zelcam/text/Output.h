// The standard output. Text that does not arrive there is a failure.
#ifndef ZELCAM_OUTPUT_H
#define ZELCAM_OUTPUT_H

#include <fmt/format.h>

#include <string_view>
#include <utility>

namespace zelcam {

// Both throw Failure when something can't be written.
void WriteOutput(std::string_view text);
void FlushOutput();

template <class... Values>
void Print(fmt::format_string<Values...> format, Values&&... values) {
    WriteOutput(fmt::format(format, std::forward<Values>(values)...));
}

}  // namespace zelcam

#endif
