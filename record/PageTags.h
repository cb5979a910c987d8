// The tags of a recording's pages.
#ifndef ZEL_PAGETAGS_H
#define ZEL_PAGETAGS_H

#include <tiffio.h>

#include <cstdint>
#include <string>

#include "record/RecordError.h"
#include "record/StripEncoder.h"

namespace zel::record {

// Private ones; RecordingFacts.h says what they hold.
inline constexpr std::uint32_t kTagRecording = 65200;
inline constexpr std::uint32_t kTagFrame = 65201;
inline constexpr std::uint32_t kTagEnd = 65202;

// Makes the private tags known to libtiff, which forgets them from page to page.
void KnowPrivateTags(TIFF* tiff);

template <class... Values>
void SetTag(TIFF* tiff, std::uint32_t tag, Values... values) {
    if (TIFFSetField(tiff, tag, values...) != 1) throw RecordError("tag " + std::to_string(tag) + " is not taken");
}
void SetPrivateTag(TIFF* tiff, std::uint32_t tag, const std::string& text);

// What says how the samples lie in a strip.
void SetLayoutTags(TIFF* tiff, unsigned width, unsigned height, Compression compression);

}  // namespace zel::record

#endif
