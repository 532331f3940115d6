// SPDX-License-Identifier: MIT
#include <wordprocessing/reading/StyleIds.h>

#include <wordprocessing/properties/WordValues.h>

#include <fmt/format.h>

#include <array>

namespace zt {

namespace {

constexpr std::array<std::pair<std::string_view, StyleFamily>, 4> kKinds = {{{"paragraph", StyleFamily::paragraph},
                                                                             {"character", StyleFamily::text},
                                                                             {"table", StyleFamily::table},
                                                                             {"numbering", StyleFamily::list}}};

// A style without a kind is a paragraph style (17.18.83).
StyleFamily familyOfStyle(const WordElement& style) {
  const std::string* type = style.attribute("type");
  for (const auto& [name, family] : kKinds) {
    if (type != nullptr && *type == name) return family;
  }
  return StyleFamily::paragraph;
}

}  // namespace

StyleIds::StyleIds(const WordDocument& raw, std::vector<Finding>& findings)
    : mRaw(raw), mFindings(findings), mStyles(raw.styles.size()) {
  for (std::size_t style = 0; style < mStyles.size(); ++style) identify(style);
  for (std::size_t style = 0; style < mStyles.size(); ++style) chooseBase(style);
  cutLoops();
  order();
}

void StyleIds::identify(std::size_t style) {
  const WordElement& element = mRaw.styles[style].element;
  Style& known = mStyles[style];
  known.family = familyOfStyle(element);
  const std::string kind(familyName(known.family));
  const std::string* id = element.attribute("styleId");
  if (id == nullptr || id->empty()) {
    tell("nameless-style", style, "has no id; kept, but nothing can refer to it");
  } else {
    known.identifier = styleIdentifier(kind, *id);
    const std::string wanted = known.identifier;
    while (!mPlaces.try_emplace(known.identifier, style).second) {
      std::size_t& number = mRepeats.try_emplace(wanted, 1).first->second;
      known.identifier = fmt::format("{}-{}", wanted, ++number);
    }
    if (known.identifier != wanted) {
      mFindings.push_back({Finding::Severity::warning,
                           "repeated-style",
                           {mRaw.parts[mRaw.styles[style].part].shown, element.line},
                           wanted,
                           fmt::format("an earlier style has this id; kept as '{:.80}'", known.identifier)});
    }
  }
  const std::string* isDefault = element.attribute("default");
  if (isDefault != nullptr && parseOnOff(*isDefault).value_or(false)) mDefaults[kind] = style;
}

void StyleIds::chooseBase(std::size_t style) {
  const std::string* base = mRaw.styles[style].element.valOf("basedOn");
  if (base == nullptr || base->empty()) return;
  Style& known = mStyles[style];
  known.base = find(known.family, *base);
  if (known.base != kNowhere) return;
  for (const auto& [kind, family] : kKinds) {
    if (find(family, *base) == kNowhere) continue;
    return tell("missing-parent", style,
                fmt::format("the base '{:.60}' is a style of another kind ({}); inherits from the document's defaults "
                            "instead",
                            *base, kind));
  }
  tell("missing-parent", style,
       fmt::format("the base '{:.60}' does not exist; inherits from the document's defaults instead", *base));
}

// Walks up from each style in turn until one that is settled. What it comes back to on its own way closes a loop, and
// loses its base there.
void StyleIds::cutLoops() {
  enum class State : std::uint8_t { untouched, onWay, settled };
  std::vector<State> states(mStyles.size(), State::untouched);
  std::vector<std::size_t> way;
  for (std::size_t start = 0; start < mStyles.size(); ++start) {
    std::size_t at = start;
    while (at != kNowhere && states[at] == State::untouched) {
      states[at] = State::onWay;
      way.push_back(at);
      at = mStyles[at].base;
    }
    if (at != kNowhere && states[at] == State::onWay) {
      tell("parent-loop", at,
           fmt::format("the base '{:.60}' {}; inherits from the document's defaults instead",
                       *mRaw.styles[at].element.valOf("basedOn"),
                       mStyles[at].base == at ? "is the style itself" : "inherits from this style"));
      mStyles[at].base = kNowhere;
    }
    for (const std::size_t member : way) states[member] = State::settled;
    way.clear();
  }
}

void StyleIds::order() {
  std::vector<std::vector<std::size_t>> children(mStyles.size());
  for (std::size_t style = 0; style < mStyles.size(); ++style) {
    if (mStyles[style].base == kNowhere) {
      mOrder.push_back(style);
    } else {
      children[mStyles[style].base].push_back(style);
    }
  }
  for (std::size_t place = 0; place < mOrder.size(); ++place) {
    const auto& next = children[mOrder[place]];
    mOrder.insert(mOrder.end(), next.begin(), next.end());
  }
}

std::size_t StyleIds::find(StyleFamily family, std::string_view id) const {
  const auto found = mPlaces.find(styleIdentifier(familyName(family), id));
  return found == mPlaces.end() ? kNowhere : found->second;
}

std::size_t StyleIds::defaultOf(StyleFamily family) const {
  const auto found = mDefaults.find(std::string(familyName(family)));
  return found == mDefaults.end() ? kNowhere : found->second;
}

void StyleIds::tell(const char* code, std::size_t style, const std::string& message) {
  const RawWordStyle& raw = mRaw.styles[style];
  mFindings.push_back({Finding::Severity::warning,
                       code,
                       {mRaw.parts[raw.part].shown, raw.element.line},
                       mStyles[style].identifier,
                       message});
}

}  // namespace zt
