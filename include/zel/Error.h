/// @file
/// Errors of the C++ layer.
#ifndef ZEL_LAYER_ERROR_H
#define ZEL_LAYER_ERROR_H

#include <stdexcept>
#include <string>
#include <utility>

namespace zel {

/// What kind of failure an Error is, for programs that react to it.
enum class ErrorKind {
    failed,            ///< another reason than those below
    invalid_argument,  ///< a name, number or text that can't be meant; nothing was sent to a camera
    no_camera,         ///< there is no such camera, or it can't be opened
    refused,           ///< the camera or the SDK refused a value, a command or the start
    timeout,           ///< no frame came in time
    link_lost,         ///< the camera was unplugged or switched off
    output,            ///< a file can't be written
};

/// Thrown where something that was asked for could not be had. what() is one line, "problem: why; hint"; empty parts
/// are left out.
class Error : public std::runtime_error {
  public:
    /// From its parts; empty ones are left out of what().
    Error(ErrorKind kind, std::string problem, std::string why = {}, std::string hint = {})
        : std::runtime_error(problem + (why.empty() ? "" : ": " + why) + (hint.empty() ? "" : "; " + hint)),
          m_Kind(kind),
          m_Problem(std::move(problem)),
          m_Why(std::move(why)),
          m_Hint(std::move(hint)) {}

    /// What kind of failure it is.
    ErrorKind kind() const noexcept { return m_Kind; }
    /// What went wrong: "camera 0 can't be opened".
    const std::string& problem() const noexcept { return m_Problem; }
    /// Why, when that is known.
    const std::string& why() const noexcept { return m_Why; }
    /// What can be done about it.
    const std::string& hint() const noexcept { return m_Hint; }

  private:
    ErrorKind m_Kind;
    std::string m_Problem;
    std::string m_Why;
    std::string m_Hint;
};

}  // namespace zel

#endif
