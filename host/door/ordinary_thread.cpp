#include "host/door/ordinary_thread.h"

#include <sched.h>

#include <csignal>
#include <cstddef>
#include <system_error>
#include <utility>

namespace motion::host::door {

namespace {

constexpr std::size_t STACK_SIZE = 512 * 1024;

class Attributes {
 public:
  Attributes() {
    pthread_attr_init(&m_attributes);
    const sched_param ordinary{};
    sigset_t all;
    sigfillset(&all);
    pthread_attr_setstacksize(&m_attributes, STACK_SIZE);
    pthread_attr_setinheritsched(&m_attributes, PTHREAD_EXPLICIT_SCHED);
    pthread_attr_setschedpolicy(&m_attributes, SCHED_OTHER);
    pthread_attr_setschedparam(&m_attributes, &ordinary);
    pthread_attr_setsigmask_np(&m_attributes, &all);
  }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  ~Attributes() { pthread_attr_destroy(&m_attributes); }

  [[nodiscard]] const pthread_attr_t* get() const noexcept { return &m_attributes; }

 private:
  pthread_attr_t m_attributes{};
};

}  // namespace

OrdinaryThread::OrdinaryThread(std::function<void()> work) : m_work(std::move(work)) {
  const Attributes attributes;
  if (const int error = pthread_create(&m_thread, attributes.get(), run, this); error != 0) {
    throw std::system_error(error, std::generic_category(), "no thread for the door");
  }
}

OrdinaryThread::~OrdinaryThread() {
  pthread_join(m_thread, nullptr);
}

void* OrdinaryThread::run(void* self) noexcept {
  static_cast<OrdinaryThread*>(self)->m_work();
  return nullptr;
}

}  // namespace motion::host::door
