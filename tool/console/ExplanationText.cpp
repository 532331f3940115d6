// SPDX-License-Identifier: MIT
#include <tool/console/ExplanationText.h>

#include <document/styles/StyleValues.h>
#include <tool/console/TextTable.h>

#include <platform/NSNull.h>

#include <fmt/format.h>

#include <algorithm>
#include <ostream>

namespace zt {

namespace {

constexpr std::size_t kLongestValue = 60;  // columns that people are shown
constexpr std::size_t kValueColumn = 24;   // what stands beside longer values is not aligned

std::string forPeople(const ZTDocument& document, PropertyKey key, const NSObject* value) {
  if (value == nullptr || isNull(value)) return "none";
  std::string text = shownValue(document, key, value);
  std::replace(text.begin(), text.end(), '\n', ' ');
  text = printable(text, kLongestValue);
  return text.empty() ? "\"\"" : text;
}

std::string chainText(const ZTDocument& document, const StyleExplanation& explanation) {
  std::string text;
  for (const OdfStyle* style : explanation.chain) text += (text.empty() ? "" : " < ") + document.labelOf(*style);
  const bool isCut = explanation.chainLength > explanation.chain.size();
  return isCut ? text + fmt::format(" < ... ({} styles)", explanation.chainLength) : text;
}

std::size_t indexOfWinner(const ExplainedProperty& property) {
  std::size_t index = 0;
  while (index + 1 < property.entries.size() && property.entries[index].role == ExplainedEntry::Role::ignored) ++index;
  return index;
}

// Where a property comes from, in a few words.
std::string sourceText(const ZTDocument& document, const OdfStyle& style, const ExplainedProperty& property) {
  const std::size_t first = indexOfWinner(property);
  const ExplainedEntry& winner = property.entries[first];
  if (property.decidedBy) return fmt::format("does not count: {} is set nearer", property.decidedBy.view());
  std::string text = winner.style == &style ? "set here" : "from " + document.labelOf(*winner.style);
  std::size_t hidden = property.moreHidden;
  for (std::size_t index = 0; index < property.entries.size(); ++index) {
    const ExplainedEntry& entry = property.entries[index];
    if (index == first) continue;
    if (entry.role == ExplainedEntry::Role::ignored) {
      text += fmt::format(", {} of {} is not declared", forPeople(document, property.key, entry.value),
                          document.labelOf(*entry.style));
      continue;
    }
    if (entry.role == ExplainedEntry::Role::base) {
      if (index == first + 1) text = fmt::format("{} of it {}", forPeople(document, property.key, winner.value), text);
      text += fmt::format(", of {} from {}", forPeople(document, property.key, entry.value),
                          document.labelOf(*entry.style));
    } else if (hidden++ == property.moreHidden) {
      text += fmt::format(", hides {} of {}", forPeople(document, property.key, entry.value),
                          document.labelOf(*entry.style));
    }
  }
  if (hidden > 1) text += fmt::format(" and {} more", hidden - 1);
  return text;
}

}  // namespace

void printExplanation(const ZTDocument& document, const StyleExplanation& explanation, const Console& console) {
  const OdfStyle& style = *explanation.style;
  console.out << console.bold(document.labelOf(style));
  if (style.isNamed()) console.out << " \"" << style.name().view() << '"';
  console.out << console.faint("  " + document.placeOf(style).text()) << '\n';
  if (explanation.chain.size() > 1) console.out << "  inherits: " << chainText(document, explanation) << '\n';
  std::size_t widestKey = 0;
  std::size_t widestValue = 0;
  for (const ExplainedProperty& property : explanation.properties) {
    widestKey = std::max(widestKey, displayWidth(property.key.view()));
    widestValue = std::max(widestValue, displayWidth(forPeople(document, property.key, property.effective.get())));
  }
  for (const ExplainedProperty& property : explanation.properties) {
    const std::string value = forPeople(document, property.key, property.effective.get());
    const std::string padding(
        std::min(widestValue, kValueColumn) - std::min({widestValue, displayWidth(value), kValueColumn}), ' ');
    console.out << "  " << padded(property.key.view(), widestKey) << "  " << console.green(value) << padding << "  "
                << console.faint(sourceText(document, style, property)) << '\n';
  }
  if (explanation.properties.empty()) console.out << "  nothing is set\n";
}

void printProperty(const ZTDocument& document, const StyleExplanation& explanation, const ExplainedProperty& property,
                   const Console& console) {
  console.out << property.key.view() << " of " << document.labelOf(*explanation.style) << " is "
              << console.bold(forPeople(document, property.key, property.effective.get()));
  if (property.decidedBy) console.out << ", which does not count: " << property.decidedBy.view() << " is set nearer";
  console.out << '\n';
  std::size_t widest = 0;
  for (const OdfStyle* level : explanation.chain) widest = std::max(widest, displayWidth(document.labelOf(*level)));
  auto entry = property.entries.begin();
  for (const OdfStyle* level : explanation.chain) {
    const std::string label = padded(document.labelOf(*level), widest);
    if (entry == property.entries.end() || entry->style != level) {
      console.out << "    " << console.faint(label + "  .") << '\n';
      continue;
    }
    const bool counts = entry->role != ExplainedEntry::Role::hidden && entry->role != ExplainedEntry::Role::ignored;
    const std::string value = forPeople(document, property.key, entry->value);
    const std::string line = fmt::format("{}  {} {}", label, padded(value, 16), roleName(entry->role));
    console.out << (counts ? "  > " + console.green(line) : "    " + line)
                << console.faint("  " + document.placeOf(*level).text()) << '\n';
    ++entry;
  }
  const std::size_t more = explanation.chainLength - explanation.chain.size();
  if (more > 0) console.out << "    ... and " << more << " styles further up\n";
}

}  // namespace zt
