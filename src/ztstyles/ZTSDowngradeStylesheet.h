// SPDX-License-Identifier: MIT
#pragma once

#include <archiving/ZTAXMLArchiver.h>
#include <ztstyles/ZTSAggregateStyle.h>
#include <ztstyles/ZTSStylesheet.h>

#include <memory>

namespace zt {

/// A working copy of a stylesheet, with copies of all its styles, that an archiver writes in place of the
/// original in an archive of an older version. Downgraders change, replace and remove styles in it; the
/// document's own stylesheet stays as it is. Which copy stands for which original, the archiver's substitutes
/// say. It tells nobody of its changes, and its parent does not list it among the children.
///
/// Lives as long as its archiver, which holds it. Made with `overrideDowngradeStylesheetWithArchiver`.
class ZT_EXPORT ZTSDowngradeStylesheet final : public ZTSStylesheet {
 public:
  static const ZTClass& downgradeStylesheetClass();
  const ZTClass& classObject() const override;

  /// A copy of the original and, in the archiver, of its whole family of stylesheets.
  static Ref<ZTSDowngradeStylesheet> withStylesheetArchiver(ZTSStylesheet& original, ZTAXMLArchiver& archiver);

  [[nodiscard]] ZTSStylesheet& originalStylesheet() const noexcept { return *mOriginalStylesheet; }
  /// What is written in place of the original style. Without a substitute it is reported, and none answered.
  [[nodiscard]] Ref<NSObject> replacementForStyle(const ZTSStyle& style) const;
  [[nodiscard]] bool hasReplacementForStyle(const ZTSStyle& style) const;
  /// Removes the original's copy, adds the new style and writes it in place of the original from now on. What
  /// referred to the copy refers to the new style.
  void replaceStyleWithStyle(Ref<ZTSStyle> original, Ref<ZTSStyle> replacement);
  /// Given an original: removes its copy, which is then no substitute any more. Given anything else: removes that.
  /// Other copies lose their references to it.
  void removeStyle(Ref<ZTSStyle> style) override;

  /// A downgrade stylesheet is written as a plain one.
  const ZTClass& classForCoder() const override { return stylesheetClass(); }
  void encodeWithXMLArchiver(ZTAXMLArchiver& archiver, _xmlNode* node, std::uint64_t version) override;
  /// Itself.
  Ref<ZTSStylesheet> downgradeStylesheetWithArchiver(ZTAXMLArchiver& archiver) override;

 private:
  ZTSDowngradeStylesheet() = default;
  ~ZTSDowngradeStylesheet() override;

  [[nodiscard]] ZTAXMLArchiver* archiver() const noexcept { return mArchiver ? *mArchiver : nullptr; }
  [[nodiscard]] bool isUsedInArchive(const ZTSStyle& style) const override;
  bool initWithStylesheet(ZTSStylesheet& original, ZTAXMLArchiver& archiver);
  bool p_initForDowngradeWithStylesheet(ZTSStylesheet& original, ZTAXMLArchiver& archiver);

  std::shared_ptr<ZTAXMLArchiver* const> mArchiver;  // the place of the archiver, which holds this stylesheet
  Ref<ZTSStylesheet> mOriginalStylesheet;
  ZTSStyleMap mOriginals;  // from each copy, and each replacement, to its original
};

}  // namespace zt
