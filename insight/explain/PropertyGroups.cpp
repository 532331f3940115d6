// SPDX-License-Identifier: MIT
#include <insight/explain/PropertyGroups.h>

#include <document/styles/StyleValues.h>

#include <algorithm>
#include <array>

namespace zt {

namespace {

using Group = std::array<std::string_view, 3>;

constexpr std::string_view kColour = "text.fo.color";
constexpr std::string_view kWindowColour = "text.style.use-window-font-color";

constexpr std::array<Group, 8> kGroups = {{
    {kColour, kWindowColour},
    {"text.fo.language", "text.fo.country", "text.fo.script"},
    {"text.style.language-asian", "text.style.country-asian", "text.style.script-asian"},
    {"text.style.language-complex", "text.style.country-complex", "text.style.script-complex"},
    {"text.style.text-underline-style", "text.style.text-underline-type", "text.style.text-underline-width"},
    {"paragraph.fo.line-height", "paragraph.style.line-height-at-least", "paragraph.style.line-spacing"},
    {"text.style.font-name", "text.fo.font-family"},
    {"paragraph.fo.break-before", "paragraph.fo.break-after"},
}};

ExplainedProperty* find(StyleExplanation& explanation, std::string_view key) {
  const auto found = std::lower_bound(
      explanation.properties.begin(), explanation.properties.end(), key,
      [](const ExplainedProperty& property, std::string_view wanted) { return property.key.view() < wanted; });
  return found != explanation.properties.end() && found->key.view() == key ? &*found : nullptr;
}

/// How far up the chain the property is set.
std::ptrdiff_t distanceOf(const StyleExplanation& explanation, const ExplainedProperty& property) {
  const auto& chain = explanation.chain;
  return std::find(chain.begin(), chain.end(), property.decisiveStyle()) - chain.begin();
}

/// Whether the window's colour is asked for: then it is stronger than a colour of the same style, else it says nothing.
bool isWindowColour(const ExplainedProperty& property) {
  return property.key.view() == kWindowColour && property.effective && valueText(property.effective.get()) == "true";
}

}  // namespace

void decideGroups(StyleExplanation& explanation) {
  for (const Group& group : kGroups) {
    std::vector<std::pair<std::ptrdiff_t, ExplainedProperty*>> members;
    for (const std::string_view key : group) {
      ExplainedProperty* property = key.empty() ? nullptr : find(explanation, key);
      if (property == nullptr || (key == kWindowColour && !isWindowColour(*property))) continue;
      members.emplace_back(distanceOf(explanation, *property), property);
    }
    if (members.size() < 2) continue;
    const auto nearest = std::min_element(members.begin(), members.end(), [](const auto& one, const auto& other) {
      return one.first != other.first ? one.first < other.first
                                      : isWindowColour(*one.second) > isWindowColour(*other.second);
    });
    for (const auto& [distance, property] : members) {
      const bool isBeside = distance == nearest->first && !isWindowColour(*nearest->second);
      if (property != nearest->second && !isBeside) property->decidedBy = nearest->second->key;
    }
  }
}

}  // namespace zt
