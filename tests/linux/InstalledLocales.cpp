#include "tests/linux/InstalledLocales.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <utility>

#include "platform/linux/SpawnedChildProcesses.h"

namespace hushbox {

InstalledLocales::InstalledLocales() {
  environment_.set("LOCPATH", scratch_.path());
  for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"})
    environment_.set(variable, std::nullopt);
}

bool InstalledLocales::install(const std::string& language, const std::string& codeset) {
  const std::filesystem::path folder = scratch_.path() / (language + '.' + codeset);
  ChildProcessRules rules;
  rules.timeLimit = std::chrono::minutes{1};
  const auto compiler = SpawnedChildProcesses{std::move(rules)}.make();
  compiler->setExecutablePath("/usr/bin/localedef");
  compiler->setArguments({"--force", "--quiet", "-i", language, "-f", codeset, folder});
  if (!compiler->launch()) return false;
  compiler->readDataToEndOfFile();
  compiler->waitUntilExit();
  return std::filesystem::exists(folder / "LC_TIME");
}

}  // namespace hushbox
