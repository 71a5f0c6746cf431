#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/accessibility/AtspiBus.h"
#include "platform/linux/accessibility/AtspiProgram.h"
#include "platform/linux/accessibility/EmbeddedPages.h"
#include "platform/linux/bus/BusObject.h"

namespace hushbox {

/// The programs on the accessibility bus. Main thread only.
///
/// A browser on Chromium that was started while accessibility was off is not on the bus at all.
class AtspiPrograms {
 public:
  /// No sane desktop has more. Programs beyond this are ignored.
  static constexpr std::size_t maxPrograms = 256;

  explicit AtspiPrograms(AtspiBus& bus) : bus_(bus), embedded_(bus) {}

  /// Lists the programs on the bus (one call), asks the new ones what they are (three calls each)
  /// and forgets those that have exited. Returns whether it met a new browser. A program that does
  /// not reply in time is new again the next time, and then has the time of other calls: it has
  /// replied late, or this was long ago. If a browser embeds pages of other processes, looks for
  /// those too: see EmbeddedPages::find().
  bool refresh();

  /// Forgets the hosts that have exited, as far as the bus has reported it. Returns whether there
  /// were any. Pointers to them are invalid afterwards.
  bool forgetExited();

  /// The programs that may present documents of Teams, in the order of their bus names.
  std::vector<const AtspiProgram*> hosts() const;

  /// The program of that name; null when it is unknown.
  const AtspiProgram* find(const std::string& busName) const;

  /// Calls the program over a connection of its own from now on, if it offers one: see
  /// BoundedBusConnection::reach(). Tries that once per program.
  void connectDirectly(const std::string& busName);

  /// Forgets all programs. Their names mean nothing on another bus.
  void clear();

 private:
  struct Entry {
    AtspiProgram program;
    bool triedDirectConnection = false;
    /// The watch on a host; see AtspiBus::watch().
    unsigned watch = 0;
  };
  using Names = std::set<std::string>;

  void add(const AtspiProgram& program);
  bool identify(const std::vector<BusObject>& roots);
  void refreshEmbedded();

  AtspiBus& bus_;
  EmbeddedPages embedded_;
  /// The names of those that have not replied in time.
  Names lateStrangers_;
  /// The names of the hosts that have exited since forgetExited(). Handlers of the bus's signals
  /// hold it too and may outlive this object.
  const std::shared_ptr<Names> exited_ = std::make_shared<Names>();
  std::map<std::string, Entry> programs_;
};

}  // namespace hushbox
