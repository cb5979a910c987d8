// No window system is taken for granted here: progress is shown by the application's callback alone.
#include "util/ProgressWindow.h"

namespace zel {

ProgressWindowFactory SystemProgressWindow() { return nullptr; }

}  // namespace zel
