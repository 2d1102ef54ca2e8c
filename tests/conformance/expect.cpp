// What a check compares, and how it says what differs.
#include "conformance/expect.h"

namespace motion::conformance {
namespace {

std::string g_remarks;

}  // namespace

void remark(const std::string& text) {
  g_remarks += (g_remarks.empty() ? "" : ", ") + text;
}

const std::string& remarks() {
  return g_remarks;
}

void expectHolds(std::string_view what, std::string_view text, std::string_view piece) {
  if (text.find(piece) == std::string_view::npos) {
    throw Mismatch(std::string(what), fmt::format("a text that holds {}", show(piece)), show(text));
  }
}

}  // namespace motion::conformance
