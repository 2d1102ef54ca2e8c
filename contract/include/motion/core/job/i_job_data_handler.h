// Exchange of data between a command, its jobs and the host.
#pragma once

#include <cstdint>

#include "motion/core/i_section_mgr.h"
#include "motion/core/named_type.h"
#include "motion/core/results.h"

namespace motion::core::job {

/// How many elements a reader wants: one, the only mode that there is.
inline constexpr std::uint32_t READ_ONE = 1;

/// Finds records by type and section: those of the command first, then those of its motion object.
class IJobDataHandler {
 public:
  virtual ~IJobDataHandler() = default;

  /// Offers a record in a section; it stays the caller's and must live as long as the command. `who` names the caller.
  /// DataAlreadyPublished, UnknownSection. [prepare]
  virtual JobResult registerPublish(DataID id, SectionValue section, const char* who, IContainer* data) = 0;
  /// Finds a record that somebody offers in the section; `out` stays valid as long as the command. DataNotPublished.
  /// [prepare]
  virtual JobResult registerRead(DataID id, SectionValue section, std::uint32_t mode, const char* who, IContainer*& out) = 0;

 protected:
  IJobDataHandler() = default;
  IJobDataHandler(const IJobDataHandler&) = default;
  IJobDataHandler& operator=(const IJobDataHandler&) = default;
};

}  // namespace motion::core::job
