#pragma once

#include <cstdlib>
#include <map>
#include <optional>
#include <string>

namespace hushbox {

/// Environment variables of this process for a while: what was there before comes back at the end.
class ScopedEnvironment {
 public:
  ScopedEnvironment() = default;
  ~ScopedEnvironment() {
    for (const auto& [name, value] : replaced_) put(name, value);
  }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

  /// Sets a variable, or takes it away.
  void set(const std::string& name, const std::optional<std::string>& value) {
    const char* const before = std::getenv(name.c_str());
    replaced_.try_emplace(name, before ? std::optional<std::string>(before) : std::nullopt);
    put(name, value);
  }

 private:
  static void put(const std::string& name, const std::optional<std::string>& value) {
    if (value)
      setenv(name.c_str(), value->c_str(), 1);
    else
      unsetenv(name.c_str());
  }

  std::map<std::string, std::optional<std::string>> replaced_;
};

}  // namespace hushbox
