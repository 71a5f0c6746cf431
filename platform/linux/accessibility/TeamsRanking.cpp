#include "platform/linux/accessibility/TeamsRanking.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "platform/linux/accessibility/ProcessTree.h"

namespace hushbox {

namespace {

bool records(std::int32_t program, const std::vector<std::int32_t>& recording) {
  return std::any_of(recording.begin(), recording.end(), [&](std::int32_t process) {
    return process_tree::isWithin(process, program);
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
    isRecording[document] = records(document->processIdentifier, recording);
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

bool TeamsRanking::isRecording(std::int32_t processIdentifier) const {
  return records(processIdentifier, recordingProcesses());
}

bool TeamsRanking::hasLostGround(const TeamsDocumentRef& document) {
  const std::vector<std::int32_t> recording = recordingProcesses();
  const auto moment = std::chrono::steady_clock::now();
  const Standing before = standing_;
  standing_ = {
      .document = document,
      .isInFront = labels_.isInFront(*document),
      .anotherRecords = !recording.empty() && !records(document->processIdentifier, recording),
      .reported = before.reported};
  if (standing_.isInFront) lastInFront_[document] = moment;
  if (before.document != document) {
    standing_.reported = moment;
    return false;
  }
  if (standing_.anotherRecords &&
      (!before.anotherRecords || moment - before.reported >= recorderInterval)) {
    standing_.reported = moment;
    return true;
  }
  return before.isInFront && !standing_.isInFront;
}

std::vector<std::int32_t> TeamsRanking::recordingProcesses() const {
  return recordingProcesses_ ? recordingProcesses_() : std::vector<std::int32_t>();
}

}  // namespace hushbox
