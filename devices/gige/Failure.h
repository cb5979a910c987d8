// Why something can't be done, and the code that the host gets.
#ifndef GIGE_FAILURE_H
#define GIGE_FAILURE_H

#include <memory>
#include <stdexcept>
#include <string>

namespace zel::gige {

class Failure : public std::runtime_error {
  public:
    // code: ZEL_ERROR_...; remains: what takes seconds to let go of
    Failure(int code, const std::string& text, std::shared_ptr<void> remains = nullptr)
        : std::runtime_error(text), m_Code(code), m_Remains(std::move(remains)) {}
    int Code() const { return m_Code; }
    std::shared_ptr<void> Remains() const { return m_Remains; }

  private:
    int m_Code;
    std::shared_ptr<void> m_Remains;
};

}  // namespace zel::gige

#endif
