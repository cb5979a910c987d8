#ifndef SDK_CAMERATEARDOWN_H
#define SDK_CAMERATEARDOWN_H

namespace zel {

// Takes every camera object out of the tables, closes and deletes it and has its transport destroyed. Transports that
// several objects share are destroyed once, after the last of them; one that may be gone with its library is not called
// any more and destroyed first, so that a living one has ended its calls before the objects go.
void DestroyCameras();

}  // namespace zel

#endif
