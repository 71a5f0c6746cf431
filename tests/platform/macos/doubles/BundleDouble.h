#pragma once

#include <optional>
#include <string>

namespace hushbox::doubles {

/// The main bundle's identifier; "com.example.hushbox" at first, nothing outside a bundle.
void setBundleIdentifier(std::optional<std::string> identifier);

/// A translation in the bundle's strings table.
void setLocalization(const std::string& key, const std::string& value);

/// What the date formatter's short style makes of the present time; "9:41 AM" at first.
void setShortTime(const std::string& text);

void resetBundle();

}  // namespace hushbox::doubles
