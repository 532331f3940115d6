// SPDX-License-Identifier: MIT
#include <opendocument/reading/ParentResolver.h>

#include <document/styles/StyleFamily.h>

#include <fmt/format.h>

namespace zt {

ParentResolver::ParentResolver(const RawDocument& raw, const StyleIndex& index, std::vector<Finding>& findings)
    : mRaw(raw), mIndex(index), mFindings(findings), mParents(raw.styles.size()) {
  for (const auto* styles : {&index.allNamed(), &index.allAutomatic()}) {
    for (const RawStyle* style : *styles) choose(*style);
  }
  cutLoopsAndOrder();
}

void ParentResolver::choose(const RawStyle& style) {
  if (!style.parent || style.parent->empty()) return;
  const RawStyle* parent = mIndex.parentOf(style);
  mParents[indexOf(style)] = parent;
  if (parent == nullptr) giveUp(style, "missing-parent", reasonAgainst(style));
}

std::string ParentResolver::reasonAgainst(const RawStyle& style) const {
  if (mIndex.automatic(style.part, style.family, *style.parent) != nullptr) return "is an automatic style";
  for (const StyleFamily family : kStyleFamilies) {
    const std::string_view name = familyName(family);
    if (name != style.family && mIndex.named(name, *style.parent) != nullptr) {
      return fmt::format("is a style of another family ({})", name);
    }
  }
  return "does not exist";
}

// Walks up from each style in turn until a style that is settled. What it comes back to on its own way
// closes a loop, which is cut there; the way, taken backwards, then has every parent before its children.
void ParentResolver::cutLoopsAndOrder() {
  enum class State : std::uint8_t { untouched, onWay, settled };
  std::vector<State> states(mRaw.styles.size(), State::untouched);
  std::vector<const RawStyle*> way;
  for (const RawStyle* start : mIndex.allNamed()) {
    const RawStyle* at = start;
    while (at != nullptr && states[indexOf(*at)] == State::untouched) {
      states[indexOf(*at)] = State::onWay;
      way.push_back(at);
      at = mParents[indexOf(*at)];
    }
    // The style where the loop closes comes first in the file among those of the loop that lie on this way,
    // or is where the way entered the loop. Without its parent it becomes the top of what was the loop.
    if (at != nullptr && states[indexOf(*at)] == State::onWay) {
      mParents[indexOf(*at)] = nullptr;
      giveUp(*at, "parent-loop", *at->parent == at->name ? "is the style itself" : "inherits from this style");
      // The members between the cut and the end of the way hang below it now: order the way anew.
      const std::vector<const RawStyle*> members(way);
      way.clear();
      for (const RawStyle* member : members) states[indexOf(*member)] = State::untouched;
      for (const RawStyle* member : members) {
        std::vector<const RawStyle*> part;
        for (const RawStyle* up = member; up != nullptr && states[indexOf(*up)] == State::untouched;
             up = mParents[indexOf(*up)]) {
          states[indexOf(*up)] = State::settled;
          part.push_back(up);
        }
        mOrder.insert(mOrder.end(), part.rbegin(), part.rend());
      }
      continue;
    }
    for (auto member = way.rbegin(); member != way.rend(); ++member) {
      states[indexOf(**member)] = State::settled;
      mOrder.push_back(*member);
    }
    way.clear();
  }
}

void ParentResolver::giveUp(const RawStyle& style, const std::string& code, const std::string& reason) {
  mFindings.push_back({Finding::Severity::warning, code, mRaw.place(style.part, style.line),
                       styleIdentifier(style.family, style.name),
                       fmt::format("the parent '{}' {}; inherits from the default style of the family instead",
                                   *style.parent, reason)});
}

}  // namespace zt
