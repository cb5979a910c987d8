#include "camera/ErrorNames.h"

#include <cstddef>
#include <iterator>

namespace zel {

namespace {
constexpr const char* kErrorNames[] = {
    "ZEL_NO_ERROR",
    "ZEL_ERROR_UNSUPPORTED",
    "ZEL_ERROR_PARAMETER_UNSUPPORTED",
    "ZEL_ERROR_INVALID_ROI",
    "ZEL_ERROR_INVALID_BINNING",
    "ZEL_ERROR_INVALID_PARAMETER",
    "ZEL_ERROR_INVALID_PARAMETER_SIZE",
    "ZEL_ERROR_PARAMETER_UNDERFLOW",
    "ZEL_ERROR_PARAMETER_OVERFLOW",
    "ZEL_ERROR_CAMERA_COMM_FAILURE",
    "ZEL_ERROR_CAMERA_INVALID_DATA",
    "ZEL_ERROR_NULL_POINTER_SUPPLIED",
    "ZEL_ERROR_CAMERA_INVALID_DATA_SIZE_OR_TYPE",
    "ZEL_ERROR_INVALID_NUMBER_OF_IMAGE_BUFFERS",
    "ZEL_ERROR_IMAGE_BUFFER_ALLOCATION_FAILURE",
    "ZEL_ERROR_TOO_MANY_IMAGE_BUFFERS",
    "ZEL_ERROR_INVALID_BINNING_SELECTIONZEL_ERROR_UNKNOWN",
    nullptr,
};
}  // namespace

const char* ErrorName(int code) {
    if (code < 0 || static_cast<std::size_t>(code) >= std::size(kErrorNames)) return nullptr;
    return kErrorNames[code];
}

}  // namespace zel
