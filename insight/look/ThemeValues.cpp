// SPDX-License-Identifier: MIT
#include <insight/look/ThemeValues.h>

#include <platform/NSColor.h>
#include <platform/NSString.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace zt {

namespace {

using Name = std::pair<std::string_view, std::string_view>;

// ST_ThemeColor and ST_Theme (ECMA-376 part 1, 17.18.97 and 17.18.96) to what the theme calls them.
constexpr std::array kNames = {Name{"dark1", "dk1"},
                               Name{"light1", "lt1"},
                               Name{"dark2", "dk2"},
                               Name{"light2", "lt2"},
                               Name{"hyperlink", "hlink"},
                               Name{"followedHyperlink", "folHlink"},
                               Name{"majorAscii", "majorFont.latin"},
                               Name{"majorHAnsi", "majorFont.latin"},
                               Name{"majorEastAsia", "majorFont.ea"},
                               Name{"majorBidi", "majorFont.cs"},
                               Name{"minorAscii", "minorFont.latin"},
                               Name{"minorHAnsi", "minorFont.latin"},
                               Name{"minorEastAsia", "minorFont.ea"},
                               Name{"minorBidi", "minorFont.cs"}};

// The colours that go by way of the document's mapping (17.15.1.20), with what they mean without one.
struct Mapped {
  std::string_view name;
  std::string_view attribute;
  std::string_view usual;
};
constexpr std::array kMapped = {Mapped{"text1", "t1", "dark1"},
                                Mapped{"background1", "bg1", "light1"},
                                Mapped{"text2", "t2", "dark2"},
                                Mapped{"background2", "bg2", "light2"},
                                Mapped{"accent1", "accent1", "accent1"},
                                Mapped{"accent2", "accent2", "accent2"},
                                Mapped{"accent3", "accent3", "accent3"},
                                Mapped{"accent4", "accent4", "accent4"},
                                Mapped{"accent5", "accent5", "accent5"},
                                Mapped{"accent6", "accent6", "accent6"},
                                Mapped{"hyperlink", "hyperlink", "hyperlink"},
                                Mapped{"followedHyperlink", "followedHyperlink", "followedHyperlink"}};

std::string mappedName(const OdfStyle& theme, std::string_view name) {
  const auto* mapped =
      std::find_if(kMapped.begin(), kMapped.end(), [&](const Mapped& row) { return row.name == name; });
  if (mapped == kMapped.end()) return std::string(name);
  const Ref<NSObject> chosen =
      theme.valueForProperty(PropertyKey("theme.w.clrSchemeMapping." + std::string(mapped->attribute)));
  const NSString* text = NSString::from(chosen.get());
  return std::string(text != nullptr ? text->view() : mapped->usual);
}

/// The word after "tint:" or "shade:" as a share of 255, 1 where there is none.
double shareIn(std::string_view text, std::string_view name) {
  const std::size_t at = text.find(name);
  if (at == std::string_view::npos) return 1;
  unsigned number = 255;
  const char* start = text.data() + at + name.size();
  std::from_chars(start, text.data() + text.size(), number, 16);
  return std::min(number, 255U) / 255.0;
}

/// The colour with its lightness changed, hue and saturation kept.
Ref<NSColor> withLightness(const NSColor& colour, double tint, double shade) {
  const std::array<double, 3> channels = {colour.red() / 255.0, colour.green() / 255.0, colour.blue() / 255.0};
  const auto [least, most] = std::minmax_element(channels.begin(), channels.end());
  const double chroma = *most - *least;
  const double before = (*most + *least) / 2;
  const double after = before * shade * tint + (1 - tint);
  // Saturation is chroma over what the lightness leaves room for: kept, it scales the distances from the lightness.
  const double room = 1 - std::abs(2 * before - 1);
  const double scale = room > 0 ? (1 - std::abs(2 * after - 1)) / room : 0;
  std::array<std::uint8_t, 3> bytes = {};
  for (std::size_t index = 0; index < 3; ++index) {
    const double channel = chroma > 0 ? after + (channels.at(index) - before) * scale : after;
    bytes.at(index) = static_cast<std::uint8_t>(std::lround(std::clamp(channel, 0.0, 1.0) * 255));
  }
  return NSColor::withComponents(bytes[0], bytes[1], bytes[2], colour.opacity());
}

}  // namespace

Ref<NSObject> valueInTheme(const ZTDocument& document, Ref<NSObject> value) {
  constexpr std::string_view kMark = "theme:";
  const NSString* reference = NSString::from(value.get());
  if (reference == nullptr || !reference->view().starts_with(kMark)) return value;
  const std::string_view text = reference->view().substr(kMark.size());
  const OdfStyle* theme = document.rootStyle("theme");
  if (theme == nullptr) return value;
  std::string name = mappedName(*theme, text.substr(0, text.find(' ')));
  const auto* known = std::find_if(kNames.begin(), kNames.end(), [&](const Name& row) { return row.first == name; });
  if (known != kNames.end()) name = known->second;
  const Ref<NSObject> found = theme->valueForProperty(PropertyKey("theme.a." + name));
  if (found == nullptr) return value;
  const NSColor* colour = NSColor::from(found.get());
  return colour != nullptr ? Ref<NSObject>(withLightness(*colour, shareIn(text, "tint:"), shareIn(text, "shade:")))
                           : found;
}

}  // namespace zt
