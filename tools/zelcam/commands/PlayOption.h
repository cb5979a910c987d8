// zelcam --play FILE[,once|loop[:RATE]]: has the simulated cameras play a recording.
#ifndef ZELCAM_PLAYOPTION_H
#define ZELCAM_PLAYOPTION_H

#include <string>

namespace zelcam {

// Sets the simulated cameras up, which must not be loaded yet. Throws Failure when the file can't be played.
void Play(const std::string& wanted);

}  // namespace zelcam

#endif
