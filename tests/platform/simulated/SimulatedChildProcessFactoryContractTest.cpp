#include <map>
#include <optional>

#include "platform/simulated/SimulatedChildProcessFactory.h"
#include "tests/contract/ChildProcessContract.h"

namespace hushbox {
namespace {

class SimulatedChildProcessDriver final : public ChildProcessDriver {
 public:
  ChildProcessFactory& factory() override { return factory_; }
  void script(const std::string& path, const std::vector<std::string>& arguments,
              const std::string& output) override {
    outputs_[{path, arguments}] = output;
    factory_.install(path, [this, path](const auto& given) -> std::optional<std::string> {
      const auto found = outputs_.find({path, given});
      if (found == outputs_.end()) return std::nullopt;
      return found->second;
    });
  }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return loop_.advanceUntil(condition, limit);
  }

 private:
  Journal journal_;
  SimulatedMainLoop loop_{journal_};
  SimulatedChildProcessFactory factory_{journal_, loop_};
  std::map<std::pair<std::string, std::vector<std::string>>, std::string> outputs_;
};

INSTANTIATE_TEST_SUITE_P(Simulated, ChildProcessContract, driverFactory<ChildProcessDriver>([] {
                           return std::make_unique<SimulatedChildProcessDriver>();
                         }));

}  // namespace
}  // namespace hushbox
