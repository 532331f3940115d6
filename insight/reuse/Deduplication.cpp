// SPDX-License-Identifier: MIT
#include <insight/reuse/Deduplication.h>

#include <document/editing/LookImage.h>
#include <insight/reuse/FormattingRequest.h>

#include <platform/NSNull.h>

#include <algorithm>

namespace zt {

namespace {

/// Whether a property says how a style is sorted, shown or edited, and nothing of what text looks like.
bool isMetadata(PropertyKey key) { return key.view().starts_with("style.") && !isLook(key); }

/// Every effective value that says what text looks like.
Ref<PropertyMap> appearanceOf(const ZTSStyle& style) {
  Ref<PropertyMap> appearance = PropertyMap::make();
  if (const Ref<PropertyMap> all = style.propertyMap()) {
    for (const PropertyMap::Entry& entry : *all) {
      if (isMetadata(entry.key)) continue;
      if (const Ref<NSObject> value = style.valueForProperty(entry.key)) appearance->set(entry.key, value);
    }
  }
  return appearance;
}

/// Asks for explicitly no value where the base has one that its children do not inherit; whether there is any.
bool hideWhatIsOnlyOfTheBase(const ZTSStyle& base, PropertyMap& wanted) {
  const std::size_t before = wanted.count();
  if (const Ref<const PropertyMap> own = base.overridePropertyMap()) {
    for (const PropertyMap::Entry& entry : *own) {
      const PropertyRule* rule = propertyRule(entry.key);
      if (rule != nullptr && !rule->isInherited && !isMetadata(entry.key) && !isNull(entry.value.get()) &&
          !wanted.contains(entry.key))
        wanted.set(entry.key, Ref<NSObject>(NSNull::null()));
    }
  }
  return wanted.count() != before;
}

}  // namespace

Deduplication::Deduplication(ZTDocument& document) : mDocument(document) {
  ZTSStylesheet& sheet = document.stylesheet();
  document.undoManager()->disableUndoRegistration();
  sheet.setIsChangeCommunicationEnabled(false);

  std::vector<std::pair<Ref<OdfStyle>, Ref<PropertyMap>>> replayed;  // with what they look like
  for (const Ref<ZTSStyle>& style : sheet.anonymousStyles().retainedSnapshot()) {
    OdfStyle* odfStyle = asOdfStyle(static_cast<NSObject*>(style.get()));
    if (odfStyle != nullptr) replayed.emplace_back(Ref<OdfStyle>(odfStyle), appearanceOf(*style));
  }
  for (const auto& [style, appearance] : replayed) sheet.removeStyle(style);
  for (const auto& [style, appearance] : replayed) replay(style, *appearance);
  document.replaceReadStyles(mReplayed);
  for (std::size_t index = 0; index < mReplayed.size(); ++index)
    mAnswers[index].answer = document.labelOf(*mReplayed[index].second);

  sheet.setIsChangeCommunicationEnabled(true);
  document.undoManager()->enableUndoRegistration();
}

// What a style refers to has mostly been replayed before it; what has not goes over when its turn comes.
Ref<NSObject> Deduplication::nowIn(const Ref<NSObject>& value) const {
  const auto found = mReplaced.find(asStyle(value.get()));
  return found != mReplaced.end() ? found->second : value;
}

bool Deduplication::isStill(const PropertyMap& before, const PropertyMap& now) const {
  return now.count() == before.count() &&
         std::all_of(before.begin(), before.end(), [&](const PropertyMap::Entry& entry) {
           return sameOrEqual(nowIn(entry.value).get(), now.find(entry.key));
         });
}

void Deduplication::replay(const Ref<OdfStyle>& style, const PropertyMap& appearance) {
  ZTSStylesheet& sheet = mDocument.stylesheet();
  Counts& counts = mByFamily[style->familyName()];
  ++counts.before;
  const Ref<PropertyMap> values = PropertyMap::make();
  if (const Ref<const PropertyMap> own = style->overridePropertyMap()) {
    for (const PropertyMap::Entry& entry : *own) {
      if (!isMetadata(entry.key)) values->set(entry.key, nowIn(entry.value));
    }
  }
  const Ref<ZTSStyle> base(sheet.cascadedStyleWithIdentifier(style->parentIdentifier()));
  const std::size_t before = sheet.anonymousStyles().count();
  const auto start = std::chrono::steady_clock::now();
  const auto ask = [&] {
    const FormattingRequest request(*values);
    const Ref<ZTSStyle> found = sheet.variationOfStyle(base.get(), {.propertyMap = request.values.get(),
                                                                    .overridePropertyMap = request.overrides.get(),
                                                                    .isLocked = style->isLocked()});
    return Ref<OdfStyle>(asOdfStyle(found.get()));
  };
  Ref<OdfStyle> answer = base ? ask() : Ref<OdfStyle>();
  if (answer && answer == base && hideWhatIsOnlyOfTheBase(*base, *values)) answer = ask();
  mTime += std::chrono::steady_clock::now() - start;
  if (!answer) {
    answer = style;
    for (const PropertyMap::Entry& entry : *values) {
      if (asStyle(entry.value.get()) != nullptr) style->p_setValueForProperty(entry.value, entry.key);
    }
    sheet.addStyle(style);
  }

  const bool wasMade = sheet.anonymousStyles().count() != before;
  ++(wasMade ? counts.made : counts.found);
  mAnswers.push_back({mDocument.labelOf(*style), {}, wasMade});
  mReplayed.emplace_back(style, answer);
  if (!isStill(appearance, *appearanceOf(*answer))) ++counts.different;
  if (answer == style) return;
  mReplaced[style.get()] = answer;
  style->replaceWithStyle(answer.get());
  // What is counted now are the uses in the text: all styles that referred to this one have gone over.
  while (style->usageCount() != 0) {
    style->decrementUsageCount();
    answer->incrementUsageCount();
  }
}

Deduplication::Counts Deduplication::total() const {
  Counts total;
  for (const auto& [family, counts] : mByFamily) {
    total.before += counts.before;
    total.found += counts.found;
    total.made += counts.made;
    total.different += counts.different;
  }
  return total;
}

}  // namespace zt
