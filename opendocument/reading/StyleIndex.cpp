// SPDX-License-Identifier: MIT
#include <opendocument/reading/StyleIndex.h>

#include <map>

namespace zt {

namespace {

std::string key(std::string_view family, std::string_view name) {
  std::string text;
  text.reserve(family.size() + name.size() + 1);
  return text.append(family).append(1, ':').append(name);
}

std::string key(std::size_t part, std::string_view family, std::string_view name) {
  return std::to_string(part) + ':' + key(family, name);
}

const RawStyle* find(const std::unordered_map<std::string, const RawStyle*>& styles, const std::string& wanted) {
  const auto found = styles.find(wanted);
  return found == styles.end() ? nullptr : found->second;
}

}  // namespace

StyleIndex::StyleIndex(const RawDocument& document) {
  std::map<std::string, std::size_t> counts;
  for (const RawStyle& style : document.styles) {
    switch (style.kind) {
      case RawStyle::Kind::defaultStyle: mDefaults[style.family] = &style; break;
      case RawStyle::Kind::named: {
        const std::string name = key(style.family, style.name);
        mNamed[name] = &style;
        ++counts[name];
        break;
      }
      case RawStyle::Kind::automatic: {
        const std::string name = key(style.part, style.family, style.name);
        mAutomatic.try_emplace(name, &style);
        ++counts[document.parts[style.part].name + ':' + key(style.family, style.name)];
        break;
      }
    }
  }
  for (const RawStyle& style : document.styles) {
    if (style.kind == RawStyle::Kind::defaultStyle) {
      if (defaultStyle(style.family) == &style) mDefaultsInOrder.push_back(&style);
    } else if (style.kind == RawStyle::Kind::named) {
      if (named(style.family, style.name) == &style) mNamedInOrder.push_back(&style);
    } else if (automatic(style.part, style.family, style.name) == &style) {
      mAutomaticInOrder.push_back(&style);
    }
  }
  for (const auto& [name, count] : counts) {
    if (count > 1) mRepeated.emplace_back(name, count);
  }
}

const RawStyle* StyleIndex::named(std::string_view family, std::string_view name) const {
  return find(mNamed, key(family, name));
}

const RawStyle* StyleIndex::automatic(std::size_t part, std::string_view family, std::string_view name) const {
  return find(mAutomatic, key(part, family, name));
}

const RawStyle* StyleIndex::defaultStyle(std::string_view family) const { return find(mDefaults, std::string(family)); }

const RawStyle* StyleIndex::referred(std::size_t part, std::string_view family, std::string_view name) const {
  const RawStyle* own = automatic(part, family, name);
  return own != nullptr ? own : named(family, name);
}

const RawStyle* StyleIndex::parentOf(const RawStyle& style) const {
  return style.parent && !style.parent->empty() ? named(style.family, *style.parent) : nullptr;
}

}  // namespace zt
