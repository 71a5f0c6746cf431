#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/accessibility/AtspiBus.h"
#include "platform/linux/accessibility/AtspiSurface.h"
#include "platform/linux/accessibility/CompositingManager.h"

namespace hushbox {

/// What on the accessibility bus belongs to Teams, all of it taken as one application. Main thread
/// only.
///
/// On Linux, Teams is no program of its own: its meetings are pages in one browser or several, or
/// in a client built on one. So documents count, not programs, whichever programs they are in;
/// nothing else of a browser does, neither its own controls ("Mute tab") nor its other pages. A
/// document is of Teams by its address, by being in a client that has Teams' name, or by its title;
/// documents with stronger evidence come first, but weaker ones hide nobody.
///
/// A document once found is remembered for as long as it lives: a browser takes the page of a tab
/// in the background out of its tree, yet goes on answering for it.
///
/// A browser on Chromium presents its pages only once an assistive program has asked for an
/// object's attributes, and shuts them again after a while without such questions; a search asks
/// one.
///
/// Browsers are asked for documents if they are built on Chromium, Gecko or WebKit. A browser on
/// Chromium that was started while accessibility was off is not on the bus at all.
class AtspiTeams {
 public:
  /// How long a browser met for the first time may take to present its pages: 50 to 300 ms.
  static constexpr std::chrono::milliseconds wakingWait{500};
  /// How long a page is given to bring its labels up to date. From the question to the page's reply
  /// it took 20 ms at most on a machine with time to spare.
  static constexpr std::chrono::milliseconds labelWait{50};
  /// How long at most where the program itself is slow to answer, as on a machine without time to
  /// spare: with three busy programs to each processor the reply took 80 ms.
  static constexpr std::chrono::milliseconds longestLabelWait{200};
  /// How long ago a page being drawn was told at most; the poll comes once a second.
  static constexpr std::chrono::milliseconds tellInterval{1500};
  /// A page being drawn is told again only after this long: telling takes the page as long as a
  /// press.
  static constexpr std::chrono::milliseconds tellAgain{900};
  /// For how long something read is taken for what is so now.
  static constexpr std::chrono::milliseconds freshness{100};
  /// No sane desktop has more; what a program claims beyond is not looked at.
  static constexpr std::size_t mostPrograms = 256;
  static constexpr std::size_t mostDocuments = 256;

  explicit AtspiTeams(AtspiBus& bus) : bus_(bus) {}

  AtspiBus& bus() const { return bus_; }

  /// Begins a reading: what was done for labels before counts no more.
  void beginReading();

  /// Whether there is anything of Teams. As long as something that was found before is still there
  /// (or silent, which is not the same as gone), it asks about that only: seven calls a document at
  /// most, in one round or two. Otherwise it searches.
  bool isRunning();

  /// Looks for everything that belongs to Teams: a call to the registry, one to each browser, two
  /// for each document, and once to each program that has one where it can be asked straight. Once
  /// in a reading; then it stands.
  void search();

  /// What was found last, in the order in which to look at it.
  const std::vector<AtspiSurfaceRef>& surfaces() const { return surfaces_; }

  /// Makes sure that labels on the surface are read as they are now.
  ///
  /// Chromium updates the tree of a page that is minimised, covered or in a background tab only
  /// when somebody acts on it, seconds late or never. A question for the object at some point makes
  /// it do so, but is answered before the page has replied. So this asks, unless that was done in
  /// this reading and within `freshness`, and waits `labelWait` from then on; other calls fit into
  /// that time.
  ///
  /// A page that is being drawn is not waited for, it keeps its labels true by itself: the one in
  /// front in a window that is not minimised, where a compositing manager sees to it that whatever
  /// lies over the window does not matter. In case it rests for some other reason, it must also
  /// have been told within `tellInterval` before.
  void bringLabelsUpToDate(AtspiSurface& surface);

  /// Asks for an object's name at this moment, telling the surface to bring its labels up to date
  /// without waiting for that: it shows in a later answer.
  BusReply askForName(const BusObject& object, const AtspiSurface& surface);

  /// How long a question is waited for: the time-out, less what has been lost on silent programs in
  /// this reading. So a reading loses one time-out, however many programs are frozen.
  std::chrono::milliseconds timeout() const;
  void setTimeout(std::chrono::milliseconds timeout) { timeout_ = timeout; }

 private:
  /// A program on the bus that may hold documents of Teams. What is known of it never changes.
  struct Program {
    BusObject root;
    std::int32_t processIdentifier = 0;
    bool isClient = false;
    bool isBrowser = false;
    bool labelsLag = false;
    /// Whether it was tried to ask it straight.
    bool reached = false;
  };

  /// What is asked about a surface along with other calls, in this order.
  struct Along {
    AtspiSurface& surface;
    std::size_t first;
    bool tells;
    /// Whether it had been told within `tellInterval`.
    bool toldBefore;
    bool hasWindow;
    bool hasControl;
  };

  void forgetAfterReconnection();
  /// Both say whether a browser was met for the first time.
  bool meetPrograms();
  bool identify(const std::vector<BusObject>& roots);
  std::vector<AtspiSurfaceRef> findSurfaces();
  AtspiSurfaceRef surface(const BusObject& object, const Program& program);
  /// Keeps of `surfaces` those that are of Teams and there, or whose program is silent.
  ///
  /// A document whose control is there is there itself, at the host it came from: only the others
  /// are asked for a sign of life.
  std::vector<AtspiSurfaceRef> confirmed(const std::vector<AtspiSurfaceRef>& surfaces);
  /// Those that are there and of Teams by a sign of life that they are asked for, or whose program
  /// is silent; does what is to be done about `told` along with it.
  std::set<const AtspiSurface*> withSignOfLife(const std::vector<AtspiSurface*>& surfaces,
                                               const std::vector<AtspiSurface*>& told);
  bool isKnown(const std::string& busName) const;
  /// Makes the calls and, at the same time, tells the surfaces to bring their labels up to date,
  /// finds out which are being drawn, and asks their controls. The replies begin with those to
  /// `calls`.
  std::vector<BusReply> askAlong(const std::vector<AtspiSurface*>& surfaces,
                                 std::vector<BusCall> calls);
  /// From now on asks the programs of the surfaces straight, where they offer that.
  void reachPrograms();
  /// Climbs from the document to its window, once after each search and again once it has moved.
  void seekWindow(AtspiSurface& surface);
  /// Adds what is to be asked about a surface.
  Along along(AtspiSurface& surface, std::vector<BusCall>& calls) const;

  AtspiBus& bus_;
  CompositingManager compositingManager_;
  std::uint64_t generation_ = 0;
  std::chrono::milliseconds timeout_{1000};
  std::map<std::string, Program> programs_;
  std::vector<AtspiSurfaceRef> surfaces_;
  std::chrono::steady_clock::time_point readingBegan_{};
  std::chrono::microseconds lostBefore_{};
  /// How long it took Teams' programs to answer last.
  std::chrono::steady_clock::duration answerTime_{};
  bool searched_ = false;
};

}  // namespace hushbox
