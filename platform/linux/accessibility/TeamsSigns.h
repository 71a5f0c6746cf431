#pragma once

#include <string_view>

/// How to recognise Teams on a Linux desktop, where it is a page in a browser or a client built on
/// one. Pure functions on what programs report about themselves. Any thread.
namespace hushbox::teams_signs {

/// Whether a document's address is one of Teams: https, and a host that serves Teams or a subdomain
/// of one (the public, personal, unified, US government and Chinese clouds).
bool isAddress(std::string_view uri);

/// Whether a document's title is one of Teams: it ends in "| Microsoft Teams". That is weaker than
/// the address, since any page can have such a title.
bool isTitle(std::string_view title);

/// Whether an application's name is that of a Teams desktop client, ignoring case.
bool isClientName(std::string_view name);

/// Whether a control's label may be that of the microphone button: it begins with "mute" or
/// "unmute", ignoring case. The core decides which control it is.
bool isMuteLabel(std::string_view label);

}  // namespace hushbox::teams_signs
