// SPDX-License-Identifier: MIT
#include <opendocument/statistics/StyleStatistics.h>

#include <document/json/JsonObject.h>
#include <opendocument/reading/StyleEntries.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <set>
#include <unordered_map>
#include <unordered_set>

namespace zt {

namespace {

using Json = nlohmann::ordered_json;
using Counts = std::map<std::string, std::size_t>;

constexpr std::size_t kLongestList = 20;   // of unused names
constexpr std::size_t kLargestGroups = 3;  // of equal automatic styles

bool isPercentage(std::string_view value) {
  if (value.size() < 2 || value.back() != '%') return false;
  value.remove_suffix(1);
  if (value.front() == '-' || value.front() == '+') value.remove_prefix(1);
  return !value.empty() && value.find_first_not_of("0123456789.") == std::string_view::npos;
}

double rounded(double value, int digits) {
  const double scale = std::pow(10.0, digits);
  return std::round(value * scale) / scale;
}

Json toJson(const Counts& counts) {
  JsonObject json;
  for (const auto& [name, count] : counts) json.add(name, count);
  return json.take();
}

Json numbered(const std::map<std::size_t, std::size_t>& counts) {
  JsonObject json;
  for (const auto& [number, count] : counts) json.add(std::to_string(number), count);
  return json.take();
}

// The name of the document: of its folder, or of its file without the ending.
std::string titleOf(const std::string& shown) {
  std::filesystem::path path(shown);
  if (!path.has_filename()) path = path.parent_path();
  const std::string ending = path.extension().string();
  return (ending == ".fodt" || ending == ".odt" || ending == ".ott" ? path.stem() : path.filename()).string();
}

// How many styles there are from a style up to its root, itself included. Each chain is measured once, upwards until
// one that is known; in a loop each member counts all members.
class ChainLengths {
 public:
  explicit ChainLengths(const StyleIndex& index) : mIndex(index) {}

  std::size_t of(const RawStyle& style) {
    std::vector<const RawStyle*> way;
    std::unordered_set<const RawStyle*> onWay;
    const RawStyle* at = &style;
    while (at != nullptr && !mLengths.contains(at) && onWay.insert(at).second) {
      way.push_back(at);
      at = mIndex.parentOf(*at);
    }
    // The way ends at a root, at a style that is known, or at one of its own, which closes a loop.
    if (at != nullptr && !mLengths.contains(at)) {
      const auto loop = std::find(way.begin(), way.end(), at);
      for (auto member = loop; member != way.end(); ++member) {
        mLengths[*member] = static_cast<std::size_t>(way.end() - loop);
      }
      mInLoops += static_cast<std::size_t>(way.end() - loop);
      way.erase(loop, way.end());
    }
    std::size_t length = at != nullptr ? mLengths[at] : 0;
    for (auto member = way.rbegin(); member != way.rend(); ++member) mLengths[*member] = ++length;
    return mLengths[&style];
  }

  /// Among those that were asked for and their ancestors.
  [[nodiscard]] std::size_t countInLoops() const { return mInLoops; }

 private:
  const StyleIndex& mIndex;
  std::unordered_map<const RawStyle*, std::size_t> mLengths;
  std::size_t mInLoops = 0;
};

// One text for all that makes automatic styles equal: family, parent and entries, whatever their order.
std::string fingerprint(const RawStyle& style, std::vector<std::string> parts) {
  std::sort(parts.begin(), parts.end());
  std::string text = style.family + '\n' + (style.parent ? '=' + *style.parent : std::string("-"));
  for (const std::string& part : parts)
    text.append(1, '\n').append(std::to_string(part.size())).append(1, ' ').append(part);
  return text;
}

// The automatic styles, one after the other, and which of them say the same.
class Duplicates {
 public:
  void add(const RawStyle& style, const std::vector<StyleEntry>& entries) {
    std::vector<std::string> all;
    std::vector<std::string> unmarked;
    std::vector<std::string> left;
    for (const StyleEntry& entry : entries) {
      std::string text = entry.key + '=' + entry.value;
      if (!entry.name.ends_with("rsid")) unmarked.push_back(text);
      if (!entry.equalsInherited) left.push_back(text);
      all.push_back(std::move(text));
    }
    if (all.empty()) ++mEmpty;
    if (left.empty()) {
      ++mEmptyAfterCollapse;
    } else {
      mAfterCollapse.insert(fingerprint(style, std::move(left)));
    }
    mWithoutRevisions.insert(fingerprint(style, std::move(unmarked)));
    const auto [found, isNew] = mPlaces.try_emplace(fingerprint(style, std::move(all)), mGroups.size());
    if (isNew) mGroups.push_back({&style, 0});
    ++mGroups[found->second].count;
    ++mTotal;
    auto& [total, distinct] = mByFamily[style.family];
    ++total;
    if (isNew) ++distinct;
  }

  void writeTo(Json& json, std::size_t equalToInherited) {
    const std::size_t redundant = mTotal - mGroups.size();
    json["automatic_distinct"] = mGroups.size();
    json["automatic_redundant"] = redundant;
    json["automatic_redundant_share"] =
        mTotal == 0 ? 0.0 : rounded(static_cast<double>(redundant) / static_cast<double>(mTotal), 4);
    json["largest_duplicate_groups"] = Json::array();
    std::stable_sort(mGroups.begin(), mGroups.end(), [](const Group& a, const Group& b) { return a.count > b.count; });
    for (std::size_t index = 0; index < std::min(mGroups.size(), kLargestGroups) && mGroups[index].count > 1; ++index) {
      const RawStyle& first = *mGroups[index].first;
      json["largest_duplicate_groups"].push_back({{"count", mGroups[index].count},
                                                  {"family", first.family},
                                                  {"parent", first.parent ? Json(*first.parent) : Json()}});
    }
    JsonObject families;
    for (const auto& [family, counts] : mByFamily) families.add(family, Json::array({counts.first, counts.second}));
    json["automatic_by_family_total_and_distinct"] = families.take();
    json["automatic_distinct_without_rsid"] = mWithoutRevisions.size();
    json["entries_equal_to_inherited"] = equalToInherited;
    json["automatic_with_no_properties"] = mEmpty;
    json["automatic_equal_to_parent_after_collapse"] = mEmptyAfterCollapse;
    json["automatic_distinct_after_collapse"] = mAfterCollapse.size();
  }

 private:
  struct Group {
    const RawStyle* first;
    std::size_t count;
  };
  std::vector<Group> mGroups;
  std::unordered_map<std::string, std::size_t> mPlaces;  // of a fingerprint's group
  std::unordered_set<std::string> mWithoutRevisions;
  std::unordered_set<std::string> mAfterCollapse;
  std::map<std::string, std::pair<std::size_t, std::size_t>> mByFamily;  // all, and distinct ones
  std::size_t mTotal = 0;
  std::size_t mEmpty = 0;
  std::size_t mEmptyAfterCollapse = 0;
};

class Statistics {
 public:
  explicit Statistics(const RawDocument& document) : mDocument(document), mIndex(document), mEntries(mIndex) {}

  Json compute() {
    countStyles();
    measureChains();
    countEntries();
    findDuplicates();
    countUses();
    countReferencesBetweenStyles();
    return std::move(mJson);
  }

 private:
  static bool isNamed(const RawStyle& style) { return style.kind == RawStyle::Kind::named; }

  void countStyles() {
    Json parts = Json::array();
    for (const auto& part : mDocument.parts) parts.push_back(part.name);
    Counts named;
    Counts automatic;
    Counts byPart;
    std::size_t equalToNamed = 0;
    std::map<std::string, std::set<std::size_t>> partsOfName;
    for (const RawStyle* style : mIndex.allNamed()) ++named[style->family];
    for (const RawStyle* style : mIndex.allAutomatic()) {
      ++automatic[style->family];
      ++byPart[mDocument.parts[style->part].name];
      if (mIndex.named(style->family, style->name) != nullptr) ++equalToNamed;
      partsOfName[style->family + ':' + style->name].insert(style->part);
    }
    std::set<std::string> defaults;
    for (const RawStyle* style : mIndex.allDefaults()) defaults.insert(style->family);
    Counts lists;
    std::set<std::string> listNames;
    for (const RawListStyle& list : mDocument.listStyles) {
      const std::string kind = list.isAutomatic ? "automatic" : "named";
      const std::string scope = list.isAutomatic ? std::to_string(list.part) : std::string();
      if (listNames.insert(kind + scope + (list.isOutline ? ":outline:" : ":list:") + list.name).second) ++lists[kind];
    }
    mJson["document"] = titleOf(mDocument.shown);
    mJson["parts"] = std::move(parts);
    mJson["named"] = toJson(named);
    mJson["named_total"] = mIndex.allNamed().size();
    mJson["automatic"] = toJson(automatic);
    mJson["automatic_total"] = mIndex.allAutomatic().size();
    mJson["automatic_by_part"] = toJson(byPart);
    mJson["default_styles"] = defaults;
    mJson["list_styles"] = toJson(lists);
    mJson["automatic_names_used_in_both_parts"] =
        std::count_if(partsOfName.begin(), partsOfName.end(), [](const auto& name) { return name.second.size() > 1; });
    mJson["automatic_names_equal_to_named"] = equalToNamed;
    JsonObject repeated;
    for (const auto& [name, count] : mIndex.repeated()) repeated.add(name, count);
    mJson["duplicate_names"] = repeated.take();
  }

  void measureChains() {
    ChainLengths lengths(mIndex);
    std::size_t withoutParent[2] = {0, 0};
    std::size_t missing = 0;
    std::size_t automaticParents = 0;
    std::set<std::string> missingNames;
    std::map<std::size_t, std::size_t> chains[2];
    for (const auto* styles : {&mIndex.allNamed(), &mIndex.allAutomatic()}) {
      for (const RawStyle* style : *styles) {
        const int kind = isNamed(*style) ? 0 : 1;
        ++chains[kind][lengths.of(*style)];
        if (!style->parent || style->parent->empty()) {
          ++withoutParent[kind];
        } else if (mIndex.parentOf(*style) == nullptr) {
          ++missing;
          missingNames.insert(style->family + ':' + *style->parent);
          if (mIndex.automatic(style->part, style->family, *style->parent) != nullptr) ++automaticParents;
        }
      }
    }
    mJson["named_chain_length"] = numbered(chains[0]);
    mJson["automatic_chain_length"] = numbered(chains[1]);
    mJson["without_parent"] = {{"named", withoutParent[0]}, {"automatic", withoutParent[1]}};
    mJson["missing_parents"] = missing;
    mJson["missing_parent_names"] = missingNames;
    mJson["parent_is_automatic"] = automaticParents;
    mJson["in_parent_loops"] = lengths.countInLoops();
  }

  void countEntries() {
    const auto summary = [this](const std::vector<const RawStyle*>& styles) {
      Json json = Json::object();
      if (styles.empty()) return json;
      std::vector<std::size_t> counts;
      std::size_t total = 0;
      for (const RawStyle* style : styles) {
        counts.push_back(mEntries.of(*style).size());
        total += counts.back();
      }
      std::sort(counts.begin(), counts.end());
      json["min"] = counts.front();
      json["median"] = counts[counts.size() / 2];
      json["max"] = counts.back();
      json["mean"] = rounded(static_cast<double>(total) / static_cast<double>(counts.size()), 2);
      json["empty"] = std::count(counts.begin(), counts.end(), std::size_t{0});
      return json;
    };
    mJson["properties_per_style"] = {{"named", summary(mIndex.allNamed())},
                                     {"automatic", summary(mIndex.allAutomatic())}};

    std::unordered_set<std::string> names;
    for (const auto& [style, entries] : mEntries.all()) {
      for (const StyleEntry& entry : entries) {
        names.insert(entry.key);
        if (entry.isText && isPercentage(entry.value)) ++mPercentages[entry.name];
      }
    }
    mJson["distinct_property_names"] = names.size();
  }

  void findDuplicates() {
    Duplicates duplicates;
    std::size_t equalToInherited = 0;
    for (const auto* styles : {&mIndex.allNamed(), &mIndex.allAutomatic()}) {
      for (const RawStyle* style : *styles) {
        const std::vector<StyleEntry>& entries = mEntries.of(*style);
        equalToInherited += static_cast<std::size_t>(std::count_if(
            entries.begin(), entries.end(), [](const StyleEntry& entry) { return entry.equalsInherited; }));
        if (!isNamed(*style)) duplicates.add(*style, entries);
      }
    }
    duplicates.writeTo(mJson, equalToInherited);
  }

  void countUses() {
    Counts references;
    std::set<std::string> dangling;
    std::size_t listReferences = 0;
    std::unordered_set<const RawStyle*> direct;
    for (const ContentUse& use : mDocument.uses.all()) {
      if (use.family == "list") {
        listReferences += use.count;
        continue;
      }
      references[use.family] += use.count;
      if (const RawStyle* style = mIndex.referred(use.part, use.family, use.name)) {
        direct.insert(style);
      } else {
        references["dangling"] += use.count;
        dangling.insert(use.family + ':' + use.name);
      }
    }
    std::unordered_set<const RawStyle*> withParents;
    for (const RawStyle* style : direct) {
      while (style != nullptr && withParents.insert(style).second) style = mIndex.parentOf(*style);
    }
    const auto split = [](const std::unordered_set<const RawStyle*>& styles) {
      const auto named = static_cast<std::size_t>(
          std::count_if(styles.begin(), styles.end(), [](const RawStyle* style) { return isNamed(*style); }));
      return Json{{"named", named}, {"automatic", styles.size() - named}};
    };
    mJson["references_from_content"] = toJson(references);
    mJson["dangling_references"] = dangling;
    mJson["used_directly"] = split(direct);
    mJson["used_with_parents"] = split(withParents);

    Counts unusedByFamily;
    std::vector<std::string> unusedAutomatic;
    for (const RawStyle* style : mIndex.allNamed()) {
      if (!withParents.contains(style)) ++unusedByFamily[style->family];
    }
    for (const RawStyle* style : mIndex.allAutomatic()) {
      if (!withParents.contains(style)) {
        unusedAutomatic.push_back(mDocument.parts[style->part].name + ':' + style->family + ':' + style->name);
      }
    }
    std::size_t unusedNamed = 0;
    for (const auto& [family, count] : unusedByFamily) unusedNamed += count;
    mJson["unused_with_parents"] = {{"named", unusedNamed}, {"automatic", unusedAutomatic.size()}};
    mJson["unused_named_by_family"] = toJson(unusedByFamily);
    std::sort(unusedAutomatic.begin(), unusedAutomatic.end());
    if (unusedAutomatic.size() > kLongestList) unusedAutomatic.resize(kLongestList);
    mJson["unused_automatic_names"] = unusedAutomatic;
    mListReferences = listReferences;
  }

  void countReferencesBetweenStyles() {
    Counts references;
    const auto count = [&references](const std::string& label, const std::string& value) {
      ++references[value.empty() ? label + " (empty)" : label];
    };
    for (const auto* styles : {&mIndex.allNamed(), &mIndex.allAutomatic(), &mIndex.allDefaults()}) {
      for (const RawStyle* style : *styles) {
        for (const RawAttribute& attribute : style->attributes) {
          if ((attribute.prefix == "style" || attribute.prefix == "loext") && attribute.name.ends_with("-name") &&
              attribute.name != "display-name") {
            count(attribute.prefix + ':' + attribute.name, attribute.value);
          }
        }
        for (const RawStyleChild& child : style->children) {
          if (child.isMap()) ++references["style:map"];
        }
      }
    }
    for (const RawListStyle& list : mDocument.listStyles) {
      for (const RawListLevel& level : list.levels) {
        if (const std::string* name = level.attribute("text", "style-name")) count("list-level@text:style-name", *name);
      }
    }
    mJson["references_between_styles"] = toJson(references);
    mJson["percentages"] = toJson(mPercentages);
    mJson["list_references_from_content"] = mListReferences;
  }

  const RawDocument& mDocument;
  StyleIndex mIndex;
  StyleEntries mEntries;
  Counts mPercentages;
  std::size_t mListReferences = 0;
  Json mJson;
};

}  // namespace

Json styleStatistics(const RawDocument& document) { return Statistics(document).compute(); }

}  // namespace zt
