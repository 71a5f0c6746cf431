#include <string>

#include "support/Text.h"
#include "tests/fuzz/Fuzzing.h"

namespace {

using namespace hushbox;

/// Whether a terminal or a log could take a byte of the text for a control character.
bool hasControlByte(std::string_view text) {
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F) return true;
  }
  return false;
}

void checkOne(std::string_view bytes) {
  const std::string decoded = text::decodeUtf8Lossy(bytes);
  HUSHBOX_REQUIRE(text::isValidUtf8(decoded));
  HUSHBOX_REQUIRE(text::decodeUtf8Lossy(decoded) == decoded);
  HUSHBOX_REQUIRE(!text::isValidUtf8(bytes) || decoded == bytes);
  HUSHBOX_REQUIRE(text::equal(bytes, decoded));
  HUSHBOX_REQUIRE(text::contains(bytes, bytes));
  HUSHBOX_REQUIRE(text::contains(bytes, ""));
  HUSHBOX_REQUIRE(text::hasPrefix(bytes, bytes));
  HUSHBOX_REQUIRE(text::isValidUtf8(text::lowercased(bytes)));

  const std::string escaped = text::escapedForTerminal(bytes);
  HUSHBOX_REQUIRE(text::isValidUtf8(escaped));
  HUSHBOX_REQUIRE(!hasControlByte(escaped));
  // The C1 control characters, the line and paragraph separators and the direction marks.
  for (const char* mark : {"\u0085", "\u009B", "\u2028", "\u2029", "\u202E", "\u2066"}) {
    HUSHBOX_REQUIRE(escaped.find(mark) == escaped.npos);
  }

  for (const std::string_view line : text::splitLines(bytes)) {
    HUSHBOX_REQUIRE(!line.empty());
    HUSHBOX_REQUIRE(line.data() >= bytes.data());
    HUSHBOX_REQUIRE(line.data() + line.size() <= bytes.data() + bytes.size());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A text of whole pages takes too long; the length has its own tests.
  if (size > 4'096) return 0;
  FuzzInput input(data, size);
  const std::string_view first = input.takeText();
  const std::string_view second = input.rest();
  checkOne(first);
  checkOne(second);
  HUSHBOX_REQUIRE(text::equal(first, second) == text::equal(second, first));
  HUSHBOX_REQUIRE(!text::equal(first, second) || text::hasPrefix(first, second));
  HUSHBOX_REQUIRE(!text::hasPrefix(first, second) || text::contains(first, second));
  return 0;
}
