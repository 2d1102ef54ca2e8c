// Collects the medians of a run and prints them beside their floors.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <optional>
#include <string>

namespace motion::bench {

class Results : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;

  /// The table of figures and the verdicts on the targets.
  void print() const;
  /// False when a benchmark failed or was left out.
  [[nodiscard]] bool isComplete() const;

 private:
  struct Median {
    double time = 0.0;       ///< [ns] per iteration
    double deviation = 0.0;  ///< of the repetitions, relative to their mean
  };

  [[nodiscard]] std::optional<double> time(const std::string& benchmark) const;
  void printRow(const std::string& title, const std::string& benchmark, const std::string& floor, double objects) const;
  void printTargets() const;
  void printJoinTargets() const;
  void printPathTargets() const;
  void printDataLayerTargets() const;
  /// What opening a join costs beside what any implementation of the meeting has to do.
  void printJoinRequired() const;

  std::map<std::string, Median> m_medians;
  bool m_hasFailed = false;
};

}  // namespace motion::bench
