// The version text: one line for this library and one for each interface library that answers.
#ifndef SDK_VERSIONTEXT_H
#define SDK_VERSIONTEXT_H

namespace zel {

inline constexpr int kVersionTextCapacity = 1024;

// Composes the text anew and answers the one buffer that holds it; longer texts are cut to fit. A library that is not
// loaded is loaded for the question alone.
char* ComposeVersionText();

}  // namespace zel

#endif
