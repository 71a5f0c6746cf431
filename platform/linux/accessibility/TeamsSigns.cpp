#include "platform/linux/accessibility/TeamsSigns.h"

#include <algorithm>
#include <string>

#include "support/Text.h"

namespace hushbox::teams_signs {

namespace {

// From Teams' published address ranges; government tenants live below teams.microsoft.us.
constexpr std::string_view hosts[] = {"teams.microsoft.com", "teams.live.com",
                                      "teams.cloud.microsoft", "teams.microsoft.us",
                                      "teams.microsoftonline.cn"};

// A client on Electron has the file name of its program as its name; others have their own.
constexpr std::string_view clients[] = {"microsoft teams", "microsoft-teams", "ms-teams",
                                        "teams",           "teams-for-linux", "teams for linux",
                                        "teams-insiders"};

}  // namespace

bool isAddress(std::string_view uri) {
  constexpr std::string_view scheme = "https://";
  if (text::lowercased(uri.substr(0, scheme.size())) != scheme) return false;
  std::string_view authority = uri.substr(scheme.size());
  authority = authority.substr(0, authority.find_first_of("/?#\\"));
  if (const auto user = authority.rfind('@'); user != authority.npos)
    authority.remove_prefix(user + 1);
  authority = authority.substr(0, authority.find(':'));
  const std::string host = text::lowercased(authority);
  return std::any_of(std::begin(hosts), std::end(hosts), [&](std::string_view known) {
    return host == known || host.ends_with("." + std::string(known));
  });
}

bool isTitle(std::string_view title) {
  return title.ends_with("| Microsoft Teams");
}

bool isMuteLabel(std::string_view label) {
  constexpr std::string_view unmute = "unmute";
  const std::string start = text::lowercased(label.substr(0, unmute.size()));
  return start.starts_with("mute") || start == unmute;
}

bool isClientName(std::string_view name) {
  return std::find(std::begin(clients), std::end(clients), text::lowercased(name)) !=
         std::end(clients);
}

}  // namespace hushbox::teams_signs
