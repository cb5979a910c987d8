// What `zelcam calibrate` can do, each with a command line of its own.
#ifndef ZELCAM_CALIBRATEACTIONS_H
#define ZELCAM_CALIBRATEACTIONS_H

#include <memory>

#include "tools/zelcam/commands/Command.h"

namespace zelcam {

std::unique_ptr<Command> MakeCalibrateShow();
std::unique_ptr<Command> MakeCalibrateCheck();
std::unique_ptr<Command> MakeCalibrateDownload();
std::unique_ptr<Command> MakeCalibrateExport();
std::unique_ptr<Command> MakeCalibrateImport();
std::unique_ptr<Command> MakeCalibrateWrite();
std::unique_ptr<Command> MakeCalibrateSeams();

}  // namespace zelcam

#endif
