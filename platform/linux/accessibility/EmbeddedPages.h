#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "platform/linux/accessibility/AtspiBus.h"
#include "platform/linux/accessibility/AtspiProgram.h"
#include "platform/linux/bus/BusObject.h"

namespace hushbox {

/// The web pages that a browser on GTK embeds from other processes. Main thread only.
///
/// WebKitGTK runs each page in a sandbox. Its process is on the accessibility bus, but does not
/// register there: it only exports a root object per page (a plug), and the browser has an object
/// with that root as its only child (a socket). The sandbox lets the process own a name of a fixed
/// form, and by that it is found. A page counts only if its root names the browser's object as its
/// parent and that object names the root as its child.
class EmbeddedPages {
 public:
  /// Processes and pages beyond this many are ignored.
  static constexpr std::size_t maxProcesses = 64;
  static constexpr std::size_t maxPages = 256;

  explicit EmbeddedPages(AtspiBus& bus) : bus_(bus) {}

  /// The processes with pages of those browsers, as programs: one call for the names on the bus and
  /// one per process, and for those not known before one more per process and two per page. Without
  /// browsers it makes no call. A process that does not reply keeps its pages.
  std::vector<AtspiProgram> find(const std::vector<AtspiProgram>& browsers);

  void clear() { processes_.clear(); }

 private:
  struct Process {
    /// Its unique name.
    std::string busName;
    /// The embedded pages and the names of their browsers.
    std::map<BusObject, std::string> pages{};
  };
  /// A page whose socket is not known yet.
  struct Candidate {
    Process* process;
    BusObject page;
    BusObject socket{};
  };

  /// Returns false if the bus did not reply.
  bool listProcesses();
  /// Forgets pages that are closed, and returns the new ones.
  std::vector<Candidate> listPages();
  /// Leaves those that name an object of one of the browsers as their parent.
  void findSockets(std::vector<Candidate>& candidates, const std::vector<AtspiProgram>& browsers);
  /// Takes in those that the browser names as the child of that object.
  void embed(const std::vector<Candidate>& candidates);

  AtspiBus& bus_;
  /// By the names that the sandbox gives them.
  std::map<std::string, Process> processes_;
};

}  // namespace hushbox
