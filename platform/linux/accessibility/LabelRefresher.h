#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <vector>

#include "platform/linux/accessibility/AtspiBus.h"
#include "platform/linux/accessibility/AtspiPrograms.h"
#include "platform/linux/accessibility/CompositingManager.h"
#include "platform/linux/accessibility/TeamsDocument.h"
#include "platform/linux/bus/CallBatch.h"

namespace hushbox {

/// Makes sure that labels in a document are read as they are now. Main thread only.
///
/// Chromium updates the tree of a page that is minimised, covered or in a background tab only when
/// an assistive program acts on it, seconds late or never. A request for the object at some point
/// makes it do so, but is answered before the page has replied. So this requests a refresh and then
/// waits `refreshTime`, which other calls can use.
///
/// A page that is being drawn keeps its labels up to date by itself, so it is not waited for: the
/// front page of a window that is not minimised, where a compositing manager makes sure that it
/// does not matter what covers the window. In case the page rests for some other reason, a refresh
/// must also have been requested within `maxRefreshAge` before.
///
/// Polls come once a second, so for a resting page the refresh of the next poll is requested ahead
/// of it, by a timer on the main loop: the poll then finds labels up to date without waiting. A
/// press that comes at any other time waits.
class LabelRefresher {
 public:
  using Clock = std::chrono::steady_clock;

  /// How long a page gets for a refresh. From the request to the page's reply it took at most 20 ms
  /// on an idle machine.
  static constexpr std::chrono::milliseconds refreshTime{50};
  /// The upper bound where the program itself is slow to reply, as on a busy machine: with three
  /// busy programs per processor the page took 80 ms.
  static constexpr std::chrono::milliseconds maxRefreshTime{200};
  /// A page being drawn must have been refreshed within this time. Polls come once a second.
  static constexpr std::chrono::milliseconds maxRefreshAge{1500};
  /// A page being drawn is refreshed no more often than this: a refresh costs the page as much time
  /// as a press.
  static constexpr std::chrono::milliseconds minRefreshInterval{900};
  /// How long before the next poll a resting page is refreshed, and how old that makes labels at
  /// most.
  static constexpr std::chrono::milliseconds pollInterval{1000};
  static constexpr std::chrono::milliseconds refreshLead{230};
  static constexpr std::chrono::milliseconds maxLabelAge{300};
  /// What was read within this time counts as current.
  static constexpr std::chrono::milliseconds freshness{100};

  /// The calls that probe one document.
  struct Probe {
    BusObject document;
    std::optional<CallBatch::Ticket> refresh{};
    /// Whether to request a refresh once the replies are there.
    bool refreshAfterwards = false;
    /// Whether a refresh ahead of the poll had brought the labels up to date.
    bool isCurrent = false;
    /// Whether a refresh had been requested within `maxRefreshAge`.
    bool wasRefreshed = false;
    std::optional<CallBatch::Ticket> properties{};
    std::optional<CallBatch::Ticket> windowStates{};
  };

  LabelRefresher(AtspiBus& bus, const AtspiPrograms& programs) : bus_(bus), programs_(programs) {}
  ~LabelRefresher();
  LabelRefresher(const LabelRefresher&) = delete;
  LabelRefresher& operator=(const LabelRefresher&) = delete;

  /// Refreshes and probes from before no longer count.
  void beginSnapshot() { snapshotBegan_ = Clock::now(); }

  /// Adds the calls that refresh those of the documents whose labels lag, and that show whether
  /// they are being drawn and in front: three or fewer per document.
  std::vector<Probe> addProbes(CallBatch& batch, const std::vector<TeamsDocumentRef>& documents);
  void readProbes(const CallBatch& batch, const std::vector<Probe>& probes);

  /// Waits until labels in the document are up to date.
  void awaitLabels(const TeamsDocument& document);

  /// Whether what was read in the last probe's batch is up to date without waiting.
  bool wereLabelsCurrent(const TeamsDocument& document) const;

  /// Finds out which of the documents are in front: some ten calls per document.
  void findFronts(const std::vector<TeamsDocumentRef>& documents);
  /// Whether the document was in front in the window that has the focus, when that was read last.
  bool isInFront(const TeamsDocument& document) const;

  /// Looks for the documents' windows again at the next opportunity: a tab may have moved.
  void forgetWindows();
  /// Forgets all documents except these.
  void keepOnly(const std::vector<TeamsDocumentRef>& documents);

 private:
  /// What is known about one document.
  struct Page {
    Clock::time_point probedAt{};
    Clock::time_point refreshRequestedAt{};
    /// When a refresh was last requested ahead of a poll.
    Clock::time_point refreshedAheadAt{};
    /// Whether labels were up to date at `probedAt`, thanks to that.
    bool wasCurrent = false;
    bool isDrawn = false;
    bool isInFront = false;
    /// What the document is directly in; empty for pages in the background.
    BusObject parent;
    /// As `parent` was when the window was looked for.
    BusObject parentOfWindow;
    /// The window whose front page it is; without a name if there is none.
    BusObject window;
    bool windowSought = false;
  };

  Clock::duration settlingTime() const;
  /// Has the document refreshed ahead of the next poll.
  void scheduleRefresh(const BusObject& document);
  void refreshAhead();
  /// Requests a refresh without waiting for the reply. Returns whether it could be requested.
  bool postRefresh(const BusObject& document, Page& page);

  Probe addProbe(CallBatch& batch, const TeamsDocument& document);
  void probe(const TeamsDocument& document);
  static void readParent(const BusReply& properties, Page& page);
  void seekWindow(const TeamsDocument& document, Page& page);

  AtspiBus& bus_;
  const AtspiPrograms& programs_;
  CompositingManager compositingManager_;
  std::map<BusObject, Page> pages_;
  Clock::time_point snapshotBegan_{};
  /// How long the programs of Teams took to reply last.
  Clock::duration replyTime_{};
  /// The GLib source that refreshes `nextRefreshed_`; 0 while none is scheduled.
  unsigned timer_ = 0;
  BusObject nextRefreshed_;
};

}  // namespace hushbox
