// SPDX-License-Identifier: MIT
#pragma once

#include <document/editing/ElementEdits.h>
#include <wordprocessing/writing/PropertyTexts.h>

#include <platform/PropertyMap.h>

#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// New children of one element, each put where the schema has it.
class NewChildren {
 public:
  NewChildren(ElementEdits& edits, const PlacedElement& parent) : mEdits(edits), mParent(parent) {}

  /// Text with standard prefixes.
  void add(std::string_view name, std::string text);
  /// Writes them; once, after the last.
  void write();

 private:
  struct Child {
    int place;
    std::string text;
  };

  ElementEdits& mEdits;
  const PlacedElement& mParent;
  std::vector<Child> mAll;
};

/// Brings the difference between two sets of own values into the elements that say them. An element keeps what the
/// difference does not touch; one that says nothing any more goes.
class PropertyWriter {
 public:
  explicit PropertyWriter(ElementEdits& edits) : mEdits(edits) {}

  /// The values of one group, in the element that holds the group: w:pPr, or w:style itself for "style".
  void edit(const PlacedElement& holder, std::string_view group, const PropertyMap& before, const PropertyMap& after,
            NewChildren& added);
  /// The values of all groups that an element may hold in w:pPr, w:rPr, w:tblPr, w:trPr and w:tcPr.
  void editFormatting(const PlacedElement& element, const PropertyMap& before, const PropertyMap& after,
                      NewChildren& added);
  /// Gives a child that has nothing but a w:val another one; without one it goes.
  void setVal(const PlacedElement& parent, const std::string& name, const std::optional<std::string>& value,
              NewChildren& added);

  /// The elements of one group, in order, with standard prefixes.
  static std::string textOf(std::string_view group, std::string_view holder, const PropertyMap& values);
  /// w:pPr, w:rPr, ... as far as there are values for them.
  static std::string formattingText(const PropertyMap& values);

 private:
  struct Element;

  void editElement(const PlacedElement& holder, const Element& element, NewChildren& added);
  void editParts(const PlacedElement& found, const Element& element);
  static std::string elementText(const Element& element);
  static std::vector<Element> elementsOf(std::string_view group, const PropertyMap& before, const PropertyMap& after);

  ElementEdits& mEdits;
};

}  // namespace zt
