// SPDX-License-Identifier: MIT
#include <insight/explain/ExplanationJson.h>

#include <document/json/JsonObject.h>
#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>

#include <platform/NSNull.h>
#include <platform/NSString.h>

namespace zt {

namespace {

using Json = nlohmann::ordered_json;

Json textOrNull(const StringRef& text) { return text.isPresent() ? Json(text.text()) : Json(); }

Json ownText(const OdfStyle& style, PropertyKey key) {
  const NSString* text = NSString::from(style.p_overrideValueForProperty(key));
  return text != nullptr ? Json(std::string(text->view())) : Json();
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
  json["set_by"] = document.labelOf(*property.decisiveStyle());
  Json entries = Json::array();
  for (const ExplainedEntry& entry : property.entries) {
    entries.push_back({{"style", document.labelOf(*entry.style)},
                       {"value", isNull(entry.value) ? Json() : Json(shownValue(document, property.key, entry.value))},
                       {"role", roleName(entry.role)}});
  }
  json["entries"] = std::move(entries);
  if (property.decidedBy) json["decided_by"] = property.decidedBy.view();
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
    values.add(key, property.decidedBy ? Json() : explained["value"]);
    properties.add(key, std::move(explained));
  }
  json["values"] = values.take();
  json["properties"] = properties.take();
  return json;
}

}  // namespace zt
