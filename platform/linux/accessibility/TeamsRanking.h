#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "platform/linux/accessibility/LabelRefresher.h"
#include "platform/linux/accessibility/TeamsDocument.h"

namespace hushbox {

/// Which of several documents of Teams comes first. Main thread only.
///
/// In this order: one in a program that records from the speakerphone; the page in front; the page
/// that was in front last; the one with the strongest evidence. A pre-join page that was left open
/// so does not hide the meeting.
class TeamsRanking {
 public:
  /// Returns the identifiers of the processes that record from the speakerphone now. A browser
  /// records in a process that it has started.
  using RecordingProcesses = std::function<std::vector<std::int32_t>()>;

  /// Without `recordingProcesses`, nothing is known to record.
  TeamsRanking(const LabelRefresher& labels, RecordingProcesses recordingProcesses)
      : labels_(labels), recordingProcesses_(std::move(recordingProcesses)) {}

  /// Puts the best document first.
  void sort(std::vector<TeamsDocumentRef>& documents);

  /// Whether since the last call something that spoke for the document has ended: it is no longer
  /// in front, or another program records and its own does not.
  bool hasLostGround(const TeamsDocumentRef& document);

 private:
  /// What speaks for the document that was looked at last.
  struct Standing {
    TeamsDocumentRef document;
    bool isInFront = false;
    bool anotherRecords = false;
  };

  std::vector<std::int32_t> recordingProcesses() const;

  const LabelRefresher& labels_;
  RecordingProcesses recordingProcesses_;
  std::map<TeamsDocumentRef, std::chrono::steady_clock::time_point> lastInFront_;
  Standing standing_;
};

}  // namespace hushbox
