#include "record/PageTags.h"

namespace zel::record {

namespace {

// What is gained by more is a few per cent of the size, for a multiple of the time.
constexpr int kDeflateLevel = 1;
constexpr int kZstdLevel = 1;

}  // namespace

void KnowPrivateTags(TIFF* tiff) {
    const auto text = [](std::uint32_t tag, const char* name) {
        return TIFFFieldInfo{tag,          TIFF_VARIABLE2, TIFF_VARIABLE2, TIFF_ASCII,
                             FIELD_CUSTOM, true,           true,           const_cast<char*>(name)};
    };
    const TIFFFieldInfo fields[] = {text(kTagRecording, "ZelRecording"), text(kTagFrame, "ZelFrame"),
                                    text(kTagEnd, "ZelEnd")};
    TIFFMergeFieldInfo(tiff, fields, 3);
}

void SetPrivateTag(TIFF* tiff, std::uint32_t tag, const std::string& text) {
    SetTag(tiff, tag, static_cast<std::uint32_t>(text.size() + 1), text.c_str());
}

void SetLayoutTags(TIFF* tiff, unsigned width, unsigned height, Compression compression) {
    SetTag(tiff, TIFFTAG_IMAGEWIDTH, width);
    SetTag(tiff, TIFFTAG_IMAGELENGTH, height);
    SetTag(tiff, TIFFTAG_BITSPERSAMPLE, 16);
    SetTag(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    SetTag(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    SetTag(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    SetTag(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    SetTag(tiff, TIFFTAG_ROWSPERSTRIP, height);
    if (compression == Compression::kNone) return SetTag(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (compression == Compression::kZstd) {
        SetTag(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ZSTD);
        SetTag(tiff, TIFFTAG_ZSTD_LEVEL, kZstdLevel);
    } else {
        SetTag(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
        SetTag(tiff, TIFFTAG_ZIPQUALITY, kDeflateLevel);
    }
    SetTag(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
}

}  // namespace zel::record
