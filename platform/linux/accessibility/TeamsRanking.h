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

  /// How often hasLostGround() reports that another program still records.
  static constexpr std::chrono::seconds recorderInterval{2};

  /// Without `recordingProcesses`, nothing is known to record.
  TeamsRanking(const LabelRefresher& labels, RecordingProcesses recordingProcesses)
      : labels_(labels), recordingProcesses_(std::move(recordingProcesses)) {}

  /// Whether the program records from the speakerphone, itself or in a process that it has started.
  bool isRecording(std::int32_t processIdentifier) const;

  /// Puts the best document first.
  void sort(std::vector<TeamsDocumentRef>& documents);

  /// Whether since the last call something that spoke for the document has ended: it is no longer
  /// in front, or another program records and its own does not. Repeats the latter every
  /// `recorderInterval`, because that program's page may still have been loading.
  bool hasLostGround(const TeamsDocumentRef& document);

 private:
  /// What speaks for the document that was looked at last.
  struct Standing {
    TeamsDocumentRef document;
    bool isInFront = false;
    bool anotherRecords = false;
    /// When that was last reported.
    std::chrono::steady_clock::time_point reported{};
  };

  std::vector<std::int32_t> recordingProcesses() const;

  const LabelRefresher& labels_;
  RecordingProcesses recordingProcesses_;
  std::map<TeamsDocumentRef, std::chrono::steady_clock::time_point> lastInFront_;
  Standing standing_;
};

}  // namespace hushbox
