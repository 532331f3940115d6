// SPDX-License-Identifier: MIT
#pragma once

#include <document/styles/OdfStyle.h>
#include <document/styles/PropertyRules.h>
#include <opendocument/reading/RawDocument.h>

#include <array>
#include <unordered_map>

namespace zt {

/// Turns what styles of a file set into property maps, with a finding for each value that cannot be
/// used. Meets unknown properties by extending the registries of the families, all at once at the end.
/// Equal values of one property are one object.
class PropertyImporter {
 public:
  PropertyImporter(const RawDocument& raw, std::vector<Finding>& findings) : mRaw(raw), mFindings(findings) {}

  /// The own values of a style. References to other styles are left to the caller.
  Ref<PropertyMap> mapOf(const RawStyle& style, StyleFamily family);
  Ref<PropertyMap> mapOf(const RawListStyle& list);
  Ref<PropertyMap> mapOf(const RawListLevel& level, const RawListStyle& list);

  /// Makes the registries take all keys of the maps made so far. Call before styles are made of them.
  void extendRegistries();

 private:
  struct Owner {  // who sets the values, for findings
    std::size_t part;
    std::string style;
    StyleFamily family;
  };

  void takeProperties(const std::vector<RawProperty>& properties, const Owner& owner, PropertyMap& map);
  void take(const Owner& owner, int line, const std::string& keyText, const std::string& value, bool isElement,
            PropertyMap& map);
  void takeShorthand(const Owner& owner, const RawProperty& property, PropertyMap& map);
  /// The key of a property, registered for the family; none where the document has too many unknown ones.
  PropertyKey keyFor(const Owner& owner, int line, const std::string& text);
  Ref<NSObject> value(const PropertyRule* rule, PropertyKey key, const std::string& text);
  void tell(const Owner& owner, int line, const std::string& message);

  const RawDocument& mRaw;
  std::vector<Finding>& mFindings;
  std::unordered_map<std::string, Ref<NSObject>> mValues;
  std::unordered_map<std::string, PropertyKey> mKeys;
  std::array<Ref<PropertySet>, kStyleFamilyCount> mWanted;
  bool mToldOfTooMany = false;
};

}  // namespace zt
