// What goes wrong with a recording: a sentence for the user.
#ifndef ZEL_RECORDERROR_H
#define ZEL_RECORDERROR_H

#include <stdexcept>

namespace zel::record {

class RecordError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// There is a file of this name already.
class FileTakenError : public RecordError {
  public:
    using RecordError::RecordError;
};

// The disk is full, or the file may grow no further.
class DiskFullError : public RecordError {
  public:
    using RecordError::RecordError;
};

}  // namespace zel::record

#endif
