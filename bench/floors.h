// Floors: the least that the hardware needs for the same work. Each figure is printed as a multiple of its floor.
#pragma once

#include <cstdint>
#include <memory>

namespace motion::bench {

/// A signal as two counters, reached by one virtual call.
class ISignalFloor {
 public:
  virtual ~ISignalFloor() = default;
  virtual bool get(std::uint32_t id) = 0;    ///< two byte loads and a compare
  virtual void set(std::uint32_t id) = 0;    ///< two byte loads, a compare and a byte store
  virtual void reset(std::uint32_t id) = 0;  ///< a byte load and a byte store
};

/// Made where the compiler of a benchmark does not see which class it is.
[[nodiscard]] std::unique_ptr<ISignalFloor> makeSignalFloor();
/// The same within an uncontended mutex: what exclusion among several callers costs.
[[nodiscard]] std::unique_ptr<ISignalFloor> makeLockedSignalFloor();

/// A trace that is switched off: a call and a branch on an atomic flag.
void traceFloor(const char* format, unsigned int value) noexcept;
/// An entry: one vsnprintf of the text, and one sendmsg of it to the datagram socket.
void entryFloor(int socket, const char* format, ...) noexcept __attribute__((format(printf, 2, 3)));

}  // namespace motion::bench
