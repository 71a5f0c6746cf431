#include "support/RenderedLog.h"

#include <iomanip>
#include <locale>
#include <ostream>

namespace hushbox {

RenderedLog::RenderedLog(std::string_view format, std::initializer_list<LogArgument> arguments) {
  setp(buffer_.data(), buffer_.data() + buffer_.size());
  std::ostream text(this);
  // The process's locale could have a decimal comma.
  text.imbue(std::locale::classic());
  text << std::boolalpha << std::fixed << std::setprecision(6);
  std::size_t from = 0;
  for (const LogArgument& argument : arguments) {
    const auto conversion = log_format::nextConversion(format, from);
    text << format.substr(from, conversion.position - from);
    std::visit([&text](const auto& value) { text << value; }, argument);
    from = conversion.position + conversion.length;
  }
  text << format.substr(from);
  if (!longer_.empty()) longer_.append(pbase(), pptr());
}

std::string_view RenderedLog::text() const {
  return longer_.empty() ? std::string_view(pbase(), static_cast<std::size_t>(pptr() - pbase()))
                         : longer_;
}

RenderedLog::int_type RenderedLog::overflow(int_type character) {
  longer_.append(pbase(), pptr());
  setp(buffer_.data(), buffer_.data() + buffer_.size());
  return sputc(traits_type::to_char_type(character));
}

}  // namespace hushbox
