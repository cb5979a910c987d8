#include "tools/zelcam/text/Output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tools/zelcam/text/Failure.h"

namespace zelcam {

namespace {
[[noreturn]] void FailToPrint() {
    throw Failure("the standard output can't be written", std::strerror(errno), "what it should hold is incomplete",
                  kOutput);
}
}  // namespace

void WriteOutput(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) FailToPrint();
}

void FlushOutput() {
    if (std::fflush(stdout) != 0) FailToPrint();
}

}  // namespace zelcam
