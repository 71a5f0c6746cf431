#pragma once

#include <cstddef>
#include <iterator>
#include <string_view>

#include "unicode/Utf8.h"

namespace hushbox::text {

/// The code points of a UTF-8 text, to iterate over: `for (char32_t c : CodePoints(text))`.
///
/// Each maximal malformed subpart reads as one U+FFFD. The text is not copied and must outlive this
/// object and its iterators. Any thread.
class CodePoints {
 public:
  class Iterator {
   public:
    using iterator_concept = std::forward_iterator_tag;
    using iterator_category = std::input_iterator_tag;
    using value_type = char32_t;
    using difference_type = std::ptrdiff_t;
    using reference = char32_t;
    using pointer = void;

    Iterator() = default;
    Iterator(std::string_view text, std::size_t offset) : text_(text), offset_(offset) { decode(); }

    char32_t operator*() const { return current_.codePoint; }

    /// The byte offset in the text at which the current code point begins; the text's size at the
    /// end.
    std::size_t offset() const { return offset_; }

    Iterator& operator++() {
      offset_ += current_.length;
      decode();
      return *this;
    }
    Iterator operator++(int) {
      const Iterator before = *this;
      ++*this;
      return before;
    }

    bool operator==(const Iterator& other) const { return offset_ == other.offset_; }

   private:
    void decode() { current_ = decodeFirst(text_.substr(offset_)); }

    std::string_view text_;
    std::size_t offset_ = 0;
    DecodedCodePoint current_;
  };

  explicit CodePoints(std::string_view text) : text_(text) {}

  Iterator begin() const { return Iterator(text_, 0); }
  Iterator end() const { return Iterator(text_, text_.size()); }

 private:
  std::string_view text_;
};

}  // namespace hushbox::text
