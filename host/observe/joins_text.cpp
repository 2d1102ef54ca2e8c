// The joins of a run in words.
#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "host/observe/joins.h"

namespace motion::host::observe {

namespace {

class JoinReport {
 public:
  explicit JoinReport(const RunRecord& record) : m_record(record) {}

  std::string write() {
    for (const JoinOccurrence& join : findJoins(m_record)) {
      headline(join);
      for (const JoinMember& member : join.members) {
        memberLine(member);
      }
    }
    return std::move(m_text);
  }

 private:
  void headline(const JoinOccurrence& join) {
    std::vector<std::string_view> names;
    std::ranges::transform(join.group, std::back_inserter(names),
                           [this](std::uint32_t object) { return std::string_view(m_record.objects.at(object).name); });
    fmt::format_to(out(), "  [{}] no. {}: ", fmt::join(names, ", "), join.occurrence);
    if (join.completed == 0) {
      fmt::format_to(out(), "not completed\n");
      return;
    }
    fmt::format_to(out(), "completed in cycle {} ({:.4f} s)", join.completed, cycleStart(m_record, join.completed));
    // Without the events that were lost nobody knows who arrived when.
    if (const JoinMember* const last = join.last(); last != nullptr) {
      fmt::format_to(out(), ", {} came last in cycle {}", m_record.objects.at(last->object).name, last->arrived);
    }
    m_text += '\n';
  }

  void memberLine(const JoinMember& member) {
    const std::string name = commandText(m_record, member.object, member.number);
    if (member.number == 0) {
      fmt::format_to(out(), "    {:<14} has no such join\n", name);
    } else if (member.active == 0) {
      fmt::format_to(out(), "    {:<14} {}\n", name, member.aborted ? "was aborted before it began" : "never began");
    } else {
      const std::string arrival = member.arrived != 0 ? fmt::format("arrived in cycle {}", member.arrived) : "never arrived";
      fmt::format_to(out(), "    {:<14} {}, waited {} for preparation, {} for members{}\n", name, arrival,
                     time(member.forPreparation(m_record.cycles)), time(member.forMembers(m_record.cycles)),
                     member.aborted ? ", aborted" : "");
    }
  }

  [[nodiscard]] std::string time(std::uint64_t cycles) const {
    return fmt::format("{:.3f} ms", static_cast<double>(cycles) * m_record.cycleTime * 1e3);
  }
  [[nodiscard]] std::back_insert_iterator<std::string> out() { return std::back_inserter(m_text); }

  const RunRecord& m_record;
  std::string m_text;
};

}  // namespace

std::string joinsText(const RunRecord& record) {
  return JoinReport(record).write();
}

}  // namespace motion::host::observe
