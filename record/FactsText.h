// The facts of a recording as the JSON that stands in its private tags.
#ifndef ZEL_FACTSTEXT_H
#define ZEL_FACTSTEXT_H

#include <string>

#include "record/RecordingFacts.h"

namespace zel::record {

std::string ToText(const RecordingFacts& facts);
std::string ToText(const FrameFacts& facts);
std::string ToText(const RecordingEnd& end);

// What a text lacks keeps its default. False: it is no such text.
bool FromText(const std::string& text, RecordingFacts& facts);
bool FromText(const std::string& text, FrameFacts& facts);
bool FromText(const std::string& text, RecordingEnd& end);

}  // namespace zel::record

#endif
