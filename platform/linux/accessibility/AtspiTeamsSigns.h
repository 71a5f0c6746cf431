#pragma once

#include <string_view>

/// How Teams shows on a Linux desktop, where it is a page in a browser or a client built on one.
/// Pure functions on what programs say of themselves; any thread.
namespace hushbox::teams_signs {

/// Whether a document's address is one of Teams' own: https, and a host that Teams is served from
/// or below one (the public, personal, unified, US government and Chinese clouds).
bool isAddress(std::string_view uri);

/// Whether a document's title is one that Teams gives: it ends in "| Microsoft Teams". Weaker than
/// the address, since any page can be titled so.
bool isTitle(std::string_view title);

/// Whether an application's name is that of a Teams desktop client. Letter case does not count.
bool isClientName(std::string_view name);

}  // namespace hushbox::teams_signs
