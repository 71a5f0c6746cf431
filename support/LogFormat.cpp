#include "support/LogFormat.h"

#include <iomanip>
#include <locale>
#include <sstream>

namespace hushbox {

std::string renderLog(std::string_view format, std::initializer_list<LogArgument> arguments) {
  std::ostringstream text;
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
  return text.str();
}

}  // namespace hushbox
