#include "platform/linux/locale/SessionLocale.h"

#include <langinfo.h>

#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "platform/linux/locale/ShortTimeFormat.h"
#include "support/Text.h"

namespace hushbox {
namespace {

/// The name of the locale for times, with the precedence that POSIX gives the variables.
const char* localeName() {
  for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"})
    if (const char* name = std::getenv(variable); name && *name) return name;
  return "C";
}

locale_t openLocale() {
  // Both from the same locale: the words are in its encoding.
  constexpr int categories = LC_TIME_MASK | LC_CTYPE_MASK;
  const locale_t locale = newlocale(categories, localeName(), nullptr);
  return locale ? locale : newlocale(categories, "C", nullptr);
}

std::string toUtf8(std::string_view text, const char* codeset) {
  char* const converted = g_convert(text.data(), static_cast<gssize>(text.size()), "UTF-8", codeset,
                                    nullptr, nullptr, nullptr);
  std::string utf8 = text::decodeUtf8Lossy(converted ? converted : text);
  g_free(converted);
  return utf8;
}

}  // namespace

SessionLocale::SessionLocale(SessionBusConnection& bus)
    : SessionLocale([setting = std::make_shared<const DesktopClockSetting>(bus)] {
        return setting->style();
      }) {}

SessionLocale::SessionLocale(DesktopClock desktopClock)
    : desktopClock_(std::move(desktopClock)), locale_(openLocale()) {}

SessionLocale::~SessionLocale() {
  freelocale(locale_);
}

std::string SessionLocale::shortTime() {
  return shortTime(std::time(nullptr));
}

std::string SessionLocale::shortTime(std::time_t moment) const {
  const TimeConventions conventions{nl_langinfo_l(T_FMT, locale_),
                                    nl_langinfo_l(T_FMT_AMPM, locale_),
                                    *nl_langinfo_l(AM_STR, locale_) != '\0'};
  const std::string format = shortTimeFormat(conventions, desktopClock_());
  // localtime_r() alone need not notice that the time zone has changed.
  tzset();
  std::tm local{};
  localtime_r(&moment, &local);
  std::array<char, 128> time{};
  const std::size_t length = strftime_l(time.data(), time.size(), format.c_str(), &local, locale_);
  return toUtf8({time.data(), length}, nl_langinfo_l(CODESET, locale_));
}

}  // namespace hushbox
