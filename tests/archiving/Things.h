// SPDX-License-Identifier: MIT
#pragma once

#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLFunctions.h>
#include <archiving/ZTAXMLUnarchiver.h>
#include <gmock/gmock.h>
#include <libxml/tree.h>
#include <platform/NSString.h>
#include <platform/ZTClass.h>

#include <functional>
#include <string>
#include <vector>

namespace zt::test {

/// An object with a label and links to anything. A thing refers to others; a box owns them.
class Thing : public ZTAXMLCoding {
 public:
  std::string label;
  std::vector<Ref<NSObject>> links;
  Ref<Thing> twin;  ///< what reading answers in place of this one

  static const ZTClass& thingClass() {
    static const auto* object = new ZTClassOf<Thing>("TestThing", NSObject::nsObjectClass());
    return *object;
  }
  const ZTClass& classObject() const override { return thingClass(); }
  bool archivesByReference() const override { return true; }

  void encodeWithXMLArchiver(ZTAXMLArchiver& archiver, _xmlNode* node, std::uint64_t) override {
    archiver.setErrorHandler(Ref<ZTAErrorHandler>(this));
    ztaxmlSetZTClassOnNodeOrRaise(node, *this);
    ztaxmlSetNSStringNsPropOrRaise(node, CorvaleNamespace, "label", StringRef(label));
    for (const Ref<NSObject>& link : links) archiver.encodeObject(link.get(), node, CorvaleNamespace);
  }
  bool initWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node, std::uint64_t) override {
    unarchiver.setErrorHandler(Ref<ZTAErrorHandler>(this));
    xmlChar* text = xmlGetNsProp(node, reinterpret_cast<const xmlChar*>("label"), CorvaleNamespace.href);
    if (text != nullptr) label = reinterpret_cast<const char*>(text);
    xmlFree(text);
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
      if (child->type != XML_ELEMENT_NODE) continue;
      if (Ref<NSObject> link = unarchiver.createObjectFromNode(child)) links.push_back(std::move(link));
    }
    return label != "refused";
  }
  Ref<NSObject> initMoreWithXMLUnarchiver(ZTAXMLUnarchiver&, _xmlNode*) override {
    if (label == "none") return {};
    if (label != "twin") return Ref<NSObject>(this);
    twin = make<Thing>();
    twin->label = "the other twin";
    return twin;
  }
  void replaceUnarchivedObject(NSObject& dropped, NSObject* kept) override {
    std::erase_if(links, [&](Ref<NSObject>& link) {
      if (link.get() != &dropped) return false;
      link = kept;
      return kept == nullptr;
    });
  }
  Ref<ZTAError> handleError(Ref<ZTAError> error) override {
    return ZTAError::withMessage("in " + label + ": " + error->message(), error->file(), error->line());
  }
};

class Box final : public Thing {
 public:
  static const ZTClass& boxClass() {
    static const auto* object = new ZTClassOf<Box>("TestBox", thingClass());
    return *object;
  }
  const ZTClass& classObject() const override { return boxClass(); }
  bool archivesByReference() const override { return false; }
};

/// Archives name classes, so these have to be there whichever test runs first.
inline const ZTClass& kRegisteredBox = Box::boxClass();

template <class T>
Ref<T> labelled(const std::string& label, std::vector<Ref<NSObject>> links) {
  auto made = make<T>();
  made->label = label;
  made->links = std::move(links);
  return made;
}
inline Ref<Thing> thing(const std::string& label, std::vector<Ref<NSObject>> links = {}) {
  return labelled<Thing>(label, std::move(links));
}
inline Ref<Box> box(const std::string& label, std::vector<Ref<NSObject>> links = {}) {
  return labelled<Box>(label, std::move(links));
}
inline Thing& asThing(const Ref<NSObject>& object) { return dynamic_cast<Thing&>(*object); }

inline std::string archived(NSObject& root, ZTACompression compression = ZTACompression::none) {
  auto archiver = make<ZTAXMLArchiver>(3);
  archiver->encodeRootObject(root);
  return archiver->bytes(compression);
}

/// An archive of version 3 with this inside.
inline std::string archive(const std::string& inside) {
  return "<zt:archive xmlns:zt='urn:ztstyles:archive' zt:version='3'>\n" + inside + "</zt:archive>";
}

/// The message of the exception that the operation ends in; fails without one.
inline std::string errorOf(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const ZTAArchiveException& exception) {
    return exception.reason();
  }
  ADD_FAILURE() << "no error";
  return {};
}

inline std::vector<std::string> descriptions(const std::vector<Ref<ZTAError>>& findings) {
  std::vector<std::string> texts;
  for (const Ref<ZTAError>& each : findings) texts.push_back(each->description());
  return texts;
}

}  // namespace zt::test
