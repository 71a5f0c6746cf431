#pragma once

#include <sys/types.h>

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "benchmarks/Baseline.h"
#include "benchmarks/Result.h"
#include "benchmarks/TeamsReader.h"
#include "rehearsal/Session.h"

namespace hushbox {

/// What it takes to find Teams' microphone button on one page for the first time: Hushbox and the
/// other programs take turns. Each sample has new programs.
class LookSamples {
 public:
  /// `hasButton` is what every program must find.
  LookSamples(const rehearsal::Session& session, pid_t browser, bool hasButton)
      : session_(session), browser_(browser), hasButton_(hasButton) {}

  void take(int repeats);
  /// Looks with Hushbox only, because the others would take minutes.
  void takeAlone(int repeats);

  void report(const std::string& name, const std::optional<Result::Goal>& goal = {}) const;
  /// A point of the plot by the number of elements.
  void reportPoint(int elements) const;

 private:
  void lookWithHushbox();
  void look(const std::string& name, std::unique_ptr<Baseline> baseline);

  const rehearsal::Session& session_;
  const pid_t browser_;
  const bool hasButton_;
  TeamsReaderSamples ours_;
  Result::Samples held_;
  std::map<std::string, Result::Samples> times_;
  std::map<std::string, Result::Samples> heldByOthers_;
};

}  // namespace hushbox
