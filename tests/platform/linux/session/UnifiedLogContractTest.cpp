#include "tests/contract/UnifiedLogContract.h"

#include <fcntl.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "platform/linux/session/JournalLog.h"
#include "rehearsal/ScratchFolder.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/PrivateJournal.h"

namespace hushbox {
namespace {

class JournalLogDriver final : public UnifiedLogDriver {
 public:
  explicit JournalLogDriver(std::unique_ptr<PrivateJournal> journal)
      : journal_(std::move(journal)) {}

  UnifiedLog& log() override { return log_; }
  std::vector<std::string> records() override {
    std::vector<std::string> records;
    for (const std::string& line : journal_->read({"--output=json", "--all"})) {
      const auto fields = nlohmann::json::parse(line);
      records.push_back(fields["HUSHBOX_CATEGORY"].get<std::string>() + ": " +
                        fields["MESSAGE"].get<std::string>());
    }
    return records;
  }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return rehearsal::holdsWithin(condition,
                                  std::chrono::duration_cast<rehearsal::Milliseconds>(limit));
  }

 private:
  std::unique_ptr<PrivateJournal> journal_;
  JournalLog log_;
};

/// Skips the current test when no journal can be started.
std::unique_ptr<UnifiedLogDriver> makeJournalLogDriver() {
  std::string whyNot;
  auto journal = PrivateJournal::make(whyNot);
  if (!journal) {
    [&] { GTEST_SKIP() << whyNot; }();
    return nullptr;
  }
  return std::make_unique<JournalLogDriver>(std::move(journal));
}

/// A log without a journal, with a file as standard error.
class StandardErrorLogDriver final : public UnifiedLogDriver {
 public:
  UnifiedLog& log() override { return log_; }
  std::vector<std::string> records() override {
    std::ifstream file(path_);
    std::vector<std::string> records;
    for (std::string line; std::getline(file, line);) records.push_back(line);
    return records;
  }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return rehearsal::holdsWithin(condition,
                                  std::chrono::duration_cast<rehearsal::Milliseconds>(limit));
  }

 private:
  rehearsal::ScratchFolder scratch_;
  const std::string path_ = scratch_.path() / "standard-error";
  const Descriptor file_{open(path_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)};
  JournalLog log_{scratch_.path() / "no-journal", file_.get()};
};

INSTANTIATE_TEST_SUITE_P(LinuxJournal, UnifiedLogContract,
                         driverFactory<UnifiedLogDriver>(makeJournalLogDriver));
INSTANTIATE_TEST_SUITE_P(LinuxStandardError, UnifiedLogContract,
                         driverFactory<UnifiedLogDriver>([] {
                           return std::make_unique<StandardErrorLogDriver>();
                         }));

}  // namespace
}  // namespace hushbox
