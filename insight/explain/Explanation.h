// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>

#include <functional>
#include <map>
#include <vector>

namespace zt {

/// What one style of the chain does to a property.
struct ExplainedEntry {
  enum class Role : std::uint8_t {
    wins,    ///< the nearest: it decides
    base,    ///< it decides too: the nearer entry is a share of this one
    hidden,  ///< a nearer entry hides it
    ignored  ///< it says nothing, so that what it hides shows through: a font that its part does not declare
  };

  const OdfStyle* style = nullptr;
  NSObject* value = nullptr;  ///< its own entry, the null sentinel included; borrowed
  Role role = Role::hidden;
};

std::string_view roleName(ExplainedEntry::Role role);

/// A property of a style: what it comes to and why.
struct ExplainedProperty {
  PropertyKey key;
  Ref<NSObject> effective;              ///< what the style itself answers; none where the winner says "explicitly none"
  std::vector<ExplainedEntry> entries;  ///< nearest first, at least one
  std::size_t moreHidden = 0;           ///< hidden entries that are not listed
  PropertyKey decidedBy;  ///< a property that is set nearer and counts in place of this one (`decideGroups`), or none

  /// The style whose entry decides; the nearest where none does.
  [[nodiscard]] const OdfStyle* decisiveStyle() const;
};

/// A style and all that it inherits. Borrows from the document: use it before the document changes.
struct StyleExplanation {
  const OdfStyle* style = nullptr;
  /// From the style towards its root, the nearest `Explainer::kLongestChain`. The application's default
  /// above the document's root is left out where it sets nothing.
  std::vector<const OdfStyle*> chain;
  std::size_t chainLength = 0;                ///< of the whole chain
  std::vector<ExplainedProperty> properties;  ///< sorted by key
};

/// Explains the styles of a document. Walks its forest once, so that the cost for each style is in
/// proportion to what it answers, however long the chains are.
class Explainer {
 public:
  /// How many entries of a property are listed; the nearest are.
  static constexpr std::size_t kMostEntries = 32;
  static constexpr std::size_t kLongestChain = 64;

  explicit Explainer(const ZTDocument& document) : mDocument(document) {}

  /// One style.
  StyleExplanation explain(const OdfStyle& style);
  /// Every style of the document, parents before their children.
  void explainAll(const std::function<void(const StyleExplanation&)>& visit);

 private:
  struct Entry {
    const OdfStyle* style;
    NSObject* value;
  };
  struct Entries {
    PropertyKey key;
    std::vector<Entry> fromRoot;
  };

  void enter(const OdfStyle& style);
  void leave();
  [[nodiscard]] StyleExplanation current() const;

  const ZTDocument& mDocument;
  std::vector<const OdfStyle*> mChain;           // the styles entered and not left, from the root
  std::map<std::string_view, Entries> mEntries;  // theirs, by key
};

/// The styles of a document that have no parent among its own, in the order of the document.
std::vector<const OdfStyle*> topStyles(const ZTDocument& document);

/// The children of a style in the order of the document, so that output does not depend on the order of adding.
class ChildrenInOrder {
 public:
  explicit ChildrenInOrder(const ZTDocument& document);
  [[nodiscard]] const std::vector<const OdfStyle*>& of(const ZTSStyle& style) const;

 private:
  std::unordered_map<const ZTSStyle*, std::vector<const OdfStyle*>> mChildren;
};

/// A value as people read it: as OpenDocument writes it, a style by its label.
std::string shownValue(const ZTDocument& document, PropertyKey key, const NSObject* value);

}  // namespace zt
