// SPDX-License-Identifier: MIT
#include <archiving/ZTARegistryInternal.h>
#include <archiving/ZTAValueCodingInternal.h>
#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLNodesInternal.h>
#include <archiving/ZTAXMLUnarchiver.h>
#include <platform/ZTFormat.h>

#include <mutex>

namespace zt {

namespace {

std::mutex& registryLock() {
  static auto* lock = new std::mutex;
  return *lock;
}

std::shared_ptr<const ZTARegistry>& registry() {
  static auto* all = new std::shared_ptr<const ZTARegistry>(std::make_shared<ZTARegistry>());
  return *all;
}

class TextCoder final : public ZTAValueCoder {
 public:
  TextCoder(std::string (*text)(const NSObject&), Ref<NSObject> (*value)(std::string_view))
      : mText(text), mValue(value) {}

  void encodeValue(const NSObject& value, ZTAXMLArchiver& archiver, _xmlNode* node) const override {
    archiver.setTextOfNode(node, mText(value));
  }
  Ref<NSObject> decodeValue(ZTAXMLUnarchiver& unarchiver, _xmlNode* node) const override {
    const std::string_view text = unarchiver.textOfNode(node);
    Ref<NSObject> value = mValue(text);
    if (!value)
      unarchiver.report(node, format("'%s' is no value of a '%s' element", shortened(text), xml::view(node->name)));
    return value;
  }

 private:
  std::string (*mText)(const NSObject&);
  Ref<NSObject> (*mValue)(std::string_view);
};

}  // namespace

ZTAValueCoder::~ZTAValueCoder() = default;

std::shared_ptr<const ZTARegistry> ZTARegistry::current() {
  std::lock_guard guard(registryLock());
  return registry();
}

void ZTARegistry::change(std::string_view elementName, const std::function<void(ZTARegistry&)>& edit) {
  xml::checkName(elementName);
  if (isPlatformValueName(elementName))
    xml::raise(format("elements named '%s' hold values of the platform", elementName));
  std::lock_guard guard(registryLock());
  auto changed = std::make_shared<ZTARegistry>(*registry());
  edit(*changed);
  registry() = std::move(changed);
}

void ZTARegistry::addClassName(const ZTClass& objectClass, std::string_view elementName) {
  change(elementName, [&](ZTARegistry& all) {
    all.mNames.insert_or_assign(&objectClass, std::string(elementName));
    all.mClasses.insert_or_assign(std::string(elementName), &objectClass);
  });
}

void ZTARegistry::addCoder(const ZTClass& valueClass, std::string_view elementName,
                           std::shared_ptr<const ZTAValueCoder> coder) {
  change(elementName, [&](ZTARegistry& all) {
    all.mCoders.insert_or_assign(&valueClass, Coder{std::string(elementName), coder});
    all.mCodersByName.insert_or_assign(std::string(elementName), coder);
  });
}

const std::string* ZTARegistry::nameOfClass(const ZTClass& objectClass) const {
  auto found = mNames.find(&objectClass);
  return found == mNames.end() ? nullptr : &found->second;
}

const ZTClass* ZTARegistry::classNamed(std::string_view elementName) const {
  auto found = mClasses.find(elementName);
  return found == mClasses.end() ? nullptr : found->second;
}

const ZTARegistry::Coder* ZTARegistry::coderOfClass(const ZTClass& valueClass) const {
  for (const ZTClass* each = &valueClass; each != nullptr; each = each->base()) {
    if (auto found = mCoders.find(each); found != mCoders.end()) return &found->second;
  }
  return nullptr;
}

const ZTAValueCoder* ZTARegistry::coderNamed(std::string_view elementName) const {
  auto found = mCodersByName.find(elementName);
  return found == mCodersByName.end() ? nullptr : found->second.get();
}

void ztaxmlRegisterClassNamePair(const ZTClass& objectClass, const char* elementName) {
  ZTARegistry::addClassName(objectClass, elementName);
}

void ztaxmlRegisterValueCoder(const ZTClass& valueClass, const char* elementName,
                              std::shared_ptr<const ZTAValueCoder> coder) {
  ZTARegistry::addCoder(valueClass, elementName, std::move(coder));
}

void ztaxmlRegisterTextCoding(const ZTClass& valueClass, const char* elementName, std::string (*text)(const NSObject&),
                              Ref<NSObject> (*value)(std::string_view)) {
  ZTARegistry::addCoder(valueClass, elementName, std::make_shared<TextCoder>(text, value));
}

}  // namespace zt
