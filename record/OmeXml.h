// What other programs read of a recording: OME-XML of the schema 2016-06.
#ifndef ZEL_OMEXML_H
#define ZEL_OMEXML_H

#include <span>
#include <string>

#include "record/RecordingFacts.h"

namespace zel::record {

// planes: with the time and exposure of each frame.
std::string OmeXml(const RecordingFacts& facts, std::span<const FrameFacts> frames, const RecordingEnd& end,
                   bool planes = true);

}  // namespace zel::record

#endif
