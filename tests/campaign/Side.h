// Whose code a thread runs: the SDK's, or that of the application and the plug-in around it. Whoever calls across says
// so.
#ifndef TESTS_CAMPAIGN_SIDE_H
#define TESTS_CAMPAIGN_SIDE_H

#include <utility>

namespace zel::campaign {

enum class Side { kAround, kSdk };
inline thread_local Side t_Side = Side::kAround;

class Crossing {
  public:
    explicit Crossing(Side to) : m_Before(std::exchange(t_Side, to)) {}
    ~Crossing() { t_Side = m_Before; }
    Crossing(const Crossing&) = delete;
    Crossing& operator=(const Crossing&) = delete;

  private:
    const Side m_Before;
};

}  // namespace zel::campaign

#endif
