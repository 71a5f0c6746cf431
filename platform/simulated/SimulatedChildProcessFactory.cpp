#include "platform/simulated/SimulatedChildProcessFactory.h"

#include <utility>

#include "platform/simulated/Violation.h"

namespace hushbox {

class SimulatedChildProcessFactory::Child final : public ChildProcess {
 public:
  Child(SimulatedChildProcessFactory& factory, int number) : factory_(factory), number_(number) {
    note("make");
  }

  void setExecutablePath(const std::string& path) override {
    path_ = path;
    note("executable " + path);
  }

  void setArguments(const std::vector<std::string>& arguments) override {
    arguments_ = arguments;
    std::string line = "arguments";
    for (const std::string& argument : arguments) line += ' ' + argument;
    note(line);
  }

  bool launch() override {
    if (launched_) reportViolation("A child process was launched twice.");
    const auto program = factory_.programs_.find(path_);
    if (program != factory_.programs_.end()) output_ = program->second(arguments_);
    launched_ = output_.has_value();
    note(launched_ ? "launch -> true" : "launch -> false");
    return launched_;
  }

  std::string readDataToEndOfFile() override {
    requireLaunched();
    std::string output = std::exchange(output_, std::nullopt).value_or(std::string());
    note("read " + std::to_string(output.size()) + " bytes");
    return output;
  }

  void waitUntilExit() override {
    requireLaunched();
    note("wait");
  }

 private:
  void note(const std::string& call) {
    factory_.journal_.add("processes", number_, ' ', call,
                          factory_.loop_.isMainThread() ? " on the main thread" : "");
  }

  void requireLaunched() const {
    if (!launched_) reportViolation("A child process was used without having been launched.");
  }

  SimulatedChildProcessFactory& factory_;
  int number_;
  std::string path_;
  std::vector<std::string> arguments_;
  std::optional<std::string> output_;
  bool launched_ = false;
};

void SimulatedChildProcessFactory::install(const std::string& path, std::string output) {
  install(path, [output = std::move(output)](const auto&) { return std::optional(output); });
}

std::unique_ptr<ChildProcess> SimulatedChildProcessFactory::make() {
  return std::make_unique<Child>(*this, ++made_);
}

}  // namespace hushbox
