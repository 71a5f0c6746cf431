#include "packaging/macos/icon/IconFile.h"

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace hushbox {
namespace {

std::string bigEndian(std::size_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) {
    bytes += static_cast<char>(static_cast<unsigned char>(value >> shift));
  }
  return bytes;
}

std::string deflated(const std::string& data) {
  uLongf size = compressBound(data.size());
  std::string packed(size, '\0');
  if (compress2(reinterpret_cast<Bytef*>(packed.data()), &size,
                reinterpret_cast<const Bytef*>(data.data()), data.size(), 9) != Z_OK) {
    std::abort();
  }
  packed.resize(size);
  return packed;
}

std::string chunk(const std::string& type, const std::string& data) {
  const std::string checked = type + data;
  const uLong sum =
      crc32(0, reinterpret_cast<const Bytef*>(checked.data()), static_cast<uInt>(checked.size()));
  return bigEndian(data.size()) + checked + bigEndian(sum);
}

/// Eight bits per channel, with opacity; rows without a filter.
std::string png(const IconCanvas& picture) {
  const auto pixels = static_cast<std::size_t>(picture.pixels());
  std::string rows;
  for (std::size_t y = 0; y < pixels; ++y) {
    rows += '\0';
    rows.append(reinterpret_cast<const char*>(&picture.rgba()[y * pixels * 4]), pixels * 4);
  }
  const std::string form = {8, 6, 0, 0, 0};
  return "\x89PNG\r\n\x1A\n" + chunk("IHDR", bigEndian(pixels) + bigEndian(pixels) + form) +
         chunk("IDAT", deflated(rows)) + chunk("IEND", "");
}

}  // namespace

void IconFile::add(std::string_view type, const IconCanvas& picture) {
  const std::string file = png(picture);
  entries_ += std::string(type) + bigEndian(file.size() + 8) + file;
}

std::string IconFile::bytes() const {
  return "icns" + bigEndian(entries_.size() + 8) + entries_;
}

}  // namespace hushbox
