#include <app/explain/ExplanationOutput.h>

#include <app/odf/JsonObject.h>
#include <app/styles/PropertyRules.h>
#include <app/styles/StyleValues.h>

#include <platform/NSNull.h>
#include <platform/NSString.h>

#include <fmt/format.h>

#include <algorithm>
#include <ostream>

namespace zt {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kLongestValue = 60;  // that people are shown

Json textOrNull(const StringRef& text) { return text.isPresent() ? Json(text.text()) : Json(); }

Json ownText(const OdfStyle& style, PropertyKey key) {
  const NSString* text = NSString::from(style.p_overrideValueForProperty(key));
  return text != nullptr ? Json(std::string(text->view())) : Json();
}

std::string forPeople(const ZTDocument& document, PropertyKey key, const NSObject* value) {
  if (value == nullptr || isNull(value)) return "none";
  std::string text = shownValue(document, key, value);
  std::replace(text.begin(), text.end(), '\n', ' ');
  if (text.size() > kLongestValue) {
    std::size_t end = kLongestValue - 3;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    text = text.substr(0, end) + "...";
  }
  return text.empty() ? "\"\"" : text;
}

std::string chainText(const ZTDocument& document, const StyleExplanation& explanation) {
  std::string text;
  for (const OdfStyle* style : explanation.chain) text += (text.empty() ? "" : " < ") + document.labelOf(*style);
  const bool isCut = explanation.chainLength > explanation.chain.size();
  return isCut ? text + fmt::format(" < ... ({} styles)", explanation.chainLength) : text;
}

// Where a property comes from, in a few words.
std::string sourceText(const ZTDocument& document, const OdfStyle& style, const ExplainedProperty& property) {
  const ExplainedEntry& winner = property.entries.front();
  std::string text = winner.style == &style ? "set here" : "from " + document.labelOf(*winner.style);
  std::size_t hidden = property.moreHidden;
  for (std::size_t index = 1; index < property.entries.size(); ++index) {
    const ExplainedEntry& entry = property.entries[index];
    if (entry.role == ExplainedEntry::Role::base) {
      if (index == 1) text = fmt::format("{} of it {}", forPeople(document, property.key, winner.value), text);
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

void addSizes(const NSObject* value, Json& json) {
  if (const LengthValue* length = asLength(value)) {
    json["mm"] = length->length().millimetres();
    json["pt"] = length->length().points();
  }
  if (const PercentageValue* percentage = asPercentage(value)) json["percent"] = percentage->percentage().percent();
}

Json propertyAsJson(const ZTDocument& document, const ExplainedProperty& property) {
  Json json;
  const NSObject* effective = property.effective.get();
  json["value"] = effective != nullptr ? Json(shownValue(document, property.key, effective)) : Json();
  json["kind"] = valueKind(effective);
  addSizes(effective, json);
  json["set_by"] = document.labelOf(*property.entries.front().style);
  Json entries = Json::array();
  for (const ExplainedEntry& entry : property.entries) {
    entries.push_back({{"style", document.labelOf(*entry.style)},
                       {"value", isNull(entry.value) ? Json() : Json(shownValue(document, property.key, entry.value))},
                       {"role", roleName(entry.role)}});
  }
  json["entries"] = std::move(entries);
  if (property.moreHidden > 0) json["more_hidden"] = property.moreHidden;
  return json;
}

}  // namespace

Json explanationAsJson(const ZTDocument& document, const StyleExplanation& explanation) {
  const OdfStyle& style = *explanation.style;
  const StyleOrigin* origin = document.originOf(style);
  const auto& chain = explanation.chain;
  Json json;
  json["style"] = document.labelOf(style);
  json["identifier"] = textOrNull(style.identifier());
  json["name"] = origin != nullptr ? Json(origin->name) : Json();
  json["display_name"] = textOrNull(style.name());
  json["family"] = style.familyName();
  json["kind"] = origin != nullptr ? originKindName(origin->kind) : "made";
  json["part"] =
      origin != nullptr && origin->part < document.parts.size() ? Json(document.parts[origin->part].name) : Json();
  json["file"] = document.placeOf(style).file;
  json["line"] = document.placeOf(style).line;
  json["parent"] = chain.size() > 1 ? Json(document.labelOf(*chain[1])) : Json();
  json["chain_length"] = explanation.chainLength;
  Json chainJson = Json::array();
  for (const OdfStyle* level : chain) chainJson.push_back(document.labelOf(*level));
  json["chain"] = std::move(chainJson);
  json["next_style"] = ownText(style, keys::nextStyle());
  json["linked_style"] = ownText(style, keys::linkedStyle());
  json["uses"] = style.usageCount();
  JsonObject values;
  JsonObject properties;
  for (const ExplainedProperty& property : explanation.properties) {
    const std::string key(property.key.view());
    Json explained = propertyAsJson(document, property);
    values.add(key, explained["value"]);
    properties.add(key, std::move(explained));
  }
  json["values"] = values.take();
  json["properties"] = properties.take();
  return json;
}

void printExplanation(const ZTDocument& document, const StyleExplanation& explanation, const Console& console) {
  const OdfStyle& style = *explanation.style;
  console.out << console.bold(document.labelOf(style));
  if (style.isNamed()) console.out << " \"" << style.name().view() << '"';
  console.out << console.faint("  " + document.placeOf(style).text()) << '\n';
  if (explanation.chain.size() > 1) console.out << "  inherits: " << chainText(document, explanation) << '\n';
  std::size_t widestKey = 0;
  std::size_t widestValue = 0;
  for (const ExplainedProperty& property : explanation.properties) {
    widestKey = std::max(widestKey, property.key.view().size());
    widestValue = std::max(widestValue, forPeople(document, property.key, property.effective.get()).size());
  }
  for (const ExplainedProperty& property : explanation.properties) {
    const std::string value = forPeople(document, property.key, property.effective.get());
    const std::string padding(
        std::min(widestValue, std::size_t{24}) - std::min({widestValue, value.size(), std::size_t{24}}), ' ');
    console.out << fmt::format("  {:<{}}  ", property.key.view(), widestKey) << console.green(value) << padding << "  "
                << console.faint(sourceText(document, style, property)) << '\n';
  }
  if (explanation.properties.empty()) console.out << "  nothing is set\n";
}

void printProperty(const ZTDocument& document, const StyleExplanation& explanation, const ExplainedProperty& property,
                   const Console& console) {
  console.out << property.key.view() << " of " << document.labelOf(*explanation.style) << " is "
              << console.bold(forPeople(document, property.key, property.effective.get())) << '\n';
  std::size_t widest = 0;
  for (const OdfStyle* level : explanation.chain) widest = std::max(widest, document.labelOf(*level).size());
  auto entry = property.entries.begin();
  for (const OdfStyle* level : explanation.chain) {
    const std::string label = fmt::format("{:<{}}", document.labelOf(*level), widest);
    if (entry == property.entries.end() || entry->style != level) {
      console.out << "    " << console.faint(label + "  .") << '\n';
      continue;
    }
    const bool counts = entry->role != ExplainedEntry::Role::hidden;
    const std::string value = forPeople(document, property.key, entry->value);
    const std::string line = fmt::format("{}  {:<16} {}", label, value, roleName(entry->role));
    console.out << (counts ? "  > " + console.green(line) : "    " + line)
                << console.faint("  " + document.placeOf(*level).text()) << '\n';
    ++entry;
  }
  const std::size_t more = explanation.chainLength - explanation.chain.size();
  if (more > 0) console.out << "    ... and " << more << " styles further up\n";
}

}  // namespace zt
