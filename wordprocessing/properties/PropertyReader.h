// SPDX-License-Identifier: MIT
#pragma once

#include <wordprocessing/properties/WordElement.h>

#include <platform/PropertyKey.h>
#include <platform/PropertyMap.h>

#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

namespace zt {

struct PropertyRule;

/// Turns property elements into entries of styles, with a finding for each value that cannot be used. An entry is named
/// after its element, and after the attribute where attributes are inherited one by one: `text.w.sz`,
/// `paragraph.w.ind.left`. What is not understood becomes opaque text. References to styles are left to the caller.
/// Equal values of one property are one object.
class PropertyReader {
 public:
  /// Who sets the values, for findings.
  struct Owner {
    std::string file;
    std::string style;
  };

  explicit PropertyReader(std::vector<Finding>& findings) : mFindings(findings) {}

  /// The children of w:rPr ("text"), w:pPr ("paragraph"), w:tblPr ("table"), w:trPr ("table-row"), w:tcPr
  /// ("table-cell"), w:lvl ("level"), w:abstractNum ("list") or w:style ("style"), as entries of that group. Of doubled
  /// elements the later counts.
  void takeAll(const WordElement& parent, const std::string& group, const Owner& owner, PropertyMap& map);
  /// One such child.
  void take(const WordElement& element, const std::string& group, const Owner& owner, PropertyMap& map);
  /// A value as text, for attributes that stand alone.
  void takeText(const std::string& keyText, const std::string& text, int line, const Owner& owner, PropertyMap& map);

 private:
  struct Entry;

  void takeValue(const Entry& entry, const WordElement& element);
  void takeColour(const Entry& entry, const WordElement& element, const char* attribute);
  void takeFonts(const Entry& entry, const WordElement& element);
  void takeSpacing(const Entry& entry, const WordElement& element);
  void takeIndents(const Entry& entry, const WordElement& element);
  void set(const Entry& entry, const std::string& suffix, const std::string& text,
           const std::function<Ref<NSObject>(const PropertyRule*)>& read);
  void tell(const Owner& owner, int line, const std::string& message);

  std::vector<Finding>& mFindings;
  std::unordered_map<std::string, Ref<NSObject>> mValues;
};

/// The value of one attribute or the other: names that the strict form gave new ones.
const std::string* eitherAttribute(const WordElement& element, std::string_view name, std::string_view otherName);

}  // namespace zt
