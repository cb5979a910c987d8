/// @file
/// Saving images to disk.
#ifndef ZEL_UTIL_H
#define ZEL_UTIL_H

#include "ZelPlatform.h"

class ZelImage;

/// Saves images to disk. Obtained from ZelSDK::GetUtil(); one object for the whole process, never deleted by the
/// application. May be called on any thread; takes no lock.
class ZelUtil {
  public:
    /// Saves `image` as an uncompressed 16-bit grey TIFF file, replacing an existing file. The file holds the raw
    /// counts: nothing is scaled.
    /// @param file_name path of the file, in the system's 8-bit encoding: on Windows the code page, whose characters
    ///                  alone a name can have; on Linux its bytes as they are, usually UTF-8
    /// @param image     any image handed out by a camera; null is refused
    /// @return true when the file was written; false for a null image, one whose geometry doesn't fit its buffer
    ///         (logged) and a file that can't be opened. A write that fails later (a full disk) is not noticed.
    virtual bool SaveTIFF(const char* file_name, ZelImage* image) = 0;

    /// Saves `image` as a 16-bit greyscale PNG file, replacing an existing file; raw counts, nothing scaled.
    /// @param file_name path of the file, as in SaveTIFF()
    /// @param image     any image handed out by a camera; null is refused
    /// @return true when the file was written; false for a null or empty image, one whose geometry doesn't fit its
    ///         buffer (logged), when memory runs out, or when the file can't be opened
    virtual bool SavePNG(const char* file_name, ZelImage* image) = 0;

    ZEL_INTERFACE_DESTRUCTOR(ZelUtil)
};

#endif
