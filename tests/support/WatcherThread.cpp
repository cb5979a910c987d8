// GoogleTest on Windows starts a thread of its own at the first trace, skip or failure. Wine loses a process that ends
// while a thread of it is being started (a segmentation fault after "PASSED"), so that thread is started before the
// first test and not in the last one.
#include <gtest/gtest.h>

#include <thread>

namespace {

class WatcherThread : public testing::Environment {
  public:
    void SetUp() override {
        SCOPED_TRACE("starts the thread");
        std::thread([] {}).join();  // by now that one runs as well
    }
};

const testing::Environment* const s_WatcherThread = testing::AddGlobalTestEnvironment(new WatcherThread);

}  // namespace
