#include "platform/linux/accessibility/TeamsRanking.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "platform/linux/accessibility/ProcessTree.h"

namespace hushbox {

namespace {

bool records(const TeamsDocument& document, const std::vector<std::int32_t>& recording) {
  return std::any_of(recording.begin(), recording.end(), [&](std::int32_t process) {
    return process_tree::isWithin(process, document.processIdentifier);
  });
}

}  // namespace

void TeamsRanking::sort(std::vector<TeamsDocumentRef>& documents) {
  const std::vector<std::int32_t> recording = recordingProcesses();
  const auto now = std::chrono::steady_clock::now();
  std::map<TeamsDocumentRef, std::chrono::steady_clock::time_point> lastInFront;
  std::map<TeamsDocumentRef, bool> isRecording;
  for (const TeamsDocumentRef& document : documents) {
    lastInFront[document] = labels_.isInFront(*document) ? now : lastInFront_[document];
    isRecording[document] = records(*document, recording);
  }
  // Those that are not here any more are forgotten.
  lastInFront_ = std::move(lastInFront);
  const auto key = [&](const TeamsDocumentRef& document) {
    return std::tuple(!isRecording.at(document), now - lastInFront_.at(document),
                      document->evidence);
  };
  std::stable_sort(documents.begin(), documents.end(),
                   [&](const auto& one, const auto& other) { return key(one) < key(other); });
}

bool TeamsRanking::hasLostGround(const TeamsDocumentRef& document) {
  const std::vector<std::int32_t> recording = recordingProcesses();
  const Standing now{.document = document,
                     .isInFront = labels_.isInFront(*document),
                     .anotherRecords = !recording.empty() && !records(*document, recording)};
  const Standing before = std::exchange(standing_, now);
  if (now.isInFront) lastInFront_[document] = std::chrono::steady_clock::now();
  if (before.document != document) return false;
  return (before.isInFront && !now.isInFront) || (!before.anotherRecords && now.anotherRecords);
}

std::vector<std::int32_t> TeamsRanking::recordingProcesses() const {
  return recordingProcesses_ ? recordingProcesses_() : std::vector<std::int32_t>();
}

}  // namespace hushbox
