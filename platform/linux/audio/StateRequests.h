#pragma once

#include <chrono>

#include "platform/Time.h"

namespace hushbox {

/// Detects changes of a source that were undone before the server handled the request for its
/// state.
///
/// A program that restores a volume as soon as it learns of a drop may be faster than our request.
/// The traces are then always the same: two events, and replies in which nothing differs from
/// before the first event. The second event arrives before the first reply, or directly behind it:
/// the server sends its events after the replies of the same moment. So if nothing differs after a
/// single event, the state is requested again, and the second event usually arrives before that
/// reply. PulseAudio 16 sends it after any number of further replies in 1 of 200 such changes; then
/// an event within `maxEventDelay` of the last reply counts as the second.
///
/// On a source that something records from, nothing else looks like that: the server merges its own
/// changes of a moment into one event, and other events come alone or with a visible difference. A
/// program that restores every change, not only drops, just as fast, would look the same.
///
/// One sequence of requests for one source, with the replies in order. Single-threaded.
class StateRequests {
 public:
  /// Four times as long as the longest delay that was measured.
  static constexpr std::chrono::milliseconds maxEventDelay{1};

  enum class Conclusion {
    none,
    /// The caller has to send one more request, which counts as sent already.
    requestAgain,
    /// A change was undone.
    undone
  };

  /// An event of the source arrived at that time, and a request is sent for it.
  void sentForEvent(Instant time);
  /// A request is sent for another reason. Nothing is concluded from it and those in progress.
  void sentOtherwise();
  /// A reply arrived at that time, or the request failed, which counts as a difference.
  Conclusion replied(bool differs, Instant time);

 private:
  // Since a request was last sent while none was in progress.
  int events_ = 0;
  int inProgress_ = 0;
  bool isInconclusive_ = false;
  bool hasRequestedAgain_ = false;
  /// Until then an event is the second one; nothing differed after the first.
  Instant secondEventUntil_ = distantPast;
};

}  // namespace hushbox
