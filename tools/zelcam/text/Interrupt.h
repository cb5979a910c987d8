// The user's wish to end a running command.
#ifndef ZELCAM_INTERRUPT_H
#define ZELCAM_INTERRUPT_H

namespace zelcam {

// From now on Ctrl-C makes Interrupted() true instead of ending the program; a second one ends it.
void CatchInterrupts();
bool Interrupted();

}  // namespace zelcam

#endif
