// The user's wish to end a running command.
#ifndef ZELCAM_INTERRUPT_H
#define ZELCAM_INTERRUPT_H

#include <string>

namespace zelcam {

// From now on Ctrl-C and the like make Interrupted() true instead of ending the program; a second one ends it.
void CatchInterrupts();
bool Interrupted();

// Throws Failure when the user wanted the end; its exit code tells by which signal. done: what there is by now.
void FailIfInterrupted(const std::string& done);

}  // namespace zelcam

#endif
