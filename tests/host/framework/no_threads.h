// Makes the system refuse new threads for a while.
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

namespace motion::host::framework::test {

/// While it exists, every new thread asks for a larger stack than there are addresses.
class NoThreads {
 public:
  NoThreads() {
    EXPECT_EQ(::pthread_getattr_default_np(&m_usual), 0);
    pthread_attr_t excessive;
    EXPECT_EQ(::pthread_attr_init(&excessive), 0);
    EXPECT_EQ(::pthread_attr_setstacksize(&excessive, std::size_t{1} << 50), 0);
    EXPECT_EQ(::pthread_setattr_default_np(&excessive), 0);
    ::pthread_attr_destroy(&excessive);
  }
  NoThreads(const NoThreads&) = delete;
  NoThreads& operator=(const NoThreads&) = delete;
  ~NoThreads() {
    ::pthread_setattr_default_np(&m_usual);
    ::pthread_attr_destroy(&m_usual);
  }

 private:
  pthread_attr_t m_usual{};
};

}  // namespace motion::host::framework::test
