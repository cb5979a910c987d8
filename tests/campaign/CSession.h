// The same through the C interface.
#ifndef TESTS_CAMPAIGN_CSESSION_H
#define TESTS_CAMPAIGN_CSESSION_H

#include "include/zel.h"
#include "tests/campaign/Session.h"

namespace zel::campaign {

class CSession final : public Session {
  public:
    using Session::Session;
    void DestroySdk() override;

  private:
    void Calls(bool close_sdk) override;
    void Camera();
    void Run(int frames, int trigger);
    void TakeFrame();
    // Whether the call was a success.
    bool Ok(const char* name, const std::function<zel_status()>& call);

    zel_sdk* m_Opened = nullptr;
    zel_camera* m_OpenedCamera = nullptr;
};

}  // namespace zel::campaign

#endif
