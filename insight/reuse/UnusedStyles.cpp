// SPDX-License-Identifier: MIT
#include <insight/reuse/UnusedStyles.h>

#include <ztstyles/ZTSStylesheetObserver.h>

namespace zt {

namespace {

/// Notes what leaves the stylesheet while it lives.
class Leaving : public ZTSStylesheetObserver {
 public:
  explicit Leaving(ZTSStylesheet& stylesheet) : mStylesheet(stylesheet) { mStylesheet.addObserver(this); }
  ~Leaving() override { mStylesheet.removeObserver(this); }
  void removedStyleFromStylesheet(ZTSStyle& style, ZTSStylesheet&) override {
    if (OdfStyle* left = asOdfStyle(static_cast<NSObject*>(&style))) styles.emplace_back(left);
  }
  std::vector<Ref<OdfStyle>> styles;

 private:
  ZTSStylesheet& mStylesheet;
};

}  // namespace

std::vector<Ref<OdfStyle>> removeUnusedStyles(ZTDocument& document, bool keepsNamed) {
  document.mayRemoveUnused = [&document, keepsNamed](const ZTSStyle& style) {
    const StyleOrigin* origin = document.originOf(style);
    const bool isRoot = origin != nullptr &&
                        (origin->kind == StyleOrigin::Kind::made || origin->kind == StyleOrigin::Kind::defaultStyle);
    return !isRoot && !(keepsNamed && style.isIdentified());
  };
  Leaving leaving(document.stylesheet());
  document.stylesheet().enableUnusedStyleCleanup();
  document.undoManager()->performInGroup([] {});  // the cleanup belongs to the end of a user action
  document.stylesheet().disableUnusedStyleCleanup();
  document.mayRemoveUnused = {};
  return std::move(leaving.styles);
}

}  // namespace zt
