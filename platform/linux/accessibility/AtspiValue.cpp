#include "platform/linux/accessibility/AtspiValue.h"

#include <cstring>
#include <string_view>

namespace hushbox::atspi_value {

namespace {

/// The path of AT-SPI's null object.
constexpr const char* nullPath = "/org/a11y/atspi/null";

// From the definition of Collection: how to compare, and the order of the reply.
constexpr int matchAll = 1;
constexpr int matchAny = 2;
constexpr guint32 documentOrder = 1;

std::string bounded(GVariant* value) {
  if (!value || !g_variant_is_of_type(value, G_VARIANT_TYPE_STRING)) return {};
  gsize length = 0;
  const char* text = g_variant_get_string(value, &length);
  return length <= maxTextBytes ? std::string(text, length) : std::string();
}

/// Returns nullopt for null, for a non-object and for AT-SPI's null object.
std::optional<BusObject> reference(GVariant* value) {
  if (!value || !g_variant_is_of_type(value, G_VARIANT_TYPE("(so)"))) return std::nullopt;
  const char* busName = nullptr;
  const char* path = nullptr;
  g_variant_get(value, "(&s&o)", &busName, &path);
  if (std::strcmp(path, nullPath) == 0) return std::nullopt;
  return BusObject{busName, path};
}

}  // namespace

std::string text(GVariant* dictionary, const char* key) {
  if (g_variant_is_of_type(dictionary, G_VARIANT_TYPE("a{ss}")) ||
      g_variant_is_of_type(dictionary, G_VARIANT_TYPE_VARDICT)) {
    const VariantPointer value(g_variant_lookup_value(dictionary, key, nullptr));
    return bounded(value.get());
  }
  return {};
}

std::string text(GVariant* reply) {
  if (g_variant_n_children(reply) != 1) return {};
  VariantPointer value(g_variant_get_child_value(reply, 0));
  if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_VARIANT))
    value.reset(g_variant_get_variant(value.get()));
  return bounded(value.get());
}

std::vector<BusObject> objects(GVariant* reply, const std::string& owner, std::size_t maxCount) {
  std::vector<BusObject> result;
  const VariantPointer list(g_variant_get_child_value(reply, 0));
  GVariantIter iterator;
  g_variant_iter_init(&iterator, list.get());
  const char* busName = nullptr;
  const char* path = nullptr;
  while (result.size() < maxCount && g_variant_iter_next(&iterator, "(&s&o)", &busName, &path)) {
    if ((owner.empty() || busName == owner) && std::strcmp(path, nullPath) != 0)
      result.push_back({busName, path});
  }
  return result;
}

std::optional<BusObject> plainObject(GVariant* reply) {
  return reference(VariantPointer(g_variant_get_child_value(reply, 0)).get());
}

std::vector<std::string> textsWith(GVariant* reply, const char* part, std::size_t maxCount) {
  std::vector<std::string> result;
  const VariantPointer list(g_variant_get_child_value(reply, 0));
  GVariantIter iterator;
  g_variant_iter_init(&iterator, list.get());
  const char* item = nullptr;
  while (result.size() < maxCount && g_variant_iter_next(&iterator, "&s", &item))
    if (std::strstr(item, part) != nullptr) result.emplace_back(item);
  return result;
}

std::vector<std::string> nodes(GVariant* reply, std::size_t maxCount) {
  constexpr std::string_view start = "<node name=\"";
  std::vector<std::string> result;
  const std::string xml = text(reply);
  for (std::size_t at = xml.find(start); at != xml.npos && result.size() < maxCount;
       at = xml.find(start, at)) {
    at += start.size();
    const std::size_t end = xml.find('"', at);
    if (end == xml.npos) break;
    const std::string name = xml.substr(at, end - at);
    if (g_variant_is_object_path(("/" + name).c_str()) && name.find('/') == name.npos &&
        !name.empty())
      result.push_back(name);
  }
  return result;
}

std::optional<BusObject> object(GVariant* reply) {
  const VariantPointer boxed(g_variant_get_child_value(reply, 0));
  return reference(VariantPointer(g_variant_get_variant(boxed.get())).get());
}

std::optional<BusObject> object(GVariant* reply, const char* key) {
  const VariantPointer dictionary(g_variant_get_child_value(reply, 0));
  return reference(VariantPointer(g_variant_lookup_value(dictionary.get(), key, nullptr)).get());
}

bool hasState(GVariant* reply, std::uint32_t state) {
  const VariantPointer words(g_variant_get_child_value(reply, 0));
  if (g_variant_n_children(words.get()) <= state / 32) return false;
  guint32 word = 0;
  g_variant_get_child(words.get(), state / 32, "u", &word);
  return (word >> state % 32 & 1U) != 0;
}

VariantPointer matchRoles(std::initializer_list<std::uint32_t> roles, std::size_t maxCount) {
  guint32 words[4] = {};
  for (const std::uint32_t role : roles) words[role / 32] |= 1U << role % 32;
  GVariantBuilder roleBits;
  g_variant_builder_init(&roleBits, G_VARIANT_TYPE("ai"));
  for (const guint32 word : words) g_variant_builder_add(&roleBits, "i", static_cast<gint32>(word));
  GVariantBuilder states;
  g_variant_builder_init(&states, G_VARIANT_TYPE("ai"));
  g_variant_builder_add(&states, "i", 0);
  g_variant_builder_add(&states, "i", 0);
  GVariantBuilder attributes;
  g_variant_builder_init(&attributes, G_VARIANT_TYPE("a{ss}"));
  GVariantBuilder interfaces;
  g_variant_builder_init(&interfaces, G_VARIANT_TYPE_STRING_ARRAY);
  return VariantPointer(g_variant_ref_sink(g_variant_new(
      "((aiia{ss}iaiiasib)uib)", &states, matchAll, &attributes, matchAll, &roleBits, matchAny,
      &interfaces, matchAll, FALSE, documentOrder, static_cast<gint32>(maxCount), TRUE)));
}

}  // namespace hushbox::atspi_value
