// Lets the kernel report the system calls of a thread, and carries them out all the same.
#include "support/system_call_watch.h"

#include <linux/prctl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>

#include "support/realtime_guard.h"

#ifndef __x86_64__
#error "system calls are carried out in the calling convention of x86-64"
#endif

#ifndef SYS_USER_DISPATCH
#define SYS_USER_DISPATCH 2
#endif

// The only instructions whose system calls the kernel lets pass while the watch is on: those of the watch itself. The return
// from the handler has the form by which stack unwinding recognises a signal frame.
asm(R"(
.pushsection .text.system_call_watch, "ax", @progbits
.globl motion_test_watch_begin
.hidden motion_test_watch_begin
motion_test_watch_begin:
  nop
.globl motion_test_watch_return
.hidden motion_test_watch_return
.type motion_test_watch_return, @function
motion_test_watch_return:
  movq $15, %rax
  syscall
.globl motion_test_watch_call
.hidden motion_test_watch_call
.type motion_test_watch_call, @function
motion_test_watch_call:
  movq (%rdi), %rax
  movq 16(%rdi), %rsi
  movq 24(%rdi), %rdx
  movq 32(%rdi), %r10
  movq 40(%rdi), %r8
  movq 48(%rdi), %r9
  movq 8(%rdi), %rdi
  syscall
  ret
.globl motion_test_watch_end
.hidden motion_test_watch_end
motion_test_watch_end:
  nop
.popsection
)");

extern "C" {
extern const char motion_test_watch_begin[];
extern const char motion_test_watch_end[];
void motion_test_watch_return();
/// Number and six arguments in, the kernel's answer out.
long motion_test_watch_call(const long* call);
}

namespace motion::test {

namespace {

// Read by the kernel at every system call of the thread. The first-touch of a thread-local variable may allocate in a
// library, not in an executable; hence the model.
constinit thread_local volatile char t_selector __attribute__((tls_model("initial-exec"))) = SYSCALL_DISPATCH_FILTER_ALLOW;
constinit thread_local bool t_isPrepared __attribute__((tls_model("initial-exec"))) = false;

/// The kernel's own form of a signal action; that of the C library does not let the caller choose the way back.
struct KernelSigaction {
  void (*handler)(int, siginfo_t*, void*);
  unsigned long flags;
  void (*restorer)();
  std::uint64_t mask;
};

constexpr unsigned long SA_RESTORER_FLAG = 0x04000000;
constexpr long SYSCALL_INSTRUCTION_LENGTH = 2;

/// True for a call that means something else when it is made within a signal handler.
bool changesContext(long number) noexcept {
  switch (number) {
    case SYS_rt_sigreturn:
    case SYS_rt_sigprocmask:
    case SYS_sigaltstack:
    case SYS_clone:
    case SYS_clone3:
    case SYS_fork:
    case SYS_vfork:
      return true;
    default:
      return false;
  }
}

void onSystemCall(int /*signal*/, siginfo_t* info, void* context) noexcept {
  t_selector = SYSCALL_DISPATCH_FILTER_ALLOW;
  greg_t* registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
  if (info->si_code != SYS_USER_DISPATCH) {
    // A security filter of the machine forbids the call: it fails as the filter wants it to.
    registers[REG_RAX] = -ENOSYS;
    return;
  }
  const long number = info->si_syscall;
  RealtimeGuard::note(Violation::SYSTEM_CALL, nullptr, number);
  if (changesContext(number)) {
    registers[REG_RAX] = number;
    registers[REG_RIP] -= SYSCALL_INSTRUCTION_LENGTH;  // once more, with the watch off
    return;
  }
  const long call[] = {
      number,           registers[REG_RDI], registers[REG_RSI], registers[REG_RDX], registers[REG_R10], registers[REG_R8],
      registers[REG_R9]};
  registers[REG_RAX] = motion_test_watch_call(call);
  t_selector = SYSCALL_DISPATCH_FILTER_BLOCK;
}

[[noreturn]] void failWith(const char* operation) {
  throw std::runtime_error(
      std::string("this kernel cannot report system calls (") + operation + ": " + std::strerror(errno) +
      "), so the real-time promises cannot be checked on this machine. Linux 5.11 or newer on x86-64 with "
      "syscall user dispatch is needed, and no container or debugger that hides it");
}

}  // namespace

bool SystemCallWatch::isPossible() noexcept {
  return true;
}

void SystemCallWatch::prepareThread() {
  if (t_isPrepared) {
    return;
  }
  const KernelSigaction action{onSystemCall, SA_SIGINFO | SA_RESTORER_FLAG, motion_test_watch_return, 0};
  if (syscall(SYS_rt_sigaction, SIGSYS, &action, nullptr, sizeof(action.mask)) != 0) {
    failWith("rt_sigaction");
  }
  if (prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_ON, motion_test_watch_begin,
            motion_test_watch_end + 1 - motion_test_watch_begin, &t_selector) != 0) {
    failWith("prctl");
  }
  t_isPrepared = true;
}

void SystemCallWatch::start() noexcept {
  t_selector = SYSCALL_DISPATCH_FILTER_BLOCK;
}

void SystemCallWatch::stop() noexcept {
  t_selector = SYSCALL_DISPATCH_FILTER_ALLOW;
}

}  // namespace motion::test
