// SPDX-License-Identifier: MIT
#include <inspection/HVStyleTableDataSource.h>
#include <platform/ZTFormat.h>

namespace zt {

const ZTClass& HVStyleTableDataSource::dataSourceClass() {
  static const auto* object =
      new ZTClassOf<HVStyleTableDataSource>("HVStyleTableDataSource", NSObject::nsObjectClass());
  return *object;
}

const ZTClass& HVStyleTableDataSource::classObject() const { return dataSourceClass(); }

Ref<HVStyleTableDataSource> HVStyleTableDataSource::dataSourceWithStyles(std::vector<Ref<ZTSStyle>> styles) {
  return make<HVStyleTableDataSource>(std::move(styles));
}

void HVStyleTableDataSource::setStyle(Ref<ZTSStyle> style) {
  std::vector<Ref<ZTSStyle>> styles;
  if (style) styles.push_back(std::move(style));
  setStyles(std::move(styles));
}

StringRef HVStyleTableDataSource::keyForReferencedStyle(const ZTSStyle* style) const {
  if (mReferencingStyle && style != nullptr) {
    const Ref<ZTSAggregateStyle> referencing = mReferencingStyle;
    for (const PropertyKey key : referencing->referencedStyleProperties()) {
      if (referencing->valueForProperty(key).get() == style) return key.string();
    }
  }
  return "no key found";
}

ZTSStyle* HVStyleTableDataSource::styleAtIndex(std::size_t index) const noexcept {
  return index < mStyles.size() ? mStyles[index].get() : nullptr;
}

std::size_t HVStyleTableDataSource::numberOfRowsInTableView(const NSTableView*) { return mStyles.size(); }

Ref<NSObject> HVStyleTableDataSource::tableViewObjectValueForTableColumnRow(const NSTableView*,
                                                                            const NSTableColumn& column,
                                                                            std::size_t row) {
  const Ref<ZTSStyle> style(styleAtIndex(row));
  if (!style) return {};
  const std::string_view identifier = column.identifier().view();
  if (identifier == "class") return Ref<NSObject>(const_cast<ZTSStyleClass*>(&style->classObject()));
  if (identifier == "identifier") return Ref<NSObject>(style->identifier().object());
  if (identifier == "address") return NSString::make(format("%p", style));
  if (identifier == "key") return Ref<NSObject>(keyForReferencedStyle(style.get()).object());
  return NSString::make(format("%@ is not a known table column identifier", column.identifier()));
}

}  // namespace zt
