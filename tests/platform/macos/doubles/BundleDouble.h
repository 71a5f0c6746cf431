#pragma once

#include <optional>
#include <string>

namespace hushbox::doubles {

/// Sets the main bundle's identifier, initially "com.example.hushbox"; nullopt means no bundle.
void setBundleIdentifier(std::optional<std::string> identifier);

/// Adds a translation to the bundle's strings table.
void setLocalization(const std::string& key, const std::string& value);

/// Sets the current time as the date formatter's short style shows it, initially "9:41 AM".
void setShortTime(const std::string& text);

void resetBundle();

}  // namespace hushbox::doubles
