// SPDX-License-Identifier: MIT
#include <insight/difference/DocumentDiff.h>

#include <document/styles/StyleValues.h>

#include <platform/NSArray.h>
#include <platform/NSNull.h>
#include <platform/ZTFormat.h>

#include <map>
#include <unordered_map>

namespace zt {

namespace {

constexpr const char* kNotSet = "not set";

std::string textOf(const NSObject* value, const ZTDocument& document) {
  if (value == nullptr) return kNotSet;
  if (isNull(value)) return "explicitly none";
  if (const ZTSStyle* style = asStyle(value)) return "style " + document.labelOf(*style);
  return std::string(valueKind(value)) + ' ' + valueText(value);
}

std::string textOf(const StringRef& text) { return text ? text.text() : kNotSet; }

/// A style as texts: what is said of it, by property, after four things that every style has.
using Content = std::map<std::string, std::string>;

Content contentOf(const ZTSStyle& style, const ZTDocument& document) {
  Content content{{"(class)", style.classObject().name().text()},
                  {"(name)", textOf(style.name())},
                  {"(parent)", textOf(style.parentIdentifier())},
                  {"(locked)", style.isLocked() ? "yes" : "no"}};
  if (const Ref<const PropertyMap> own = style.ZTSStyle::overridePropertyMap()) {
    for (const PropertyMap::Entry& entry : *own)
      content[std::string(entry.key.view())] = textOf(entry.value.get(), document);
  }
  return content;
}

struct Described {
  std::string label;
  Content content;
};

/// The styles of a document by a key that is theirs alone.
class Styles {
 public:
  explicit Styles(const ZTDocument& document) {
    const std::vector<Ref<ZTSStyle>> styles = document.stylesheet().retainedStyles();
    std::unordered_map<std::string, int> labels;
    for (const Ref<ZTSStyle>& style : styles) ++labels[document.labelOf(*style)];
    std::unordered_map<std::string, int> repeated;
    for (const Ref<ZTSStyle>& style : styles) {
      Described described{document.labelOf(*style), contentOf(*style, document)};
      std::string key = described.label;
      const bool hasOwnLabel =
          style->isIdentified() || (document.originOf(*style) != nullptr && labels[described.label] == 1);
      if (!hasOwnLabel) {
        key += '\n';
        for (const auto& [what, text] : described.content) key.append(what).append("=").append(text).append("\n");
        key += std::to_string(repeated[key]++);
      }
      order.push_back(key);
      all.emplace(std::move(key), std::move(described));
    }
  }

  std::vector<std::string> order;
  std::unordered_map<std::string, Described> all;
};

std::vector<DocumentDiff::Change> changesBetween(const Content& before, const Content& after) {
  std::vector<DocumentDiff::Change> changes;
  for (const auto& [what, text] : before) {
    const auto found = after.find(what);
    const std::string& now = found != after.end() ? found->second : kNotSet;
    if (now != text) changes.push_back({what, text, now});
  }
  for (const auto& [what, text] : after) {
    if (!before.contains(what)) changes.push_back({what, kNotSet, text});
  }
  return changes;
}

}  // namespace

DocumentDiff::DocumentDiff(const ZTDocument& before, const ZTDocument& after) {
  const Styles old(before);
  const Styles now(after);
  for (const std::string& key : old.order) {
    const Described& style = old.all.at(key);
    const auto found = now.all.find(key);
    if (found == now.all.end()) {
      removed.push_back(style.label);
    } else if (auto changes = changesBetween(style.content, found->second.content); !changes.empty()) {
      changed.push_back({style.label, std::move(changes)});
    }
  }
  for (const std::string& key : now.order) {
    if (!old.all.contains(key)) added.push_back(now.all.at(key).label);
  }
}

std::string DocumentDiff::text() const {
  std::string text;
  for (const std::string& label : removed) text += "- " + singleLine(label) + '\n';
  for (const std::string& label : added) text += "+ " + singleLine(label) + '\n';
  for (const ChangedStyle& style : changed) {
    text += "~ " + singleLine(style.label) + '\n';
    for (const Change& change : style.changes) {
      text += "    " + singleLine(change.what) + ": " + singleLine(change.before) + " -> " + singleLine(change.after) +
              '\n';
    }
  }
  return text;
}

nlohmann::ordered_json DocumentDiff::asJson() const {
  auto list = nlohmann::ordered_json::array();
  for (const ChangedStyle& style : changed) {
    auto changes = nlohmann::ordered_json::array();
    for (const Change& change : style.changes) {
      changes.push_back({{"what", change.what}, {"before", change.before}, {"after", change.after}});
    }
    list.push_back({{"style", style.label}, {"changes", std::move(changes)}});
  }
  return {{"added", added}, {"removed", removed}, {"changed", std::move(list)}};
}

}  // namespace zt
