// What is fed with arbitrary bytes. A target returns when all is well, whatever the bytes are; it aborts with a sentence
// when a promise is broken.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace motion::fuzz {

using Bytes = std::span<const std::uint8_t>;

/// The decoders of command and option parameters. The first byte chooses the command or option, the rest is the buffer.
void fuzzParameters(Bytes bytes);
/// The component's nodes: operation, type of the value, length of the address, address, value.
void fuzzNodes(Bytes bytes);
/// The reader of scenario files.
void fuzzScenario(Bytes bytes);
/// What clients may write to the door of a real-time run.
void fuzzDoor(Bytes bytes);

struct Target {
  std::string_view name;  ///< of its corpus, too
  void (*run)(Bytes bytes);
};
[[nodiscard]] const std::vector<Target>& targets();

/// Prints the sentence and aborts unless the promise is kept.
void require(bool isKept, std::string_view promise);

}  // namespace motion::fuzz
