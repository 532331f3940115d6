// SPDX-License-Identifier: MIT

// What a style inherits is found by one walk over the trees of styles, which keeps for each key the
// values on the way down, the nearest on top. Asking the chain of each style instead would cost the
// square of the length of a chain.

#include <opendocument/reading/StyleEntries.h>

#include <string_view>
#include <unordered_set>

namespace zt {

namespace {

// The references of a style element that count among what the style sets.
constexpr std::string_view kOwnReferences[] = {"list-style-name", "master-page-name", "data-style-name",
                                               "default-outline-level"};

std::vector<StyleEntry> entriesOf(const RawStyle& style) {
  std::vector<StyleEntry> entries;
  entries.reserve(style.properties.size() + style.attributes.size());
  const auto add = [&entries](const std::string& group, const std::string& name, const std::string& value,
                              bool isText) {
    entries.push_back({group + '|' + name, name, value, isText});
  };
  for (const RawProperty& property : style.properties) {
    add(property.group, property.qualifiedName(), property.value, !property.isElement);
  }
  for (const RawStyleChild& child : style.children) {
    if (child.isMap()) add("map", "style:map", child.text, false);
  }
  for (const std::string_view name : kOwnReferences) {
    if (const std::string* value = style.attribute("style", name))
      add("style", "style:" + std::string(name), *value, true);
  }
  return entries;
}

class Walk {
 public:
  Walk(const StyleIndex& index, std::unordered_map<const RawStyle*, std::vector<StyleEntry>>& entries)
      : mIndex(index), mEntries(entries) {
    for (const auto* styles : {&index.allNamed(), &index.allAutomatic()}) {
      for (const RawStyle* style : *styles) {
        if (const RawStyle* parent = index.parentOf(*style)) mChildren[parent].push_back(style);
      }
    }
  }

  void run() {
    for (const auto* styles : {&mIndex.allNamed(), &mIndex.allAutomatic()}) {
      for (const RawStyle* style : *styles) {
        if (mIndex.parentOf(*style) == nullptr) descend(*style);
      }
    }
    for (const RawStyle* style : mIndex.allNamed()) {
      if (!mSeen.contains(style)) descend(*style);  // in a loop, or below one
    }
  }

 private:
  struct Step {
    const RawStyle* style;
    std::size_t nextChild;
  };

  void descend(const RawStyle& top) {
    const RawStyle* root = mIndex.defaultStyle(top.family);
    if (root != nullptr) push(*root);
    std::vector<Step> way;
    enter(top, way);
    while (!way.empty()) {
      Step& step = way.back();
      const auto children = mChildren.find(step.style);
      if (children != mChildren.end() && step.nextChild < children->second.size()) {
        const RawStyle* child = children->second[step.nextChild++];
        if (!mSeen.contains(child)) enter(*child, way);
      } else {
        pop(*step.style);
        way.pop_back();
      }
    }
    if (root != nullptr) pop(*root);
  }

  void enter(const RawStyle& style, std::vector<Step>& way) {
    mSeen.insert(&style);
    for (StyleEntry& entry : mEntries.at(&style)) {
      const auto values = mValues.find(entry.key);
      entry.equalsInherited =
          values != mValues.end() && !values->second.empty() && *values->second.back() == entry.value;
    }
    push(style);
    way.push_back({&style, 0});
  }

  void push(const RawStyle& style) {
    for (const StyleEntry& entry : mEntries.at(&style)) mValues[entry.key].push_back(&entry.value);
  }

  void pop(const RawStyle& style) {
    for (const StyleEntry& entry : mEntries.at(&style)) mValues[entry.key].pop_back();
  }

  const StyleIndex& mIndex;
  std::unordered_map<const RawStyle*, std::vector<StyleEntry>>& mEntries;
  std::unordered_map<const RawStyle*, std::vector<const RawStyle*>> mChildren;
  std::unordered_map<std::string_view, std::vector<const std::string*>> mValues;
  std::unordered_set<const RawStyle*> mSeen;
};

}  // namespace

StyleEntries::StyleEntries(const StyleIndex& index) {
  for (const auto* styles : {&index.allNamed(), &index.allAutomatic(), &index.allDefaults()}) {
    for (const RawStyle* style : *styles) mEntries.emplace(style, entriesOf(*style));
  }
  Walk(index, mEntries).run();
}

}  // namespace zt
